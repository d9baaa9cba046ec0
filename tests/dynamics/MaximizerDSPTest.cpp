#include <tessaro/dynamics/MaximizerDSP.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include <gtest/gtest.h>
#include <tessaro/dynamics/IRCLimiter.h>

#include "dynamics/HarshSignals.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::FindPeak;
using testing::PlanarRows;
using testing::Row;
using Mode = MaximizerDSP::Mode;
using Mask = MaximizerDSP::ChannelMask;

constexpr float kRate = 48000.0f;
constexpr std::size_t kLate = 262;

std::unique_ptr<MaximizerDSP> Make(Mode inMode, float inThreshold, std::size_t inChannels = 1,
                                   float inMargin = 0.0f, bool inWithHistogram = false)
{
    auto maximizer =
        std::make_unique<MaximizerDSP>(512, kRate, static_cast<int>(inChannels), inWithHistogram);
    maximizer->SetMode(inMode);
    maximizer->SetThreshold(inThreshold);
    maximizer->SetMargin(inMargin);
    maximizer->SetMeterVisible(true);
    return maximizer;
}

PlanarRows Maximize(MaximizerDSP& ioMaximizer, PlanarRows inRows, Mask inSkipped = {},
                    std::size_t inBlock = 500)
{
    for (std::size_t done = 0; done < inRows.GetLength(); done += inBlock) {
        const auto count = std::min(inBlock, inRows.GetLength() - done);
        ioMaximizer.Process(static_cast<unsigned>(count), inRows.From(done), inSkipped);
    }
    return inRows;
}

Row Maximize(MaximizerDSP& ioMaximizer, const Row& inRow)
{
    return Maximize(ioMaximizer, PlanarRows({inRow}))[0];
}

float Linear(float inDecibels)
{
    return std::exp(inDecibels * 0.115129255f);
}

double Kept(double inMillis)
{
    return std::exp(-1000.0 / inMillis / (kRate / 2.0));
}

/// One frame after the other, with a hold line that is searched as a whole
PlanarRows MaximizeByFrames(Mode inMode, const PlanarRows& inInput, float inThreshold, float inMargin)
{
    const double threshold = Linear(inThreshold), makeup = Linear(inMargin - inThreshold);
    const double decay = std::pow(0.03, 1.0 / (kRate * 0.05));
    const double attack = Kept(4.0), release = Kept(500.0), step = 1.0 - std::exp(-1.0 / (kRate * 0.001));
    std::array<double, 200> line;
    line.fill(1.0);
    double held = 0.0, gain = 1.0, smoothed = 1.0;
    PlanarRows output(inInput.GetChannelCount(), inInput.GetLength());
    const auto at = [&](std::size_t inChannel, std::size_t inFrame, std::size_t inAgo) {
        return inFrame < inAgo ? 0.0 : static_cast<double>(inInput[inChannel][inFrame - inAgo]);
    };
    for (std::size_t n = 0; n < inInput.GetLength(); ++n) {
        double peak = 0.0;
        for (std::size_t c = 0; c < inInput.GetChannelCount(); ++c) {
            peak = std::max(peak, std::abs(at(c, n, 63)));
        }
        held = std::max(peak, held * decay);
        double applied;
        if (inMode == Mode::kSoft) {
            const double target = held >= threshold ? std::pow(held / threshold, -0.95) : 1.0;
            gain = gain > target ? gain * attack + target * (1.0 - attack) : gain * release + 1.0 - release;
            smoothed += (gain - smoothed) * step;
            applied = smoothed;
        } else {
            for (double& entry : line) {
                entry = std::min(entry, held >= threshold ? threshold / held : 1.0);
            }
            const double least = std::exchange(line[n % 200], 1.0);
            gain = std::min(least, gain * release + 1.0 - release);
            applied = gain;
        }
        for (std::size_t c = 0; c < inInput.GetChannelCount(); ++c) {
            output[c][n] = static_cast<float>(applied * makeup * at(c, n, kLate));
        }
    }
    return output;
}

