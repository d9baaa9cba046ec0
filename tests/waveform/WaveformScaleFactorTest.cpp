#include <tessaro/waveform/WaveformScaleFactor.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include <gtest/gtest.h>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/debug/Assert.h>
#include <ombrel/utility/Dictionary.h>

namespace tessaro::waveform {

namespace {

using Factor = WaveformChannelScaleFactor;
using Scales = Factor::ScaleVector;
using enum WaveformScaleFactorType;

/// A factor for tables, where it has to be copied.
struct Value
{
    WaveformScaleFactorType mType;
    float mConstant = 1.0f;
    Scales mScales;

    Factor Make() const
    {
        if (mType == kDynamic) {
            return Factor(Scales(mScales));
        }
        Factor factor(mConstant);
        if (mType == kConstant && mConstant == 1.0f) { // a product that came out as 1
            factor = Factor(2.0f);
            factor *= Factor(0.5f);
        }
        return factor;
    }
};

const Value kUnity{kNone, 1.0f, {}};

Value Constant(float inScale)
{
    return {kConstant, inScale, {}};
}

Value Dynamic(Scales inScales)
{
    return {kDynamic, 1.0f, std::move(inScales)};
}

void ExpectFactor(const Factor& inFactor, const Value& inExpected)
{
    EXPECT_EQ(inFactor.GetType(), inExpected.mType);
    EXPECT_EQ(inFactor.GetConstantScale(), inExpected.mConstant);
    EXPECT_EQ(inFactor.GetWaveformScaleVector(), inExpected.mScales);
}

struct Row
{
    const char* mName;
    Value mLeft;
    Value mRight;
    Value mProduct;
    Value mQuotient;
};

TEST(WaveformChannelScaleFactorTest, EveryPairOfTypesCombines)
{
    const Row rows[] = {
        {"none, none", kUnity, kUnity, kUnity, kUnity},
        {"none, constant", kUnity, Constant(4), Constant(4), Constant(0.25f)},
        {"none, constant 1", kUnity, Constant(1), Constant(1), Constant(1)},
        {"none, dynamic", kUnity, Dynamic({2, 4}), Dynamic({2, 4}), Dynamic({0.5f, 0.25f})},
        {"none, dynamic of no length", kUnity, Dynamic({}), Dynamic({}), Dynamic({})},
        {"constant, constant", Constant(3), Constant(4), Constant(12), Constant(12)},
        {"constant, its inverse", Constant(2), Constant(0.5f), Constant(1), Constant(1)},
        {"constant, dynamic", Constant(3), Dynamic({2, 4}), Dynamic({6, 12}), Dynamic({1.5f, 0.75f})},
        {"constant, none", Constant(3), kUnity, Constant(3), Constant(3)},
        {"dynamic, constant", Dynamic({2, 6}), Constant(4), Dynamic({8, 24}), Dynamic({0.5f, 1.5f})},
        {"dynamic, constant 1", Dynamic({2, 6}), Constant(1), Dynamic({2, 6}), Dynamic({2, 6})},
        {"dynamic, dynamic", Dynamic({2, 6}), Dynamic({4, 2}), Dynamic({8, 12}), Dynamic({0.5f, 3})},
        {"dynamic, shorter", Dynamic({2, 6}), Dynamic({4}), Dynamic({8, 6}), Dynamic({0.5f, 6})},
        {"dynamic, longer", Dynamic({2}), Dynamic({4, 5}), Dynamic({8}), Dynamic({0.5f})},
        {"dynamic, none", Dynamic({2, 6}), kUnity, Dynamic({2, 6}), Dynamic({2, 6})},
        {"dynamic of no length, constant", Dynamic({}), Constant(4), Dynamic({}), Dynamic({})},
        {"dynamic of no length, dynamic", Dynamic({}), Dynamic({4}), Dynamic({}), Dynamic({})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.mName);
        Factor product = row.mLeft.Make();
        ExpectFactor(product *= row.mRight.Make(), row.mProduct);
        Factor quotient = row.mLeft.Make();
        ExpectFactor(quotient /= row.mRight.Make(), row.mQuotient);
    }
}

TEST(WaveformChannelScaleFactorTest, DivisionUndoesMultiplicationOfDynamicFactors)
{
    Scales scales, others;
    for (int i = 0; i < 1000; ++i) {
        scales.push_back(std::sin(static_cast<float>(i)));
        others.push_back(1.5f + std::cos(0.7f * static_cast<float>(i)));
    }
    Factor factor{Scales(scales)};
    factor *= Factor(Scales(others));
    factor /= Factor(std::move(others));
    for (std::size_t i = 0; i < scales.size(); ++i) {
        ASSERT_NEAR(factor.GetWaveformScaleVector()[i], scales[i], 2e-7f);
    }
}

TEST(WaveformChannelScaleFactorTest, ComparesWhatTheTypeUses)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(Factor(1.0f) == Factor(1.0f));
    EXPECT_EQ(Factor(nan).GetType(), kConstant);
    EXPECT_TRUE(Factor(nan) != Factor(nan));
    EXPECT_TRUE(Factor(2.0f) == Factor(2.0f));
    EXPECT_TRUE(Factor(2.0f) != Factor(3.0f));
    EXPECT_TRUE(Factor(2.0f) != Factor(Scales{2.0f}));
    EXPECT_TRUE(Constant(1.0f).Make() != Factor(1.0f));
    EXPECT_TRUE(Factor(Scales{2.0f, 3.0f}) == Factor(Scales{2.0f, 3.0f}));
    EXPECT_TRUE(Factor(Scales{2.0f, 3.0f}) != Factor(Scales{2.0f}));
}

TEST(WaveformChannelScaleFactorTest, ComparisonRefusesAnUnknownType)
{
    Factor damaged(2.0f), other(2.0f);
    const int unknown = 7;
    static_assert(sizeof(unknown) == sizeof(WaveformScaleFactorType));
    for (Factor* const factor : {&damaged, &other}) {
        std::memcpy(static_cast<void*>(factor), &unknown, sizeof(unknown));
    }
    EXPECT_THROW((void)(damaged == other), ombrel::ombrel_exception);
    EXPECT_THROW((void)(damaged != other), ombrel::ombrel_exception);
}

WaveformScaleFactor Make(const std::vector<Value>& inValues)
{
    std::vector<Factor> factors;
    for (const Value& value : inValues) {
        factors.push_back(value.Make());
    }
    return WaveformScaleFactor(std::move(factors));
}

void ExpectFactors(const WaveformScaleFactor& inFactor, const std::vector<Value>& inExpected)
{
    ASSERT_EQ(inFactor.GetNumChannels(), inExpected.size());
    for (std::size_t channel = 0; channel < inExpected.size(); ++channel) {
        SCOPED_TRACE(channel);
        ExpectFactor(inFactor.GetChannelScaleFactor(channel), inExpected[channel]);
    }
}

TEST(WaveformScaleFactorTest, KeepsARowAChannelOnlyWhereOneScales)
{
    ExpectFactors(Make({kUnity, kUnity, kUnity}), {kUnity});
    ExpectFactors(Make({kUnity, Constant(2), kUnity}), {kUnity, Constant(2), kUnity});
    ExpectFactors(Make({kUnity, Dynamic({})}), {kUnity, Dynamic({})});
    ExpectFactors(WaveformScaleFactor(Factor(3.0f)), {Constant(3)});
    const WaveformScaleFactor pair = Make({Constant(2), Constant(3)});
    EXPECT_EQ(pair.GetChannelScaleFactor(2).GetConstantScale(), 2.0f);
    EXPECT_EQ(Make({}).GetNumChannels(), 0u);
    EXPECT_EQ(Make({}).GetChannelScaleFactor(0).GetType(), kNone);
}

TEST(WaveformScaleFactorTest, CombinesChannelByChannelOrWithASingleFactor)
{
    struct Case
    {
        const char* mName;
        std::vector<Value> mLeft;
        std::vector<Value> mRight;
        std::vector<Value> mProduct;
        std::vector<Value> mQuotient;
    };
    const Value ramp = Dynamic({2, 4});
    const std::vector<Value> wide{Constant(3), ramp, kUnity};
    const Case cases[] = {
        {"equal counts",
         {Constant(3), ramp},
         {ramp, Constant(2)},
         {Dynamic({6, 12}), Dynamic({4, 8})},
         {Dynamic({1.5f, 0.75f}), Dynamic({1, 2})}},
        {"single constant",
         wide,
         {Constant(2)},
         {Constant(6), Dynamic({4, 8}), Constant(2)},
         {Constant(6), Dynamic({1, 2}), Constant(0.5f)}},
        {"single dynamic",
         wide,
         {ramp},
         {Dynamic({6, 12}), Dynamic({4, 16}), ramp},
         {Dynamic({1.5f, 0.75f}), Dynamic({1, 1}), Dynamic({0.5f, 0.25f})}},
        {"single none", wide, {kUnity}, wide, wide},
        {"single constant 1", wide, {Constant(1)}, wide, wide},
        {"single on the left",
         {Constant(2)},
         wide,
         {Constant(6), Dynamic({4, 8}), Constant(2)},
         {Constant(6), Dynamic({1, 2}), Constant(0.5f)}},
        {"single and none at all", {Constant(2)}, {}, {Constant(2)}, {Constant(2)}},
        {"none at all and single", {}, {Constant(2)}, {Constant(2)}, {Constant(2)}},
        {"none at all", {}, {}, {}, {}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.mName);
        WaveformScaleFactor product = Make(one.mLeft);
        ExpectFactors(product *= Make(one.mRight), one.mProduct);
        WaveformScaleFactor quotient = Make(one.mLeft);
        ExpectFactors(quotient /= Make(one.mRight), one.mQuotient);
    }
}

TEST(WaveformScaleFactorTest, RefusesCountsOfWhichNoneIsOne)
{
    const std::vector<Value> two{Constant(2), Constant(3)};
    const std::vector<Value> three{Constant(2), Constant(3), Constant(4)};
    for (const auto& [left, right] :
         {std::pair{two, three}, {three, two}, {std::vector<Value>{}, two}, {two, {}}}) {
        WaveformScaleFactor factor = Make(left);
        EXPECT_THROW(factor /= Make(right), ombrel::ombrel_exception);
        try {
            factor *= Make(right);
            FAIL();
        } catch (const ombrel::ombrel_exception& exception) {
            EXPECT_STREQ(exception.what(),
                         "Invalid channel scale count. One part must contain one channel only.");
            const auto& data = exception.GetAdditionalData();
            EXPECT_EQ(data.Get(ombrel::debug::kDebugSourceFile).GetString(),
                      "waveform/src/WaveformScaleFactor");
            EXPECT_EQ(data.Get(ombrel::debug::kDebugSourceLine).GetInteger(), 138);
            EXPECT_EQ(data.Get(ombrel::debug::kDebugExpression).GetString(),
                      "(mChannelScaleFactors.size() != 1) && "
                      "(inWaveformScaleFactor.mChannelScaleFactors.size() != 1)");
        }
        ExpectFactors(factor, left);
    }
}

} // namespace

} // namespace tessaro::waveform
