#include <tessaro/dynamics/HardLimit.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/loudness/TruePeak.h>

#include "dynamics/HarshSignals.h"
#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::FindPeak;
using testing::PlanarRows;
using testing::Row;

enum Index
{
    kCeiling,
    kInputGain,
    kLookAhead,
    kRelease,
    kLink,
    kTowardsCeiling,
    kTruePeak
};

constexpr int kRate = 48000;
constexpr std::size_t kDelay = 960;

using Settings = std::vector<std::pair<int, float>>;

void Prepare(HardLimit& ioLimiter, std::size_t inChannels, const Settings& inSettings, int inRate = kRate)
{
    ioLimiter.SetChannels(inChannels);
    ioLimiter.SetSampleRate(inRate);
    for (const auto& [index, value] : inSettings) {
        ioLimiter.SetParameter(index, value);
    }
    ioLimiter.Resume();
}

/// The whole input, in blocks, and behind it as many zeros as come out late; the output is in time.
PlanarRows Limit(HardLimit& ioLimiter, PlanarRows inInput, std::size_t inBlock = 500)
{
    const auto late = static_cast<std::size_t>(ioLimiter.GetLatency());
    const auto length = inInput.GetLength();
    PlanarRows output = inInput;
    for (std::size_t i = 0; i < inInput.GetChannelCount(); ++i) {
        inInput[i].resize(length + late);
        output[i].resize(length + late);
    }
    for (std::size_t done = 0; done < length + late; done += inBlock) {
        const auto count = std::min(inBlock, length + late - done);
        ioLimiter.Process(inInput.From(done), output.From(done), static_cast<int>(count));
    }
    for (std::size_t i = 0; i < inInput.GetChannelCount(); ++i) {
        output[i].erase(output[i].begin(), output[i].begin() + static_cast<std::ptrdiff_t>(late));
    }
    return output;
}

float Linear(float inDecibels)
{
    return static_cast<float>(std::pow(10.0, static_cast<double>(inDecibels) / 20.0));
}

/// The envelope of one channel by a search of the whole window for each sample.
std::vector<double> SearchEnvelope(const Row& inRow, std::size_t inLookAhead, double inCeiling,
                                   double inDecay, bool inTowardsCeiling)
{
    double height = inTowardsCeiling ? inCeiling : 1.0;
    std::vector<double> heights;
    // The envelope has run over the empty delay line before the first sample comes out.
    for (std::ptrdiff_t p = -static_cast<std::ptrdiff_t>(kDelay); p < std::ssize(inRow); ++p) {
        double slope = -1e9, highest = 0.0;
        for (std::size_t k = 0; k < inLookAhead; ++k) {
            const auto place = p + static_cast<std::ptrdiff_t>(k);
            const bool isInside = place >= 0 && place < std::ssize(inRow);
            const double value = isInside ? std::abs(inRow[static_cast<std::size_t>(place)]) : 0.0f;
            slope = std::max(slope, (value - height) / static_cast<double>(k + 1));
            highest = std::max(highest, value);
        }
        if (slope > 0.0) {
            height += slope;
        } else if (inTowardsCeiling) {
            height = std::max(inCeiling, highest) * (1.0 - inDecay) + inDecay * height;
        } else if (height * inDecay >= highest) {
            height *= inDecay;
        }
        if (p >= 0) {
            heights.push_back(height);
        }
    }
    return heights;
}

/// Noise in bursts of all heights, a slow swell of a low tone, and a ramp down
Row MakeBusySignal(std::uint32_t inSeed)
{
    auto row = testing::MakeNoise(4000, inSeed, 1.0);
    const auto swell = testing::MakeSine(4000, 70.0, kRate, 1.5);
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] *= static_cast<float>((i / 300 * 7 + inSeed) % 5) * 0.4f;
        if (i >= 2000) {
            row[i] = row[i] * 0.05f + swell[i] * static_cast<float>(4000 - i) / 2000.0f;
        }
    }
    return row;
}