TEST(MaximizerDSPTest, EqualsAWalkFrameByFrameInSoftAndBrickwall)
{
    auto first = testing::MakeNoise(20000, 5, 1.0);
    for (std::size_t i = 0; i < first.size(); ++i) {
        first[i] *= static_cast<float>(i / 700 * 3 % 5) * 0.5f; // swells, and rests in which gains come back
    }
    const PlanarRows input({first, testing::MakeSweep(20000, 20.0, 20000.0, kRate, 0.6)});
    for (const auto mode : {Mode::kSoft, Mode::kBrickwall}) {
        const auto expected = MaximizeByFrames(mode, input, -9.0f, -1.0f);
        const auto actual = Maximize(*Make(mode, -9.0f, 2, -1.0f), input);
        for (const std::size_t channel : {0u, 1u}) {
            EXPECT_GT(FindPeak(actual[channel]), 0.5f);
            for (std::size_t i = 0; i < input.GetLength(); ++i) {
                ASSERT_NEAR(actual[channel][i], expected[channel][i], 2e-4) << mode << " at " << i;
            }
        }
    }
}

TEST(MaximizerDSPTest, BrickwallLetsNothingPassThresholdTimesMakeup)
{
    auto signals = testing::MakeHarshSignals(8000, kRate);
    auto huge = testing::MakeNoise(8000, 8, 1.0);
    for (std::size_t i = 0; i < huge.size(); i += 97) {
        huge[i] *= std::pow(10.0f, static_cast<float>(i % 30)); // up to 580 dB
    }
    signals.push_back(huge);
    auto largest = testing::MakeNoise(8000, 9, 1.0); // with targets that are denormal numbers
    std::for_each(largest.begin(), largest.end(), [](float& ioSample) { ioSample *= 3e38f; });
    signals.push_back(largest);
    Row falling(8000); // with an instant release each sample comes out at the threshold
    for (std::size_t i = 0; i < falling.size(); ++i) {
        falling[i] = 2.2f - 1.5e-4f * static_cast<float>(i);
    }
    signals.push_back(falling);
    for (const float threshold : {0.0f, -0.1f, -6.0f, -23.7f}) {
        for (const float margin : {0.0f, -0.3f, -11.0f}) {
            const float most = Linear(threshold) * Linear(margin - threshold);
            for (const auto& signal : signals) {
                const auto maximizer = Make(Mode::kBrickwall, threshold, 1, margin);
                maximizer->SetRelease(margin == 0.0f ? 0.0f : 5.0f);
                const float peak = FindPeak(Maximize(*maximizer, signal));
                EXPECT_LE(peak, most);
                EXPECT_GT(peak, most * 0.999f);
            }
        }
    }
}

TEST(MaximizerDSPTest, DelaysWhatStaysBelowTheThresholdAndNothingElse)
{
    const auto input = testing::MakeNoise(3000, 4, 0.99);
    for (const auto mode : {Mode::kSoft, Mode::kBrickwall}) {
        const auto maximizer = Make(mode, 0.0f);
        EXPECT_EQ(maximizer->GetSystemDelay(), kLate);
        const auto output = Maximize(*maximizer, input);
        EXPECT_TRUE(std::equal(output.begin() + kLate, output.end(), input.begin()));
        EXPECT_EQ(FindPeak(Row(output.begin(), output.begin() + kLate)), 0.0f);
    }
    const auto strange = Make(static_cast<Mode>(4), -20.0f);
    EXPECT_EQ(Maximize(*strange, input), input);
    const auto bypassed = Make(Mode::kBrickwall, -20.0f);
    const auto before = Maximize(*bypassed, input);
    bypassed->SetBypass(true);
    EXPECT_EQ(Maximize(*bypassed, input), input);
    EXPECT_EQ(bypassed->GetSystemDelay(), kLate);
    bypassed->SetBypass(false);
    const auto after = Maximize(*bypassed, Row(kLate)); // it has stood still
    EXPECT_GT(FindPeak(after), 0.5f);
    const auto fresh = Make(Mode::kBrickwall, -20.0f);
    auto longer = input;
    longer.resize(input.size() + kLate);
    const auto whole = Maximize(*fresh, longer);
    EXPECT_TRUE(std::equal(after.begin(), after.end(), whole.begin() + 3000));
}

