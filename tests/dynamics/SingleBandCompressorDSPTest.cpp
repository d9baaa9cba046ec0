#include <tessaro/dynamics/DynamicsBand.h>
#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro::dynamics {

namespace {

using testing::PlanarRows;
using testing::Row;
using testing::ToDecibels;

constexpr float kRate = 48000.0f;
constexpr int kDelay = 47;

SingleBandCompressorDSP MakeCompressor(unsigned inChannels = 1)
{
    return {kRate, kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(inChannels)};
}

void Drive(SingleBandCompressorDSP& ioCompressor, PlanarRows& ioRows,
           SingleBandCompressorDSP::ChannelMask inSkipped = {})
{
    ioCompressor.Process(ioRows.From(0), ioRows.From(0), static_cast<unsigned>(ioRows.GetLength()),
                         inSkipped);
}

/// What a level held for a while comes out as; all in dB.
double OutputFor(SingleBandCompressorDSP& ioCompressor, double inDecibels, std::size_t inSamples = 48000)
{
    PlanarRows rows(1, inSamples, static_cast<float>(std::pow(10.0, inDecibels / 20.0)));
    Drive(ioCompressor, rows);
    return ToDecibels(rows[0].back());
}

TEST(SingleBandCompressorDSPTest, IsABandWithPeakDetectionAndNothingBesideItsCompressor)
{
    auto compressor = MakeCompressor(3);
    DynamicsBand band(kRate, kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(3), 40000);
    band.SetRMSDetection(false);
    band.SetGainReductionEnabled(true);
    band.SetLimThreshold(100);
    compressor.SetThreshold(-24);
    compressor.SetRatio(3.5f);
    compressor.SetAttack(2);
    compressor.SetRelease(30);
    compressor.SetOutputGain(1.5f);
    band.SetCompThreshold(-24);
    band.SetCompRatio(3.5f);
    band.SetCompAttack(2);
    band.SetCompRelease(30);
    band.SetOutputGain(1.5f);
    auto output = PlanarRows::OfNoise(3, 40000, 6, 1.0);
    for (std::size_t i = 0; i < output.GetLength(); ++i) {
        output[2][i] *= static_cast<float>(i / 2000 % 4);
    }
    auto expected = output;
    band.ProcessInPlace(40000, expected.From(0), 2);
    Drive(compressor, output, 2); // all but the second channel
    for (std::size_t i = 0; i < output.GetLength(); ++i) {
        ASSERT_NEAR(output[2][i], expected[2][i], 1e-6) << i;
        ASSERT_EQ(output[1][i], 0.0f) << i;
    }
    EXPECT_NEAR(compressor.GetGainReduction(), band.GetGainReduction(), 1e-6);
    EXPECT_EQ(compressor.GetGainReduction(), 1.0f);
}

TEST(SingleBandCompressorDSPTest, PassesAudioUnchangedButLateByDefault)
{
    auto compressor = MakeCompressor(2);
    EXPECT_EQ(compressor.GetLatency(), kDelay);
    const auto input = PlanarRows::OfNoise(2, 3000, 3, 4.0);
    auto output = input;
    Drive(compressor, output);
    for (std::size_t i = kDelay; i < input.GetLength(); ++i) {
        ASSERT_EQ(output[1][i], input[1][i - kDelay]) << i;
    }
    compressor.SetSampleRate(44100);
    EXPECT_EQ(compressor.GetLatency(), 43);
}

TEST(SingleBandCompressorDSPTest, CompressesFromTheThresholdOnAndMakesUpTheMeanReduction)
{
    for (const double level : {-40.0, -30.0, -18.0, 0.0, 6.0}) {
        auto compressor = MakeCompressor();
        compressor.SetThreshold(-30);
        compressor.SetRatio(3);
        const double output = std::min(level, -30 + (level + 30) / 3);
        EXPECT_NEAR(OutputFor(compressor, level), output, 0.04) << "for " << level << " dB";
        compressor.Reset();
        compressor.SetAutoMakeupGain(true);
        EXPECT_NEAR(OutputFor(compressor, level, 24000), output + (level - output) / 4, 0.15) << "1/2 s";
        EXPECT_NEAR(OutputFor(compressor, level, 5 * 48000), level, 0.02) << "more than 2 s";
    }
}

TEST(SingleBandCompressorDSPTest, TimesCountAtHalfTheSamplingRateAndReleaseHeadsForUnity)
{
    auto compressor = MakeCompressor();
    compressor.SetThreshold(-20);
    compressor.SetRatio(2);
    compressor.SetRelease(0); // the smoothing is none then
    compressor.SetAttack(200);
    const double settled = std::pow(10.0, -0.5);
    EXPECT_NEAR(OutputFor(compressor, 0, 4800), ToDecibels(settled + (1 - settled) / M_E), 0.02) << "100 ms";
    compressor.SetAttack(0);
    compressor.SetRelease(1000);
    (void)OutputFor(compressor, 0, 480);
    // The level is below the new one within 30 ms, the curve at -1 dB, and the gain below that.
    EXPECT_NEAR(OutputFor(compressor, -18, 24000) + 18, ToDecibels(1 - (1 - settled) / M_E), 0.05) << "1/2 s";
}

TEST(SingleBandCompressorDSPTest, LevelsAreThePeaksSinceTheLastCall)
{
    auto compressor = MakeCompressor(2);
    PlanarRows loud(2, 10, -0.5f), soft(2, 10, 0.25f);
    Drive(compressor, loud);
    Drive(compressor, soft);
    std::vector<float> tooMany(3, 7.0f), levels(2);
    compressor.GetLevels(tooMany);
    EXPECT_EQ(tooMany[0], 7.0f);
    compressor.GetLevels(levels);
    EXPECT_EQ(levels, (std::vector<float>{0.5f, 0.5f}));
    compressor.GetLevels(levels);
    EXPECT_EQ(levels, (std::vector<float>{0.0f, 0.0f}));
}

TEST(SingleBandCompressorDSPTest, ASkippedChannelsDelayStandsStill)
{
    auto compressor = MakeCompressor(2);
    auto input = PlanarRows::OfNoise(2, 1000, 4);
    auto output = input;
    Drive(compressor, output);
    output = input;
    Drive(compressor, output, 1);
    EXPECT_EQ(output[0], Row(1000, 0.0f));
    output = input;
    Drive(compressor, output);
    EXPECT_EQ(output[0][0], input[0][1000 - kDelay]);
    EXPECT_EQ(output[0][kDelay], input[0][0]);
}

} // namespace

} // namespace tessaro::dynamics
