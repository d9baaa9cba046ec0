#include <tessaro/loudness/TruePeak.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeNoise;
using testing::MakeSine;
using testing::Row;

struct Peak
{
    float mDecibels = 0.0f;
    std::int64_t mPosition = 0;
};

Peak Measure(const Row& inRow, float inRate, unsigned inBlock = 512)
{
    TruePeak meter;
    meter.Init(inBlock, inRate);
    for (std::size_t done = 0; done < inRow.size(); done += inBlock) {
        const auto count = static_cast<unsigned>(std::min<std::size_t>(inBlock, inRow.size() - done));
        const testing::AllocationGuard guard;
        meter.Process(inRow.data() + done, count);
    }
    Peak peak;
    meter.GetPeakValue(peak.mDecibels, peak.mPosition);
    return peak;
}

/// Rises over 10 ms, so that the onset itself has no peak
void FadeIn(Row& ioRow)
{
    for (std::size_t i = 0; i < 480; ++i) {
        ioRow[i] *= static_cast<float>(i) / 480.0f;
    }
}

/// EBU Tech 3341, minimum requirements test signals 15 to 19: sines that the samples miss
TEST(TruePeakTest, MeetsTheMinimumRequirementSines)
{
    struct Case
    {
        double mFraction;
        double mDegrees;
        double mAmplitude;
        double mLevel;
    };
    const Case cases[] = {
        {4, 0, 0.5, -6.0}, {4, 45, 0.5, -6.0}, {6, 60, 0.5, -6.0}, {8, 67.5, 0.5, -6.0}, {4, 45, 1.41, 3.0}};
    int number = 15;
    for (const auto& [fraction, degrees, amplitude, level] : cases) {
        Row sine = MakeSine(48000, 48000 / fraction, 48000, amplitude, degrees * M_PI / 180.0);
        FadeIn(sine);
        const auto peak = Measure(sine, 48000);
        std::printf("3341 case %d: %.3f\n", number++, peak.mDecibels);
        EXPECT_LT(peak.mDecibels, level + 0.2);
        EXPECT_GT(peak.mDecibels, level - 0.4);
    }
}

/// In the manner of signals 20 to 23: one band-limited pulse of height 1, sampled at each quarter between two
/// samples
TEST(TruePeakTest, FindsAPulseWhereverItLiesBetweenSamples)
{
    for (int offset = 0; offset < 4; ++offset) {
        Row pulse(2000);
        for (std::size_t i = 0; i < pulse.size(); ++i) {
            const double t = static_cast<double>(i) - 1000.0 - offset / 4.0;
            pulse[i] = static_cast<float>(std::exp(-t * t / 400.0) * std::cos(2.0 * M_PI * t / 6.0));
        }
        const auto peak = Measure(pulse, 48000);
        std::printf("pulse at %d/4: %.3f\n", offset, peak.mDecibels);
        EXPECT_LT(peak.mDecibels, 0.2);
        EXPECT_GT(peak.mDecibels, -0.4);
        if (offset == 2) { // found in the oversampled row, as late as its filter is long
            EXPECT_EQ(peak.mPosition, (1000 * 4 + 2 + 35) / 4);
        }
    }
}

TEST(TruePeakTest, OversamplesByTheRate)
{
    EXPECT_EQ(GetTruePeakOversampleFactor(8000), 8u);
    EXPECT_EQ(GetTruePeakOversampleFactor(24000), 8u);
    EXPECT_EQ(GetTruePeakOversampleFactor(24001), 4u);
    EXPECT_EQ(GetTruePeakOversampleFactor(95999), 4u);
    EXPECT_EQ(GetTruePeakOversampleFactor(96000), 2u);
    for (const float rate : {8000.0f, 44100.0f, 192000.0f}) {
        TruePeak meter;
        meter.Init(64, rate);
        EXPECT_EQ(meter.GetResampleFactor(), GetTruePeakOversampleFactor(rate));
        Row sine = MakeSine(4800, rate / 6, rate, 0.5, M_PI / 3);
        FadeIn(sine);
        EXPECT_NEAR(Measure(sine, rate).mDecibels, -6.02, 0.2) << rate;
    }
}

TEST(TruePeakTest, ResamplerPutsOutTheSignalAsLateAsItSays)
{
    TruePeakResampler resampler;
    resampler.Init(256, 48000);
    EXPECT_EQ(resampler.GetOversampleFactor(), 4u);
    const Row input = MakeSine(256, 1000, 48000, 0.5);
    Row first(1024);
    resampler.Process(input.data(), first.data(), 256);
    for (std::size_t i = 200; i < 1024; ++i) {
        const double t = (static_cast<double>(i) - TruePeakResampler::GetLatency()) / 192000.0;
        ASSERT_NEAR(first[i], 0.5 * std::sin(2.0 * M_PI * 1000.0 * t), 1e-3);
    }
    resampler.Reset();
    Row split(1024);
    for (unsigned done = 0; done < 256; done += 16) {
        resampler.Process(input.data() + done, split.data() + 4 * done, 16);
    }
    EXPECT_EQ(split, first);
}

TEST(TruePeakTest, SamplesCountToo)
{
    Row row(1000);
    row[700] = -0.5f; // a lone sample is lower between samples than it is itself
    const auto peak = Measure(row, 48000, 64);
    EXPECT_NEAR(peak.mDecibels, -6.0206, 1e-3);
    EXPECT_EQ(peak.mPosition, 700);
    row[900] = 0.5f; // as high is not above
    EXPECT_EQ(Measure(row, 48000, 64).mPosition, 700);
    EXPECT_EQ(Measure(Row(100), 48000).mDecibels, -300.0f);
}

TEST(TruePeakTest, SplitsRestartsAndNaNAreNoMatter)
{
    Row noise = MakeNoise(5000, 3, 0.5);
    const auto whole = Measure(noise, 44100, 5000);
    const auto split = Measure(noise, 44100, 7);
    EXPECT_EQ(split.mDecibels, whole.mDecibels);
    EXPECT_EQ(split.mPosition, whole.mPosition);

    TruePeak meter;
    meter.Init(16, 44100);
    Row broken(16, std::numeric_limits<float>::quiet_NaN());
    meter.Process(broken.data(), 16);
    Peak peak;
    meter.GetPeakValue(peak.mDecibels, peak.mPosition);
    EXPECT_EQ(peak.mDecibels, -300.0f);
    meter.Init(16, 44100);
    meter.Process(noise.data(), 5000); // above the size of the block
    meter.GetPeakValue(peak.mDecibels, peak.mPosition);
    EXPECT_EQ(peak.mDecibels, whole.mDecibels);
    EXPECT_EQ(peak.mPosition, whole.mPosition);
}

} // namespace
} // namespace tessaro