TEST(MaximizerDSPTest, BrickwallGainFallsAheadOfAnImpulseAndClimbsByHalfTheRelease)
{
    Row input(40000, 0.1f);
    input[5000] = 1.0f;
    const auto maximizer = Make(Mode::kBrickwall, -12.0f, 1, -12.0f);
    maximizer->SetRelease(100.0f);
    const auto output = Maximize(*maximizer, input);
    const std::size_t place = 5000 + kLate;
    const float down = Linear(-12.0f);
    EXPECT_FLOAT_EQ(output[place - 200], 0.1f);
    EXPECT_FLOAT_EQ(output[place - 199], 0.1f * down);
    EXPECT_FLOAT_EQ(output[place], down);
    // The held peak is over the threshold for a while; from then on, 199 frames later, the gain is free.
    const auto low = std::find_if(output.begin() + static_cast<std::ptrdiff_t>(place) + 1, output.end(),
                                  [](float inSample) { return inSample > 0.05f; });
    const auto free = static_cast<std::size_t>(low - output.begin());
    EXPECT_NEAR((1.0f - output[free + 2400] / 0.1f) / (1.0f - output[free] / 0.1f), std::exp(-1.0), 1e-3);
    float gain = 0.0f;
    EXPECT_TRUE(maximizer->GetGainReduction(gain));
    EXPECT_FLOAT_EQ(gain, down);
    EXPECT_FALSE(maximizer->GetGainReduction(gain));
    EXPECT_EQ(gain, 1.0f);
}

TEST(MaximizerDSPTest, BrickwallKeepsTheTargetsOfAnOldThresholdForTheirAudio)
{
    const auto maximizer = Make(Mode::kBrickwall, -20.0f);
    maximizer->SetRelease(0.0f);
    EXPECT_FLOAT_EQ(Maximize(*maximizer, Row(1000, 1.0f)).back(), 1.0f);
    maximizer->SetThreshold(0.0f); // the make-up is a new one at once
    const auto output = Maximize(*maximizer, Row(300, 1.0f));
    EXPECT_FLOAT_EQ(output[0], 0.1f);
    EXPECT_FLOAT_EQ(output[198], 0.1f);
    EXPECT_EQ(output[199], 1.0f);
}

TEST(MaximizerDSPTest, SoftReducesByTheCurveOf20AndShowsNothing)
{
    const Row input(48000, -1.0f);
    for (const float ratio : {20.0f, 2.0f}) { // the setting does nothing
        const auto maximizer = Make(Mode::kSoft, -20.0f);
        maximizer->SetRatio(ratio);
        EXPECT_EQ(maximizer->GetRatio(), ratio);
        const auto output = Maximize(*maximizer, input);
        EXPECT_NEAR(testing::ToDecibels(FindPeak(output, 40000)), 1.0, 1e-3); // 20 dB over: 19 dB down
        float gain = 0.0f;
        maximizer->GetGainReduction(gain);
        EXPECT_EQ(gain, 1.0f);
    }
}

TEST(MaximizerDSPTest, SpeedsStayPerSampleUntilSetAfterAChangeOfRate)
{
    auto input = testing::MakeNoise(20000, 7, 0.1);
    std::fill_n(input.begin() + 2000, 500, 1.0f);
    for (const auto mode : {Mode::kSoft, Mode::kBrickwall}) {
        const auto changed = Make(mode, -12.0f), fresh = Make(mode, -12.0f);
        changed->SetSampleRate(96000.0f);
        fresh->SetSampleRate(96000.0f);
        fresh->SetAttack(2.0f); // what 4 ms are at half the rate
        fresh->SetRelease(250.0f);
        EXPECT_EQ(Maximize(*changed, input), Maximize(*fresh, input));
        changed->SetAttack(changed->GetAttack());
        changed->SetRelease(changed->GetRelease());
        fresh->Reset();
        changed->Reset();
        EXPECT_NE(Maximize(*changed, input), Maximize(*fresh, input));
    }
}