TEST(HardLimitTest, EqualsASearchOfTheWholeWindow)
{
    const std::vector<Settings> cases = {
        {{kCeiling, -6.0f}},
        {{kCeiling, -6.0f}, {kLookAhead, 20.0f}, {kLink, 0.0f}},
        {{kCeiling, -12.0f}, {kLookAhead, 5.0f}, {kTowardsCeiling, 0.0f}, {kRelease, 40.0f}},
    };
    for (const auto& settings : cases) {
        SCOPED_TRACE(&settings - cases.data());
        HardLimit limiter;
        Prepare(limiter, 2, settings);
        const PlanarRows input({MakeBusySignal(1), MakeBusySignal(2)});
        const auto output = Limit(limiter, input, 333);

        const double ceiling = Linear(limiter.GetParameter(kCeiling));
        const auto samples = limiter.GetParameter(kLookAhead) * kRate / 1000.0f + 0.5f;
        const auto lookAhead = std::min(static_cast<std::size_t>(samples), kDelay - 1);
        const double decay =
            std::exp(std::log(0.15) / (kRate * static_cast<double>(limiter.GetParameter(kRelease)) / 1000.0));
        std::vector<std::vector<double>> heights;
        for (std::size_t i = 0; i < 2; ++i) {
            heights.push_back(SearchEnvelope(input[i], lookAhead, ceiling, decay,
                                             limiter.GetParameter(kTowardsCeiling) != 0.0f));
        }
        double largestError = 0.0;
        for (std::size_t i = 0; i < 2; ++i) {
            for (std::size_t n = 0; n < input.GetLength(); ++n) {
                const double height = limiter.GetParameter(kLink) != 0.0f
                                          ? std::max(heights[0][n], heights[1][n])
                                          : heights[i][n];
                const double gain = height > ceiling ? ceiling / height : 1.0;
                largestError = std::max(largestError, std::abs(gain * input[i][n] - output[i][n]));
            }
        }
        EXPECT_LT(largestError, 2e-7);
    }
}

TEST(HardLimitTest, HearsWhatLiesBetweenTheSamplesOfAFrameAndTheOneBefore)
{
    constexpr std::size_t kFactor = 4, kLate = 10;
    HardLimit limiter(true);
    Prepare(limiter, 1, {{kCeiling, -6.0f}, {kInputGain, 6.0f}, {kTruePeak, 1.0f}});
    const float gain = Linear(6.0f), ceiling = Linear(-6.0f);
    auto row = MakeBusySignal(3);
    const auto output = Limit(limiter, PlanarRows({row}), 333)[0];

    row.resize(row.size() + kLate);
    TruePeakResampler resampler;
    resampler.Init(1, kRate);
    Row between(kFactor), heard(row.size());
    float before = 0.0f;
    for (std::size_t i = 0; i < row.size(); ++i) {
        resampler.Process(&row[i], between.data(), 1);
        const float now = FindPeak(between) * gain;
        heard[i] = std::max({i < kLate ? 0.0f : std::abs(row[i - kLate] * gain), now, before});
        before = now;
    }
    const auto heights = SearchEnvelope(heard, 336, ceiling, std::exp(std::log(0.15) / (kRate * 0.1)), true);
    for (std::size_t i = 0; i < output.size(); ++i) {
        const double height = heights[i + kLate];
        const double limited = row[i] * gain * (height > ceiling ? ceiling / height : 1.0);
        ASSERT_NEAR(output[i], limited, 2e-7) << i;
    }
}

TEST(HardLimitTest, LetsNoSamplePassTheCeiling)
{
    const auto signals = testing::MakeHarshSignals(6000, kRate);
    for (const float ceiling : {0.0f, -0.1f, -23.7f}) {
        for (const float lookAhead : {5.0f, 20.0f}) {
            for (const float towards : {0.0f, 1.0f}) {
                HardLimit limiter;
                Prepare(limiter, signals.size(),
                        {{kCeiling, ceiling},
                         {kInputGain, 11.0f},
                         {kLookAhead, lookAhead},
                         {kTowardsCeiling, towards},
                         {kLink, 0.0f}});
                const auto output = Limit(limiter, PlanarRows(signals));
                for (std::size_t i = 0; i < signals.size(); ++i) {
                    EXPECT_LE(FindPeak(output[i]), Linear(ceiling)) << "signal " << i;
                    EXPECT_GT(FindPeak(output[i]), Linear(ceiling) * 0.999f) << "signal " << i;
                }
            }
        }
    }
}

TEST(HardLimitTest, KeepsMeasuredTruePeaksNearTheCeiling)
{
    // A quarter of the rate, sampled beside its crests: 3 dB between samples
    const auto between = testing::MakeSine(24000, 12000.0, kRate, 1.0, M_PI / 4.0);
    const auto sweep = testing::MakeSweep(24000, 100.0, 15000.0, kRate, 1.0);
    const auto noise = testing::MakeNoise(24000, 5, 1.0);
    Row clicks(24000);
    for (std::size_t i = 100; i < clicks.size(); i += 1999) {
        clicks[i] = clicks[i + 1] = 1.0f;
    }
    for (const auto& [rate, latency] : {std::pair(22050, 441 + 6), {48000, 960 + 10}, {96000, 1920 + 19}}) {
        HardLimit limiter(true);
        Prepare(limiter, 4, {{kCeiling, -1.0f}, {kInputGain, 6.0f}, {kTruePeak, 1.0f}, {kLink, 0.0f}}, rate);
        EXPECT_EQ(limiter.GetLatency(), latency);
        const auto output = Limit(limiter, PlanarRows({between, sweep, noise, clicks}), 9000);
        for (std::size_t i = 0; i < output.GetChannelCount(); ++i) {
            TruePeak meter;
            meter.Init(24000, static_cast<float>(rate));
            meter.Process(output[i].data(), 24000);
            float peak = 0.0f;
            std::int64_t place = 0;
            meter.GetPeakValue(peak, place);
            EXPECT_LT(peak, -1.0f + 0.01f) << "signal " << i << " at " << rate;
            EXPECT_LE(FindPeak(output[i]), Linear(-1.0f));
        }
    }
}

