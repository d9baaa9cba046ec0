#include <tessaro/utility/Fade.h>

#include <cmath>

#include <gtest/gtest.h>

namespace tessaro {

namespace {

using Type = FadeShape::Type;

float ValueAt(Type inType, int inValue, float inX)
{
    return CalculateFadeValue(inType, inX, GetVerticalModifier({inType, inValue}));
}

TEST(FadeTest, EveryCurveRisesFromZeroToOne)
{
    for (const auto type : {Type::kLogarithmic, Type::kCosine, Type(7)}) {
        for (int value = -100; value <= 100; ++value) {
            EXPECT_NEAR(ValueAt(type, value, 0.0f), 0.0f, 1e-6f);
            EXPECT_NEAR(ValueAt(type, value, 1.0f), 1.0f, 1e-6f);
            float last = 0.0f;
            for (int i = 1; i <= 64; ++i) {
                const float now = ValueAt(type, value, static_cast<float>(i) / 64.0f);
                EXPECT_GE(now, last - 1e-6f) << value << " at " << i;
                last = now;
            }
        }
    }
}

TEST(FadeTest, CurvesHaveTheirClosedForms)
{
    EXPECT_EQ(CalculateLogFadeValue(0.3f, 0.0f), 0.3f);
    EXPECT_EQ(CalculateCosineFadeValue(0.5f, 1.0f), 0.5f);
    for (const double x : {0.1, 0.25, 0.5, 0.9}) {
        for (const double shape : {-8.0, -0.3, 0.1, 2.0, 10.0}) {
            const double expected = std::expm1(-shape * x) / std::expm1(-shape);
            EXPECT_NEAR(CalculateLogFadeValue(float(x), float(shape)), expected, 3e-6) << x << ", " << shape;
        }
        for (const double shape : {0.1, 0.5, 1.0, 4.0, 10.0}) {
            const double expected = std::pow(std::sin(M_PI / 2 * std::pow(x, shape)), 2);
            EXPECT_NEAR(CalculateCosineFadeValue(float(x), float(shape)), expected, 1e-6)
                << x << ", " << shape;
        }
    }
    EXPECT_EQ(GetCosineVerticalModifier(0), 1.0f);
    EXPECT_FLOAT_EQ(GetCosineVerticalModifier(100), 0.1f);
    EXPECT_FLOAT_EQ(GetVerticalModifier({Type(2), -100}), 10.0f);
    EXPECT_EQ(GetLogVerticalModifier(-25), -2.5f);
    EXPECT_EQ(GetVerticalModifier({Type::kLogarithmic, 5}), 0.5f);
}

/// The level at which the curve of a shape meets that of its opposite, run backwards.
float CrossingLevel(Type inType, int inValue)
{
    const auto opposite = GetOppositeFadeShapeForConstantPowerCrossfade({inType, inValue});
    EXPECT_EQ(opposite.mType, inType);
    float low = 0.0f;
    float high = 1.0f;
    for (int i = 0; i < 30; ++i) {
        const float x = (low + high) / 2.0f;
        (ValueAt(inType, opposite.mValue, x) < ValueAt(inType, inValue, 1.0f - x) ? low : high) = x;
    }
    return ValueAt(inType, opposite.mValue, low);
}

TEST(FadeTest, OppositesMeetAtMinusThreeDecibelsAndAreMutual)
{
    // Outside these values the range has no opposite that meets at -3 dB.
    struct Range
    {
        Type mType;
        int mLeast, mMost;
        int (*mOpposite)(int);
    };
    for (const auto& range :
         {Range{Type::kCosine, -100, 85, GetOppositeFadeShapeValForConstantPowerCrossfade_Cosine},
          Range{Type::kLogarithmic, -24, 100, GetOppositeFadeShapeValForConstantPowerCrossfade_Log}}) {
        for (int value = -100; value <= 100; ++value) {
            const int opposite = range.mOpposite(value);
            EXPECT_EQ(GetOppositeFadeShapeForConstantPowerCrossfade({range.mType, value}).mValue, opposite);
            if (value >= range.mLeast && value <= range.mMost) {
                EXPECT_NEAR(CrossingLevel(range.mType, value), 0.714f, 0.012f) << value;
                EXPECT_NEAR(range.mOpposite(opposite), value, 2) << value;
            }
            if (value > -100) {
                EXPECT_LE(opposite, range.mOpposite(value - 1)) << value;
            }
        }
        EXPECT_EQ(range.mOpposite(-101), 0);
        EXPECT_EQ(range.mOpposite(101), 0);
    }
}

TEST(FadeTest, OppositesHaveTheirSettledValues)
{
    const auto cosine = GetOppositeFadeShapeValForConstantPowerCrossfade_Cosine;
    const auto log = GetOppositeFadeShapeValForConstantPowerCrossfade_Log;
    EXPECT_EQ(cosine(-100), 86);
    EXPECT_EQ(cosine(-57), 69);
    EXPECT_EQ(cosine(0), 36);
    EXPECT_EQ(cosine(19), 19);
    EXPECT_EQ(cosine(68), -54);
    EXPECT_EQ(cosine(85), -97);
    EXPECT_EQ(cosine(86), -100);
    EXPECT_EQ(cosine(100), -100);
    EXPECT_EQ(log(-100), 100);
    EXPECT_EQ(log(-25), 100);
    EXPECT_EQ(log(-24), 97);
    EXPECT_EQ(log(0), 44);
    EXPECT_EQ(log(31), 8);
    EXPECT_EQ(log(43), 0);
    EXPECT_EQ(log(70), -13);
    EXPECT_EQ(log(100), -25);

    // A weighted sum sees any one entry change.
    int cosineSum = 0;
    int logSum = 0;
    for (int value = -100; value <= 100; ++value) {
        cosineSum += (value + 101) * cosine(value);
        logSum += (value + 101) * log(value);
    }
    EXPECT_EQ(cosineSum, -281876);
    EXPECT_EQ(logSum, 386037);
}

} // namespace

} // namespace tessaro