TEST(MaximizerDSPTest, DigitalAndProgramAreTheLimiterWithMakeup)
{
    const PlanarRows input({testing::MakeNoise(12000, 1, 1.0), testing::MakeNoise(12000, 2, 0.5)});
    for (const auto mode : {Mode::kDigital, Mode::kProgram}) {
        const auto maximizer = Make(mode, -6.0f, 2);
        maximizer->SetPreventIntersampleClips(true);
        IRCLimiter limiter;
        limiter.SetThreshold(-6.0f);
        limiter.EnableDoubleEnvelope(mode == Mode::kProgram);
        limiter.EnableAnalogDetection(true);
        limiter.SetMode(2, static_cast<int>(kRate), 512);
        EXPECT_EQ(maximizer->GetSystemDelay(), static_cast<unsigned>(limiter.GetLatency()));
        const auto output = Maximize(*maximizer, input, {}, 12000);
        auto expected = input;
        limiter.Process(expected.From(0), 12000, expected.From(0), {});
        for (std::size_t channel = 0; channel < 2; ++channel) {
            for (std::size_t i = 0; i < 12000; ++i) {
                ASSERT_FLOAT_EQ(output[channel][i], expected[channel][i] * Linear(6.0f));
            }
        }
        float gain = 0.0f;
        EXPECT_TRUE(maximizer->GetGainReduction(gain));
        EXPECT_FLOAT_EQ(gain, Linear(-limiter.GetMeter(0)));
        EXPECT_LT(gain, 0.6f);
    }
}

TEST(MaximizerDSPTest, ModesCanBeSwitchedAndStartAnew)
{
    auto input = testing::MakeNoise(6000, 3, 1.0);
    std::for_each_n(input.begin(), 3000, [](float& ioSample) { ioSample *= 0.2f; });
    const auto switched = Make(Mode::kSoft, -10.0f);
    for (const auto mode :
         {Mode::kProgram, Mode::kBrickwall, Mode::kSoft, Mode::kBrickwall, Mode::kDigital, Mode::kProgram}) {
        switched->SetMode(mode);
        const auto fresh = Make(mode, -10.0f);
        EXPECT_EQ(switched->GetSystemDelay(), fresh->GetSystemDelay()) << mode;
        EXPECT_EQ(Maximize(*switched, input), Maximize(*fresh, input)) << mode;
    }
}

TEST(MaximizerDSPTest, SkippedChannelsAreNeitherHeardNorWritten)
{
    const PlanarRows input({Row(20000, 0.2f), Row(20000, 1.0f)});
    Mask second, both;
    second.SetBit(1);
    both.SetBit(0);
    both.SetBit(1);
    for (const unsigned mode : {0u, 1u, 2u, 3u}) {
        const auto maximizer = Make(static_cast<Mode>(mode), -6.0f, 2);
        const auto output = Maximize(*maximizer, input, second);
        EXPECT_EQ(output[1], input[1]);
        EXPECT_NEAR(output[0].back(), 0.2f * Linear(6.0f), 1e-6f) << mode;
        EXPECT_EQ(Maximize(*maximizer, input, both), input);
    }
}

TEST(MaximizerDSPTest, DelaysOfASkippedChannelStandStillWhileTheOthersGoOn)
{
    const auto noise = testing::MakeNoise(6000, 11, 0.9);
    const std::size_t away = 1600; // both rings are where they were
    Mask second;
    second.SetBit(1);
    for (const auto mode : {Mode::kSoft, Mode::kBrickwall}) {
        const auto maximizer = Make(mode, 0.0f, 2);
        Row first, other;
        const auto run = [&](std::size_t inFrom, std::size_t inOther, std::size_t inCount, Mask inSkipped) {
            const auto begin = noise.begin();
            const auto rows = Maximize(*maximizer,
                                       PlanarRows({Row(begin + inFrom, begin + inFrom + inCount),
                                                   Row(begin + inOther, begin + inOther + inCount)}),
                                       inSkipped, 333);
            first.insert(first.end(), rows[0].begin(), rows[0].end());
            if (!inSkipped.GetBit(1)) {
                other.insert(other.end(), rows[1].begin(), rows[1].end());
            }
        };
        run(0, 0, 1000, {});
        run(1000, 0, away, second);
        run(1000 + away, 1000, 1000, {});
        EXPECT_TRUE(std::equal(first.begin() + kLate, first.end(), noise.begin()));
        EXPECT_TRUE(std::equal(other.begin() + kLate, other.end(), noise.begin()));
    }
}

TEST(MaximizerDSPTest, GainComesBackWhileAllChannelsAreSkipped)
{
    const auto all = Mask::All();
    const auto maximizer = Make(Mode::kBrickwall, -12.0f);
    maximizer->SetRelease(20.0f);
    Maximize(*maximizer, Row(5000, 1.0f));
    Maximize(*maximizer, PlanarRows(1, 20000, 1.0f), all);
    float gain = 0.0f;
    maximizer->GetGainReduction(gain);
    Maximize(*maximizer, PlanarRows(1, 1), all);
    maximizer->GetGainReduction(gain);
    EXPECT_NEAR(gain, 1.0f, 1e-4f);
    maximizer->Reset();
    EXPECT_TRUE(maximizer->GetGainReduction(gain));
    EXPECT_FALSE(maximizer->GetGainReduction(gain));
    Maximize(*maximizer, PlanarRows(1, 1), all);
    EXPECT_TRUE(maximizer->GetGainReduction(gain)); // a gain of 1 is news, too
    EXPECT_EQ(gain, 1.0f);
}