TEST(HardLimitTest, ClimbsInAStraightLineToASinglePeakAndFallsTo15Percent)
{
    constexpr std::size_t kPeakAt = 2000, kAhead = 480;
    const double rest = 1e-3, ceiling = Linear(-6.0f);
    Row input(9000, 1e-3f);
    input[kPeakAt] = 1.0f;
    HardLimit limiter;
    Prepare(limiter, 1, {{kCeiling, -6.0f}, {kLookAhead, 10.0f}, {kRelease, 50.0f}});
    const auto output = Limit(limiter, PlanarRows({input}))[0];
    EXPECT_EQ(output[kPeakAt], Linear(-6.0f));
    for (std::size_t k = 1; k <= kAhead; ++k) {
        const double height = ceiling * rest / static_cast<double>(output[kPeakAt - k]);
        EXPECT_NEAR(height, 1.0 - (1.0 - ceiling) * static_cast<double>(k) / kAhead, 1e-5);
    }
    EXPECT_EQ(output[kPeakAt - kAhead - 1], input[0]);
    const double released = ceiling + 0.15 * (1.0 - ceiling);
    EXPECT_NEAR(output[kPeakAt + 2400], rest * ceiling / released, 1e-7);

    limiter.SetParameter(kTowardsCeiling, 0.0f);
    limiter.Resume();
    const auto other = Limit(limiter, PlanarRows({input}))[0];
    EXPECT_NEAR(other[kPeakAt + 600], rest * ceiling / std::pow(0.15, 0.25), 1e-8);
    EXPECT_EQ(other[kPeakAt + 2400], input[0]);
}

TEST(HardLimitTest, TellsWhetherItLimitsAndLeavesWhatIsAtTheCeiling)
{
    HardLimit limiter;
    Prepare(limiter, 1, {{kCeiling, 0.0f}});
    const auto limit = [&](float inLevel) { return Limit(limiter, PlanarRows(1, 30000, inLevel), 30960)[0]; };
    EXPECT_EQ(limit(1.0f), Row(30000, 1.0f));
    EXPECT_FALSE(limiter.IsLimiting());
    EXPECT_EQ(limit(2.0f), Row(30000, 1.0f));
    EXPECT_TRUE(limiter.IsLimiting());
    EXPECT_FLOAT_EQ(limiter.GetLeastGain(), 0.5f);
    limit(0.0f);
    limit(0.0f);
    EXPECT_FALSE(limiter.IsLimiting()); // rounding does not hold the release up
}

TEST(HardLimitTest, MovesTheInputGainInALineOverTheWholeBlock)
{
    constexpr std::size_t kBlock = 10000; // more than is oversampled at a time
    for (const float isTruePeak : {0.0f, 1.0f}) {
        HardLimit limiter(true);
        Prepare(limiter, 1, {{kCeiling, 0.0f}, {kTruePeak, isTruePeak}});
        const auto late = static_cast<std::size_t>(limiter.GetLatency());
        PlanarRows input(1, 2 * kBlock, 0.1f), output = input;
        limiter.SetParameter(kInputGain, 20.0f * std::log10(3.0f));
        limiter.Process(input.From(0), output.From(0), kBlock);
        limiter.Process(input.From(kBlock), output.From(kBlock), kBlock);
        for (std::size_t i = 0; i < 2 * kBlock - late; ++i) {
            const auto part = static_cast<double>(std::min(i, kBlock)) / kBlock;
            ASSERT_NEAR(output[0][late + i], 0.1 + 0.2 * part, 1e-6) << i;
        }
    }
}

TEST(HardLimitTest, SkipsMaskedChannelsAndStartsThemAnewWhenTheyComeBack)
{
    for (const float isTruePeak : {0.0f, 1.0f}) {
        HardLimit limiter(true);
        Prepare(limiter, 2, {{kCeiling, -20.0f}, {kTruePeak, isTruePeak}});
        const auto late = limiter.GetLatency();
        PlanarRows input({Row(3000, 0.05f), Row(3000, 1.0f)}), output(2, 3000, 7.0f);
        const testing::PoisonedRow poison(3000);
        const float* rows[] = {input[0].data(), poison.Get()};
        limiter.Process(input.From(0), output.From(0), 3000);
        output[1] = Row(3000, 7.0f);
        HardLimit::ChannelMask mask;
        mask.SetBit(1);
        limiter.Process(rows, output.From(0), 3000, mask);
        EXPECT_EQ(output[1], Row(3000, 7.0f));
        EXPECT_FLOAT_EQ(output[0].back(), 0.05f); // the loud channel is not heard

        limiter.Process(input.From(0), output.From(0), 3000);
        EXPECT_TRUE(
            std::all_of(output[1].begin(), output[1].begin() + late, [](float in) { return in == 0.0f; }));
        EXPECT_GT(output[1].back(), 0.09f);
        EXPECT_LT(output[0].back(), 0.006f);
    }
}

