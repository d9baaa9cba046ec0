#include <tessaro/filters/BiquadDesign.h>

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>
#include <tessaro/filters/FilterResponse.h>
#include <tessaro/filters/SecondOrderIIRFilter.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"

namespace tessaro {
namespace {

using testing::Decibels;
using testing::kSampleRates;
using Biquad = std::array<double, 6>;

double At(const Biquad& inArray, double inFrequency, double inSampleRate)
{
    return GetMagnitudeResponse(2.0 * std::numbers::pi * inFrequency / inSampleRate, inArray.data(), 2, 1);
}

double FirstOrderAt(const std::array<double, 4>& inArray, double inFrequency, double inSampleRate)
{
    return GetMagnitudeResponse(2.0 * std::numbers::pi * inFrequency / inSampleRate, inArray.data(), 1, 1);
}

/// The frequency whose bilinear image lies `inRatio` times as high.
double Warped(double inFrequency, double inRatio, double inSampleRate)
{
    const double turn = std::numbers::pi / inSampleRate;
    return std::atan(std::tan(inFrequency * turn) * inRatio) / turn;
}

TEST(BiquadDesignTest, ResponsesFollowTheAnalogShapesAtEveryRate)
{
    for (const double rate : kSampleRates) {
        for (const double f : {100.0, 3000.0, 0.35 * rate}) {
            for (const double q : {0.4, 0.70710678, 5.0}) {
                for (const double ratio : {0.25, 1.0, 3.0}) {
                    const double at = Warped(f, ratio, rate);
                    const double other = std::hypot(1.0 - ratio * ratio, ratio / q);
                    Biquad low, high, band, peak;
                    LowpassCoefficients(low.data(), rate, f, q);
                    HighpassCoefficients(high.data(), rate, f, q);
                    BandpassCoefficients(band.data(), rate, f, q);
                    PeakingEQCoefficients(peak.data(), rate, f, 7.5, q);
                    EXPECT_NEAR(At(low, at, rate) * other, 1.0, 1e-6);
                    EXPECT_NEAR(At(high, at, rate) * other, ratio * ratio, 1e-6);
                    EXPECT_NEAR(At(band, at, rate) * other, ratio / q, 1e-6);
                    const double a = testing::Amplitude(7.5 / 2.0);
                    EXPECT_NEAR(At(peak, at, rate) * std::hypot(1.0 - ratio * ratio, ratio / (a * q)),
                                std::hypot(1.0 - ratio * ratio, ratio * a / q), 1e-6);
                }
            }
        }
    }
}

TEST(BiquadDesignTest, ShelvesReachTwiceTheGainAndPassItAtTheCorner)
{
    for (const double rate : kSampleRates) {
        for (const double gain : {-9.0, 4.0}) {
            for (const double slope : {0.5, 1.0}) {
                Biquad low, high;
                LowShelfCoefficients(low.data(), rate, 900.0, gain, slope);
                HighShelfCoefficients(high.data(), rate, 900.0, gain, slope);
                EXPECT_NEAR(Decibels(At(low, 0.0, rate)), 2.0 * gain, 1e-6);
                EXPECT_NEAR(Decibels(At(low, 900.0, rate)), gain, 1e-6);
                EXPECT_NEAR(Decibels(At(low, rate / 2.0, rate)), 0.0, 1e-6);
                EXPECT_NEAR(Decibels(At(high, 0.0, rate)), 0.0, 1e-6);
                EXPECT_NEAR(Decibels(At(high, 900.0, rate)), gain, 1e-6);
                EXPECT_NEAR(Decibels(At(high, rate / 2.0, rate)), 2.0 * gain, 1e-6);
                EXPECT_NEAR(MapQToShelfSlope(MapShelfSlopeToQ(slope, gain), gain), slope, 1e-12);
            }
        }
    }
    EXPECT_EQ(MapQToShelfSlope(50.0, 6.0), 1.0);
    EXPECT_NEAR(MapShelfSlopeToQ(1.0, 12.0), std::sqrt(0.5), 1e-12);
}

TEST(BiquadDesignTest, AboveHalfTheSampleRateOnlyHighpassesMute)
{
    const Biquad identity{1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
    const Biquad mute{0.0, 0.0, 0.0, 1.0, 0.0, 0.0};
    Biquad array;
    const auto after = [&array](auto inDesign, auto... inArguments) {
        array.fill(7.0);
        inDesign(array.data(), 48000.0, inArguments...);
        return array;
    };
    using Q = void (*)(double*, double, double, double);
    EXPECT_EQ(after(Q(LowpassCoefficients), 24001.0, 1.0), identity);
    EXPECT_EQ(after(Q(HighpassCoefficients), 24001.0, 1.0), mute);
    EXPECT_EQ(after(Q(BandpassCoefficients), 24001.0, 1.0), identity);
    EXPECT_EQ(after(PeakingEQCoefficients, 24001.0, 6.0, 1.0), identity);
    EXPECT_EQ(after(LowShelfCoefficients, 24001.0, 6.0, 1.0), identity);
    EXPECT_EQ(after(HighShelfCoefficients, 24001.0, 6.0, 1.0), identity);
    // At half the sample rate itself the formulas still hold.
    EXPECT_NE(after(Q(HighpassCoefficients), 24000.0, 1.0), mute);
    EXPECT_NE(after(LowShelfCoefficients, 24000.0, 6.0, 1.0), identity);
}

TEST(BiquadDesignTest, FirstOrderPassesAreThreeDecibelsDownAtTheUnwarpedCutoff)
{
    for (const double rate : kSampleRates) {
        const double cutoff = 0.2 * rate;
        // Where the bilinear transform without prewarp puts the cutoff.
        const double at = std::atan(std::numbers::pi * cutoff / rate) * rate / std::numbers::pi;
        std::array<double, 4> low, high, prewarped;
        LowpassCoefficients(low.data(), rate, cutoff, false);
        HighpassCoefficients(high.data(), rate, cutoff, false);
        EXPECT_NEAR(Decibels(FirstOrderAt(low, at, rate)), -3.0103, 1e-4);
        EXPECT_NEAR(Decibels(FirstOrderAt(high, at, rate)), -3.0103, 1e-4);
        EXPECT_NEAR(FirstOrderAt(low, 0.0, rate), 1.0, 1e-12);
        EXPECT_NEAR(FirstOrderAt(high, rate / 2.0, rate), 1.0, 1e-12);
        // The flag hardly moves the cutoff, and does not bring it to where a true prewarp would.
        LowpassCoefficients(prewarped.data(), rate, cutoff, true);
        EXPECT_NE(prewarped[0], low[0]);
        EXPECT_NEAR(prewarped[0], low[0], 1e-9);
    }
    using First = void (*)(double*, double, double, bool);
    const auto design = [](First inDesign, double inCutoff) {
        std::array<double, 4> array;
        inDesign(array.data(), 48000.0, inCutoff, true);
        return array;
    };
    const std::array<double, 4> pass{1.0, 0.0, 1.0, 0.0}, mute{0.0, 0.0, 1.0, 0.0};
    EXPECT_EQ(design(LowpassCoefficients, 24001.0), pass);
    EXPECT_EQ(design(HighpassCoefficients, 24001.0), mute);
    for (const double cutoff : {0.0, -5.0}) {
        EXPECT_EQ(design(LowpassCoefficients, cutoff), mute);
        EXPECT_EQ(design(HighpassCoefficients, cutoff), pass);
    }
}

TEST(BiquadDesignTest, DCBlockerHasItsPolesInProportionToTheRateAndLosesStability)
{
    for (const double rate : {22050.0, 44100.0, 48000.0, 96000.0}) {
        Biquad array;
        DCBlockingCoefficients(array.data(), rate);
        const double radius = 0.995 * rate / 44100.0;
        EXPECT_NEAR(array[4], -2.0 * radius, 1e-12);
        EXPECT_NEAR(array[5], radius * radius, 1e-12);
        EXPECT_EQ(At(array, 0.0, rate), 0.0);
        SecondOrderIIRFilter filter;
        filter.SetCoefficients({array[4], array[5], array[0], array[1], array[2]});
        std::vector<float> row(20000, 1.0f);
        filter.Process(20000, row.data(), row.data());
        // The state, some 1e4, is rounded to single precision.
        EXPECT_EQ(std::fabs(row.back()) < 0.1f, rate <= 44100.0) << rate;
    }
}

TEST(BiquadDesignTest, NaNArgumentsGiveNaNCoefficients)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Biquad array;
    LowpassCoefficients(array.data(), 48000.0, nan, 1.0);
    EXPECT_TRUE(std::isnan(array[0]) && std::isnan(array[4]));
    PeakingEQCoefficients(array.data(), 48000.0, 1000.0, nan, 1.0);
    EXPECT_TRUE(std::isnan(array[0]) && std::isnan(array[5]));
    EXPECT_TRUE(std::isnan(MapQToShelfSlope(nan, 6.0)));
}

TEST(BiquadDesignTest, IdentityOfAnyOrder)
{
    std::array<double, 8> values;
    values.fill(7.0);
    IdentityCoefficients(values.data(), 0);
    EXPECT_EQ(values[0], 7.0);
    IdentityCoefficients(values.data(), 3);
    EXPECT_EQ(values, (std::array<double, 8>{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0}));
}

/// The filter's own impulse response against the response of its coefficients.
TEST(SecondOrderIIRFilterTest, HasTheResponseOfItsCoefficientsInAnySplit)
{
    for (const double rate : kSampleRates) {
        Biquad array;
        PeakingEQCoefficients(array.data(), rate, 2000.0, -11.0, 2.0);
        SecondOrderIIRFilter filter;
        std::vector<float> impulse(20000), split;
        impulse[0] = 1.0f;
        split = impulse;
        filter.Process(10, impulse.data() + 1, split.data() + 1);
        EXPECT_EQ(split, impulse) << "silent without coefficients";
        filter.SetCoefficients({array[4], array[5], array[0], array[1], array[2]});
        {
            testing::AllocationGuard guard;
            filter.Process(20000, impulse.data(), impulse.data());
        }
        for (const double f : {50.0, 1000.0, 2000.0, 2400.0, 0.4 * rate}) {
            EXPECT_NEAR(Decibels(testing::MagnitudeOfImpulse(impulse, f / rate)),
                        Decibels(At(array, f, rate)), 1e-4);
        }
        filter.Reset();
        for (unsigned done = 0, size = 1; done < 20000;
             done += size, size = std::min(2 * size, 20000 - done)) {
            filter.Process(size, split.data() + done, split.data() + done);
        }
        EXPECT_EQ(split, impulse);
    }
}

TEST(SecondOrderIIRFilterTest, RoundsItsStateToSinglePrecisionButNotTheOutputOfTheStep)
{
    SecondOrderIIRFilter filter;
    filter.SetCoefficients({-1.0, 0.0, 16777216.0, -16777216.0, 0.0});
    std::vector<float> row{1.0f, 5.9604645e-8f};
    filter.Process(2, row.data(), row.data());
    // w is 1 + 2^-24: its step of 2^-24 is seen by the output ...
    EXPECT_EQ(row[1], 1.0f);
    // ... but lost from the state, which is 1 again.
    std::vector<float> next{0.0f};
    filter.SetCoefficients({-1.0, 0.0, 16777216.0, 0.0, 0.0});
    filter.Process(1, next.data(), next.data());
    EXPECT_EQ(next[0], 16777216.0f);
}

} // namespace
} // namespace tessaro