TEST(MaximizerDSPTest, HistogramCountsTheLast44100FramesInStepsOf1Decibel)
{
    const auto sum = [](const unsigned* inCounts) { return std::accumulate(inCounts, inCounts + 128, 0u); };
    for (const unsigned mode : {1u, 2u}) {
        const auto maximizer = Make(static_cast<Mode>(mode), 0.0f, 1, 0.0f, true);
        const unsigned* const counts = maximizer->GetHistogram();
        maximizer->IsHistogramNewData();
        // Each bin's middle, its top, what is clipped, what is below all, NaN
        Row levels = {8.0f, 1.0f, 0.0f, 1e-20f, std::numeric_limits<float>::quiet_NaN()};
        for (unsigned bin = 0; bin < 127; ++bin) {
            levels.push_back(-Linear(-static_cast<float>(bin) - 0.5f));
        }
        levels.push_back(std::exp(-5.0f * 0.115129255f));
        const std::size_t ahead = mode == 1 ? 63 : 0;
        levels.resize(levels.size() + ahead);
        Maximize(*maximizer, levels);
        EXPECT_EQ(sum(counts), levels.size());
        for (unsigned bin = 1; bin < 127; ++bin) {
            EXPECT_EQ(counts[bin], bin == 5 ? 2u : 1u) << bin;
        }
        EXPECT_EQ(counts[0], 3u);
        EXPECT_EQ(counts[127], 3u + ahead);
        EXPECT_TRUE(maximizer->IsHistogramNewData());
        EXPECT_FALSE(maximizer->IsHistogramNewData());

        maximizer->SetMeterVisible(false);
        Maximize(*maximizer, Row(100, 0.5f));
        EXPECT_FALSE(maximizer->IsHistogramNewData());
        maximizer->SetMeterVisible(true);
        Maximize(*maximizer, Row(44099, 0.5f));
        EXPECT_EQ(sum(counts), 44100u);
        EXPECT_EQ(counts[6], 44099u);
        Maximize(*maximizer, Row(1000, 0.5f));
        EXPECT_EQ(counts[6], 44100u);
        maximizer->ResetHistogram();
        EXPECT_EQ(sum(counts), 0u);
        EXPECT_TRUE(maximizer->IsHistogramNewData());
    }
    const auto without = Make(Mode::kBrickwall, 0.0f);
    Maximize(*without, Row(100, 1.0f));
    EXPECT_EQ(without->GetHistogram(), nullptr);
    EXPECT_FALSE(without->IsHistogramNewData());
    const auto soft = Make(Mode::kSoft, 0.0f, 1, 0.0f, true);
    Maximize(*soft, Row(100, 1.0f));
    EXPECT_EQ(sum(soft->GetHistogram()), 0u);
}

TEST(MaximizerDSPTest, NotANumberPassesOnceAndInfinityFades)
{
    Row input(200000, 0.25f);
    input[100] = std::numeric_limits<float>::quiet_NaN();
    input[300] = std::numeric_limits<float>::infinity();
    for (const auto mode : {Mode::kSoft, Mode::kBrickwall, Mode::kDigital, Mode::kProgram}) {
        const auto maximizer = Make(mode, -6.0f);
        maximizer->SetRelease(20.0f);
        const auto late = maximizer->GetSystemDelay();
        auto output = Maximize(*maximizer, input);
        EXPECT_TRUE(std::isnan(output[100 + late]));
        EXPECT_EQ(output[300 + late], mode < Mode::kDigital ? input[300] : 1.0f); // or clipped to the margin
        output[100 + late] = output[300 + late] = 0.0f;
        EXPECT_TRUE(testing::AreAllFinite(output));
        EXPECT_NEAR(output.back(), 0.25f * Linear(6.0f), 1e-4f);
    }
}

} // namespace

} // namespace tessaro