TEST(HardLimitTest, KeepsParametersInTheirRanges)
{
    HardLimit plain, limiter(true);
    const float defaults[] = {-0.1f, 0.0f, 7.0f, 100.0f, 1.0f, 1.0f, 0.0f};
    const float middles[] = {-50.0f, -25.0f, 12.5f, 120.0f, 0.0f, 0.0f, 0.0f};
    for (int i = 0; i < HardLimit::kNumParameters; ++i) {
        EXPECT_EQ(limiter.GetParameter(i), defaults[i]);
        for (const float outside : {1e6f, -1e6f, std::numeric_limits<float>::quiet_NaN()}) {
            limiter.SetParameter(i, outside);
            EXPECT_EQ(limiter.GetParameter(i), middles[i]);
        }
        limiter.SetBounds(i, 1.0f, 2.0f);
        float low = 0.0f, high = 0.0f;
        limiter.GetBounds(i, low, high);
        EXPECT_EQ(low == 1.0f && high == 2.0f, i == kRelease);
    }
    limiter.SetParameter(kRelease, 100.0f);
    EXPECT_EQ(limiter.GetParameter(kRelease), 1.5f);
    EXPECT_EQ(limiter.GetParameter(7), 0.0f);
    limiter.SetParameter(kLink, 0.5f);
    EXPECT_EQ(limiter.GetParameter(kLink), 1.0f);
    limiter.SetParameter(kLink, 0.49f);
    EXPECT_EQ(limiter.GetParameter(kLink), 0.0f);

    limiter.SetParameter(kTruePeak, 1.0f);
    EXPECT_EQ(limiter.GetParameter(kTowardsCeiling), 1.0f);
    plain.SetParameter(kTowardsCeiling, 0.0f);
    plain.SetParameter(kTruePeak, 1.0f); // which this object cannot
    EXPECT_EQ(plain.GetParameter(kTruePeak), 0.0f);
    EXPECT_EQ(plain.GetParameter(kTowardsCeiling), 0.0f);
    EXPECT_EQ(plain.GetLatency(), 882);
}

TEST(HardLimitTest, KeepsTheCeilingWhileParametersChange)
{
    HardLimit limiter(true);
    Prepare(limiter, 1, {{kCeiling, -3.0f}});
    PlanarRows input({testing::MakeNoise(20000, 9, 2.0)}), output(1, 20000);
    float ceiling = -3.0f;
    const testing::AllocationGuard guard;
    for (std::size_t done = 0; done < 20000; done += 400) {
        const auto step = done / 400;
        limiter.SetParameter(kLookAhead, static_cast<float>(5 + step * 7 % 16));
        limiter.SetParameter(kTruePeak, static_cast<float>(step / 10 % 2));
        limiter.SetParameter(kTowardsCeiling, static_cast<float>(step / 3 % 2));
        const float higher = std::max(ceiling, -static_cast<float>(step % 4) * 3.0f);
        ceiling = -static_cast<float>(step % 4) * 3.0f;
        limiter.SetParameter(kCeiling, ceiling);
        limiter.Process(input.From(done), output.From(done), 400);
        for (std::size_t i = done; i < done + 400; ++i) {
            ASSERT_LE(std::abs(output[0][i]), Linear(higher)) << i;
        }
    }
}

TEST(HardLimitTest, LetsNotANumberPassOnce)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float isTruePeak : {0.0f, 1.0f}) {
        HardLimit limiter(true);
        Prepare(limiter, 1, {{kCeiling, -6.0f}, {kTruePeak, isTruePeak}});
        auto input = testing::MakeNoise(4000, 11, 1.0);
        input[100] = std::numeric_limits<float>::quiet_NaN();
        input[200] = -kInfinity;
        auto output = Limit(limiter, PlanarRows({input}))[0];
        EXPECT_TRUE(std::isnan(output[100]));
        EXPECT_EQ(output[200], -kInfinity);
        output[100] = output[200] = 0.0f;
        EXPECT_TRUE(testing::AreAllFinite(output));
        EXPECT_LE(FindPeak(output), Linear(-6.0f));
    }
}

} // namespace

} // namespace tessaro
