#include <tessaro/utility/FFTWindow.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <numeric>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro {

namespace {

using namespace fftwindow;

constexpr double kNoAttenuation = 140.0;
constexpr long double kPi = std::numbers::pi_v<long double>;

/// The Bessel function as all users of these windows know it: 20 terms.
long double BesselSeries(long double inX)
{
    long double sum = 1.0L;
    long double term = 1.0L;
    for (int k = 1; k < 20; ++k) {
        term *= inX / 2.0L / k;
        sum += term * term;
    }
    return sum;
}

long double KaiserAt(long double inFromPeak, long double inAttenuation)
{
    long double shape = 0.0L;
    if (inAttenuation >= 50.0L) {
        shape = 0.1102L * (inAttenuation - 8.7L);
    } else if (inAttenuation > 21.0L) {
        shape = 0.5842L * std::pow(inAttenuation - 21.0L, 0.4L) + 0.07886L * (inAttenuation - 21.0L);
    }
    return BesselSeries(shape * std::sqrt(1.0L - inFromPeak * inFromPeak)) / BesselSeries(shape);
}

/// The window seen from its peak, `inDistance` steps away: the types with an edge above 0 end one step early.
long double LongReference(unsigned inType, int inDistance, int inHalf, double inAttenuation)
{
    const bool hasPedestal = inType == kHamming || inType >= kBlackmanHarris;
    if (inHalf == 0 || inDistance >= inHalf) {
        return 0.0L;
    }
    const int reach = hasPedestal ? inHalf - 1 : inHalf;
    const long double x = reach == 0 ? 0.0L : static_cast<long double>(inDistance) / reach;
    switch (inType) {
    case kTriangular:
        return 1.0L - x;
    case kHann:
        return 0.5L + 0.5L * std::cos(kPi * x);
    case kHamming:
        return 0.54L + 0.46L * std::cos(kPi * x);
    case kBlackman:
        return 0.42L + 0.5L * std::cos(kPi * x) + 0.08L * std::cos(2 * kPi * x);
    case kWelch:
        return 1.0L - x * x;
    case kBlackmanHarris:
        return 0.35875L + 0.48829L * std::cos(kPi * x) + 0.14128L * std::cos(2 * kPi * x) +
               0.01168L * std::cos(3 * kPi * x);
    default:
        return KaiserAt(x, inType == kKaiser140 ? 140.0L : inType == kKaiser180 ? 180.0L : inAttenuation);
    }
}

double Reference(unsigned inType, int inDistance, int inHalf, double inAttenuation)
{
    return static_cast<double>(LongReference(inType, inDistance, inHalf, inAttenuation));
}

std::vector<double> Doubles(int inLength, unsigned inFlags, double inWidth = 1.0,
                            double inAttenuation = kNoAttenuation)
{
    constexpr double kGuard = -77.0;
    std::vector<double> window(static_cast<std::size_t>(inLength) + 1, 1.0);
    window.back() = kGuard;
    EXPECT_TRUE(GetFFTWindow(window.data(), inLength, inWidth, inFlags | kDoubles, inAttenuation));
    EXPECT_EQ(kGuard, window.back());
    window.pop_back();
    return window;
}

class FFTWindowTest : public ::testing::TestWithParam<unsigned>
{
};

TEST_P(FFTWindowTest, EachShapeIsTheFormulaAroundItsPeakAtEveryLength)
{
    const unsigned type = GetParam();
    for (const double attenuation : {140.0, 60.0, 35.0, 21.0, 10.0}) {
        for (const int length : {1, 2, 3, 4, 5, 6, 7, 8, 9, 64, 255, 1000}) {
            const auto full = Doubles(length, type | kFull, 1.0, attenuation);
            const auto rising = Doubles(length, type | kRising, 1.0, attenuation);
            const auto falling = Doubles(length, type | kFalling | kFull, 1.0, attenuation);
            for (int i = 0; i < length; ++i) {
                SCOPED_TRACE(::testing::Message() << "length " << length << " at " << i);
                const auto at = static_cast<std::size_t>(i);
                const int fromMiddle = std::abs(i - length / 2);
                ASSERT_NEAR(Reference(type, fromMiddle, length / 2, attenuation), full[at], 1e-14);
                ASSERT_NEAR(Reference(type, length - i, length, attenuation), rising[at], 1e-14);
                ASSERT_NEAR(Reference(type, i, length, attenuation), falling[at], 1e-14);
            }
        }
    }
}

TEST_P(FFTWindowTest, FullWindowIsExactlySymmetricAroundTheMiddleBehindALeadingZero)
{
    for (const int length : {2, 3, 8, 37, 512}) {
        const auto window = Doubles(length, GetParam() | kFull);
        EXPECT_EQ(0.0, window[0]);
        const auto middle = static_cast<std::size_t>(length / 2);
        EXPECT_NEAR(1.0, window[middle], 1e-15);
        for (std::size_t i = 1; i < window.size() - middle; ++i) {
            ASSERT_EQ(window[middle - i], window[middle + i]) << i;
        }
    }
}

TEST_P(FFTWindowTest, NarrowWindowIsAsHighAsItIsNarrowAndPaddedWithZeros)
{
    const unsigned type = GetParam();
    for (const auto& [length, width, half] :
         {std::tuple(64, 0.5, 16), std::tuple(50, 0.3, 7), std::tuple(51, 0.5, 12), std::tuple(8, 0.2, 0)}) {
        const auto full = Doubles(length, type | kFull, width);
        for (int i = 0; i < length; ++i) {
            const auto expected = Reference(type, std::abs(i - length / 2), half, kNoAttenuation);
            ASSERT_NEAR(expected * static_cast<float>(1.0 / width), full[static_cast<std::size_t>(i)], 1e-14)
                << length << " at " << i;
        }
    }
    const auto rising = Doubles(32, type | kRising, 0.5);
    const auto falling = Doubles(32, type | kFalling, 0.5);
    for (int i = 0; i < 32; ++i) {
        const auto at = static_cast<std::size_t>(i);
        ASSERT_NEAR(2.0 * Reference(type, 32 - i, 16, kNoAttenuation), rising[at], 1e-14) << i;
        ASSERT_NEAR(2.0 * Reference(type, i, 16, kNoAttenuation), falling[at], 1e-14) << i;
    }
}

TEST_P(FFTWindowTest, OptionsStoreMultiplyAndInvert)
{
    const unsigned type = GetParam();
    constexpr int kLength = 48;
    const auto window = Doubles(kLength, type | kFull);
    const auto reciprocal = Doubles(kLength, type | kFull | kReciprocal | kReserved);
    std::vector<float> floats(kLength, 9.0f);
    std::vector<float> product(kLength, 3.0f);
    std::vector<double> inverseProduct(kLength, -0.5);
    GetFFTWindow(floats.data(), kLength, 1.0, type | kFull, kNoAttenuation);
    GetFFTWindow(product.data(), kLength, 1.0, type | kFull | kMultiply, kNoAttenuation);
    GetFFTWindow(inverseProduct.data(), kLength, 1.0, type | kFull | kMultiply | kReciprocal | kDoubles,
                 kNoAttenuation);
    EXPECT_EQ(0.0, reciprocal[0]);
    EXPECT_EQ(0.0, inverseProduct[0]);
    for (std::size_t i = 0; i < kLength; ++i) {
        EXPECT_EQ(static_cast<float>(window[i]), floats[i]);
        EXPECT_FLOAT_EQ(static_cast<float>(3.0 * window[i]), product[i]);
        if (window[i] != 0.0) {
            EXPECT_DOUBLE_EQ(1.0 / window[i], reciprocal[i]);
            EXPECT_DOUBLE_EQ(-2.0 / window[i], inverseProduct[i]);
        }
    }
}

TEST_P(FFTWindowTest, OddArgumentsGiveNumbersAndStayInTheirMemory)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double width : {0.0, -1.0, 1e-9, 1.5, 7.3, 1e300, kInfinity, std::nan("")}) {
        for (int length = 0; length < 12; ++length) {
            for (const unsigned shape : {0u, kFull, kFalling, kRising, kFull | kRising, 0x700u}) {
                for (const double value : Doubles(length, GetParam() | shape, width)) {
                    ASSERT_TRUE(std::isfinite(value)) << width << ", " << length << ", " << shape;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Types, FFTWindowTest, ::testing::Range(kTriangular, kKaiser + 1));

TEST(FFTWindowUsesTest, HannOfEightIsWrittenOut)
{
    const double low = 0.5 - std::sqrt(0.125);
    const std::vector<double> expected = {0.0, low, 0.5, 1.0 - low, 1.0, 1.0 - low, 0.5, low};
    const auto window = Doubles(8, 0x101);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_NEAR(expected[i], window[i], 1e-15) << i;
    }
}

TEST(FFTWindowUsesTest, PeriodicWindowsOverlapToAConstant)
{
    const auto shifted = [](unsigned inType, std::size_t inHop) {
        const auto window = Doubles(240, inType | kFull);
        std::vector<double> sums(inHop, 0.0);
        for (std::size_t i = 0; i < window.size(); ++i) {
            sums[i % inHop] += window[i];
        }
        return sums;
    };
    for (const double sum : shifted(kHann, 120)) {
        EXPECT_NEAR(1.0, sum, 1e-14);
    }
    for (const double sum : shifted(kTriangular, 60)) {
        EXPECT_NEAR(2.0, sum, 1e-14);
    }
    for (const double sum : shifted(kBlackman, 80)) {
        EXPECT_NEAR(1.26, sum, 1e-14);
    }
    const auto narrow = Doubles(240, kHann | kFull, 0.25);
    EXPECT_NEAR(120.0, std::accumulate(narrow.begin(), narrow.end(), 0.0), 1e-4); // as the wide one
}

TEST(FFTWindowUsesTest, KaiserIsAsExactAsItsSeries)
{
    for (const auto& [type, attenuation, error] :
         {std::tuple(kKaiser, 60.0, 1e-14), std::tuple(kKaiser140, 140.0, 1e-8),
          std::tuple(kKaiser180, 180.0, 5e-6)}) {
        const double shape = 0.1102 * (attenuation - 8.7);
        const auto window = Doubles(400, type | kFalling, 1.0, 60.0);
        for (int i = 0; i < 400; ++i) {
            const double x = i / 399.0;
            const double exact =
                std::cyl_bessel_i(0.0, shape * std::sqrt(1.0 - x * x)) / std::cyl_bessel_i(0.0, shape);
            ASSERT_NEAR(exact, window[static_cast<std::size_t>(i)], error) << attenuation << " at " << i;
        }
    }
}

TEST(FFTWindowUsesTest, UnknownTypesAndNoShapeAreZerosAndNothingIsWrittenWithoutLength)
{
    for (const unsigned flags : {0x109u, 0x1FFu, 0x2FFu, 0x001u, 0x000u}) {
        for (const double value : Doubles(16, flags)) {
            EXPECT_EQ(0.0, value) << flags;
        }
    }
    EXPECT_TRUE(GetFFTWindow(nullptr, 1024, 1.0, kHann | kFull | kMultiply | kReciprocal, kNoAttenuation));
    double untouched = 5.0;
    EXPECT_TRUE(GetFFTWindow(&untouched, 0, 1.0, kHann | kFull | kDoubles, kNoAttenuation));
    EXPECT_TRUE(GetFFTWindow(&untouched, -3, 1.0, kHann | kFull | kDoubles, kNoAttenuation));
    EXPECT_EQ(5.0, untouched);
}

} // namespace

} // namespace tessaro
