#include <tessaro/frame/AudioProcessor.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro {

namespace {

constexpr int kMeanSquare = 0;
constexpr int kMean = 1;
constexpr int kAsItIs = 2;

template <typename T>
double MeanOf(const std::vector<T>& inRow)
{
    double sum = 0.0;
    for (const T value : inRow) {
        sum += value;
    }
    return sum / static_cast<double>(inRow.size());
}

template <typename T>
double MeanSquareOf(std::vector<T> inRow)
{
    for (T& value : inRow) {
        value *= value;
    }
    return MeanOf(inRow);
}

/// Checks the scaling of a window that `inMake(length, normalize)` makes, at small and odd lengths too.
template <typename Make>
void ExpectNormalization(Make inMake, double inTolerance)
{
    for (const int length : {1, 2, 3, 4, 7, 100, 4095}) {
        const auto plain = inMake(length, kAsItIs);
        const auto meanSquare = inMake(length, kMeanSquare);
        const auto mean = inMake(length, kMean);
        EXPECT_NEAR(1.0, MeanSquareOf(meanSquare), inTolerance) << length;
        EXPECT_NEAR(1.0, MeanOf(mean), inTolerance) << length;
        for (std::size_t i = 0; i < plain.size(); ++i) {
            ASSERT_NEAR(plain[i], mean[i] * MeanOf(plain), inTolerance) << length << " at " << i;
            ASSERT_NEAR(plain[i], meanSquare[i] * std::sqrt(MeanSquareOf(plain)), inTolerance) << length;
        }
    }
}

std::vector<float> Hanning(int inLength, int inNormalize, float inPower = 1.0f)
{
    std::vector<float> window(static_cast<std::size_t>(inLength), -1.0f);
    AudioProcessor::HanningWindow(window.data(), inLength, inNormalize, inPower);
    return window;
}

template <typename T>
std::vector<T> Kaiser(int inLength, double inBeta, int inNormalize, T inValue = T{1})
{
    std::vector<T> window(static_cast<std::size_t>(inLength), inValue);
    AudioProcessor::ApplyKaiserWindow(window.data(), inLength, inBeta, inNormalize);
    return window;
}

TEST(AudioProcessorWindowsTest, HanningIsTheSquaredSineAtHalfSamples)
{
    for (const int length : {1, 2, 3, 10, 11, 2048}) {
        for (const float power : {1.0f, 0.5f, 2.5f}) {
            const auto window = Hanning(length, kAsItIs, power);
            for (int i = 0; i < length; ++i) {
                const double sine = std::sin(std::numbers::pi * (i + 0.5) / length);
                const auto at = static_cast<std::size_t>(i);
                ASSERT_NEAR(std::pow(sine, 2.0 * power), window[at], power < 1.0f ? 3e-4 : 3e-7)
                    << length << " at " << i;
                ASSERT_EQ(window[at], window[window.size() - 1 - at]);
            }
        }
    }
    EXPECT_EQ(1.0f, Hanning(1, kAsItIs)[0]);
}

TEST(AudioProcessorWindowsTest, NormalizationGivesTheWindowUnitMeanSquareOrUnitMean)
{
    ExpectNormalization([](int inLength, int inNormalize) { return Hanning(inLength, inNormalize); }, 1e-6);
    ExpectNormalization([](int inLength, int inNormalize) { return Hanning(inLength, inNormalize, 1.75f); },
                        1e-6);
    ExpectNormalization(
        [](int inLength, int inNormalize) { return Kaiser<float>(inLength, 9.0, inNormalize); }, 1e-6);
    ExpectNormalization(
        [](int inLength, int inNormalize) { return Kaiser<double>(inLength, 9.0, inNormalize); }, 1e-12);
    for (const int mode : {kMeanSquare, kMean}) { // the window counts, not the data
        EXPECT_NEAR(5.0 * Kaiser<double>(33, 4.0, mode)[10], Kaiser<double>(33, 4.0, mode, 5.0)[10], 1e-12);
    }
}

TEST(AudioProcessorWindowsTest, KaiserIsTheQuotientOfBesselFunctionsFromEndToEnd)
{
    for (const double beta : {0.0, 0.5, 5.0, 14.5}) {
        for (const int length : {1, 2, 3, 8, 9, 501}) {
            const auto floats = Kaiser<float>(length, beta, kAsItIs, -3.0f);
            const auto doubles = Kaiser<double>(length, beta, kAsItIs, -3.0);
            for (int i = 0; i < length; ++i) {
                const double x = length > 1 ? 2.0 * i / (length - 1) - 1.0 : 0.0;
                const double expected = -3.0 * std::cyl_bessel_i(0.0, beta * std::sqrt(1.0 - x * x)) /
                                        std::cyl_bessel_i(0.0, beta);
                const auto at = static_cast<std::size_t>(i);
                ASSERT_NEAR(expected, floats[at], 4e-7) << beta << ", " << length << " at " << i;
                ASSERT_NEAR(expected, doubles[at], 1e-9) << beta << ", " << length << " at " << i;
                ASSERT_EQ(doubles[at], doubles[doubles.size() - 1 - at]);
            }
        }
    }
}

TEST(AudioProcessorWindowsTest, KaiserOfFloatsKeepsItsApproximationBeyondItsRange)
{
    // The ends of the window are 1 / I0(beta). Up to 15 the quotient is exact; at 30 it is 7 % off.
    const auto bessel = [](double inBeta) { return 1.0 / Kaiser<double>(9, inBeta, kAsItIs)[0]; };
    const auto quotient = [](double inBeta) { return 1.0 / Kaiser<float>(9, inBeta, kAsItIs)[0]; };
    EXPECT_NEAR(1.0, quotient(15.0) / bessel(15.0), 1e-6);
    EXPECT_NEAR(0.0687122, std::abs(quotient(30.0) / bessel(30.0) - 1.0), 1e-5);
}

TEST(AudioProcessorWindowsTest, KbdHalvesAddUpInPower)
{
    for (const float alpha : {0.0f, 1.0f, 4.0f}) {
        for (const int length : {2, 4, 256, 2048}) {
            std::vector<float> window(static_cast<std::size_t>(length));
            AudioProcessor::KBDWindow(window.data(), length, alpha);
            const std::size_t half = window.size() / 2;
            for (std::size_t i = 0; i < half; ++i) {
                ASSERT_NEAR(1.0f, window[i] * window[i] + window[i + half] * window[i + half], 1e-6f);
                ASSERT_EQ(window[i], window[window.size() - 1 - i]);
                ASSERT_LE(window[i], window[i + 1 < half ? i + 1 : i]);
            }
        }
    }
    // Sums of the Kaiser window of three points: its ends are 1, its middle I0(pi alpha).
    std::vector<float> window(4);
    AudioProcessor::KBDWindow(window.data(), 4, 2.0f);
    const double middle = std::cyl_bessel_i(0.0, 2.0 * std::numbers::pi);
    EXPECT_NEAR(std::sqrt(1.0 / (2.0 + middle)), window[0], 1e-7);
    EXPECT_NEAR(std::sqrt((1.0 + middle) / (2.0 + middle)), window[1], 1e-7);
}

TEST(AudioProcessorWindowsTest, ShortestLengthsWriteWhatIsThereAndNoMore)
{
    for (const int length : {-1, 0}) {
        float sample = 7.0f;
        double wide = 7.0;
        AudioProcessor::HanningWindow(&sample, length, kMean, 1.0f);
        AudioProcessor::ApplyKaiserWindow(&sample, length, 5.0, kMean);
        AudioProcessor::ApplyKaiserWindow(&wide, length, 5.0, kMeanSquare);
        AudioProcessor::KBDWindow(&sample, length, 4.0f);
        EXPECT_EQ(7.0f, sample);
        EXPECT_EQ(7.0, wide);
    }
    for (const int length : {1, 3, 5}) { // the middle of an odd window has no partner
        std::vector<float> window(static_cast<std::size_t>(length) + 1, -7.0f);
        AudioProcessor::KBDWindow(window.data(), length, 4.0f);
        EXPECT_EQ(1.0f, window[static_cast<std::size_t>(length / 2)]);
        EXPECT_EQ(-7.0f, window.back());
    }
    for (const float value : Hanning(2, kMeanSquare, 1000.0f)) {
        EXPECT_EQ(0.0f, value); // vanishes before it can be scaled
    }
}

} // namespace

} // namespace tessaro
