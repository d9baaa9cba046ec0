#include <tessaro/dynamics/HardLimit.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/loudness/TruePeak.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

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

float Peak(const Row& inRow)
{
    float peak = 0.0f;
    for (const float sample : inRow) {
        peak = std::max(peak, std::abs(sample));
    }
    return peak;
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

TEST(HardLimitTest, LetsNoSamplePassTheCeiling)
{
    Row square = testing::MakeSine(6000, 61.0, kRate), clicks(6000), steps(6000);
    for (std::size_t i = 0; i < square.size(); ++i) {
        square[i] = square[i] < 0.0f ? -2.0f : 2.0f;
        clicks[i] = i % 397 < 2 ? static_cast<float>(i % 7) : 0.01f;
        steps[i] = static_cast<float>((i / 250 * 5) % 9) * 0.4f;
    }
    const std::vector<Row> signals = {testing::MakeNoise(6000, 3, 1.0), square, clicks, steps,
                                      testing::MakeSweep(6000, 20.0, 23000.0, kRate, 4.0)};
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
                    EXPECT_LE(Peak(output[i]), Linear(ceiling)) << "signal " << i;
                    EXPECT_GT(Peak(output[i]), Linear(ceiling) * 0.999f) << "signal " << i;
                }
            }
        }
    }
}

TEST(HardLimitTest, ClimbsInAStraightLineToASinglePeakAndFallsTo15Percent)
{
    constexpr std::size_t kPeakAt = 2000, kAhead = 480;
    constexpr double kRest = 1e-3;
    Row input(9000, static_cast<float>(kRest));
    input[kPeakAt] = 1.0f;
    HardLimit limiter;
    Prepare(limiter, 1, {{kCeiling, -6.0f}, {kLookAhead, 10.0f}, {kRelease, 50.0f}});
    const auto output = Limit(limiter, PlanarRows({input}));

    const double ceiling = Linear(-6.0f);
    const auto height = [&](std::size_t inPlace) {
        return ceiling / (static_cast<double>(output[0][inPlace]) / static_cast<double>(input[inPlace]));
    };
    EXPECT_EQ(output[0][kPeakAt], Linear(-6.0f));
    for (std::size_t k = 0; k <= kAhead; ++k) {
        EXPECT_NEAR(height(kPeakAt - k), 1.0 - (1.0 - ceiling) * static_cast<double>(k) / kAhead, 1e-5);
    }
    EXPECT_EQ(output[0][kPeakAt - kAhead - 1], input[0]);
    EXPECT_NEAR(height(kPeakAt + 2400), ceiling + 0.15 * (1.0 - ceiling), 1e-4);

    limiter.SetParameter(kTowardsCeiling, 0.0f);
    limiter.Resume();
    const auto other = Limit(limiter, PlanarRows({input}));
    EXPECT_NEAR(static_cast<double>(other[0][kPeakAt + 600]), kRest * ceiling / std::pow(0.15, 0.25), 1e-8);
    EXPECT_EQ(other[0][kPeakAt + 2400], input[0]);
}

TEST(HardLimitTest, TellsWhetherItLimitsAndLeavesWhatIsAtTheCeiling)
{
    HardLimit limiter;
    Prepare(limiter, 1, {{kCeiling, 0.0f}});
    Row input(3000, 1.0f);
    EXPECT_EQ(Limit(limiter, PlanarRows({input}))[0], input);
    EXPECT_FALSE(limiter.IsLimiting());
    EXPECT_EQ(limiter.GetLeastGain(), 1.0f);

    std::fill(input.begin(), input.end(), 2.0f);
    EXPECT_EQ(Peak(Limit(limiter, PlanarRows({input}), 3960)[0]), 1.0f);
    EXPECT_TRUE(limiter.IsLimiting());
    EXPECT_FLOAT_EQ(limiter.GetLeastGain(), 0.5f);

    // Release is not held up by rounding.
    std::fill(input.begin(), input.end(), 0.0f);
    for (int i = 0; i < 30; ++i) {
        static_cast<void>(Limit(limiter, PlanarRows({input})));
    }
    EXPECT_FALSE(limiter.IsLimiting());
}

TEST(HardLimitTest, LinksChannelsOrLimitsEachForItself)
{
    const Row loud(4000, 0.8f), soft(4000, 0.1f);
    for (const bool isLinked : {true, false}) {
        HardLimit limiter;
        Prepare(limiter, 2, {{kCeiling, -20.0f}, {kLink, isLinked ? 1.0f : 0.0f}});
        const auto output = Limit(limiter, PlanarRows({soft, loud}));
        EXPECT_EQ(output[1].back(), 0.1f);
        EXPECT_FLOAT_EQ(output[0].back(), isLinked ? 0.0125f : 0.1f);
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
    for (const int rate : {22050, 48000, 96000}) {
        HardLimit limiter(true);
        Prepare(limiter, 4, {{kCeiling, -1.0f}, {kInputGain, 6.0f}, {kTruePeak, 1.0f}, {kLink, 0.0f}}, rate);
        const auto output = Limit(limiter, PlanarRows({between, sweep, noise, clicks}), 9000);
        for (std::size_t i = 0; i < output.GetChannelCount(); ++i) {
            TruePeak meter;
            meter.Init(24000, static_cast<float>(rate));
            meter.Process(output[i].data(), 24000);
            float peak = 0.0f;
            std::int64_t place = 0;
            meter.GetPeakValue(peak, place);
            EXPECT_LT(peak, -1.0f + 0.01f) << "signal " << i << " at " << rate;
            EXPECT_LE(Peak(output[i]), Linear(-1.0f));
        }
    }
}

TEST(HardLimitTest, MovesTheInputGainInALineOverTheWholeBlock)
{
    constexpr std::size_t kBlock = 10000;
    for (const bool isTruePeak : {false, true}) { // which is cut in chunks
        HardLimit limiter(true);
        Prepare(limiter, 1, {{kCeiling, 0.0f}, {kTruePeak, isTruePeak ? 1.0f : 0.0f}});
        const auto late = static_cast<std::size_t>(limiter.GetLatency());
        PlanarRows input({Row(2 * kBlock, 0.1f)});
        auto output = input;
        limiter.SetParameter(kInputGain, 20.0f * std::log10(3.0f));
        limiter.Process(input.From(0), output.From(0), kBlock);
        limiter.Process(input.From(kBlock), output.From(kBlock), kBlock);
        for (const std::size_t i : {0u, 1u, 700u, 8191u, 8192u, 9999u}) {
            EXPECT_NEAR(output[0][late + i], 0.1f + 0.2f * static_cast<float>(i) / kBlock, 1e-6f) << i;
        }
        EXPECT_NEAR(output[0].back(), 0.3f, 1e-6f);
    }
}

TEST(HardLimitTest, SkipsMaskedChannelsAndStartsThemAnewWhenTheyComeBack)
{
    for (const bool isTruePeak : {false, true}) {
        HardLimit limiter(true);
        Prepare(limiter, 2, {{kCeiling, -20.0f}, {kTruePeak, isTruePeak ? 1.0f : 0.0f}});
        const auto late = static_cast<std::size_t>(limiter.GetLatency());
        PlanarRows input({Row(3000, 0.05f), Row(3000, 1.0f)}), output(2, 3000, 7.0f);
        const testing::PoisonedRow poison(3000);
        const float* rows[] = {input[0].data(), poison.Get()};
        HardLimit::ChannelMask mask;
        mask.SetBit(1);
        limiter.Process(rows, output.From(0), 3000, mask);
        EXPECT_EQ(output[1], Row(3000, 7.0f));
        EXPECT_FLOAT_EQ(output[0].back(), 0.05f); // the loud channel is not heard

        limiter.Process(input.From(0), output.From(0), 3000);
        mask = {};
        mask.SetBit(0);
        limiter.Process(input.From(0), output.From(0), 700, mask);
        limiter.Process(input.From(0), output.From(0), 3000);
        EXPECT_EQ(Peak(Row(output[0].begin(), output[0].begin() + static_cast<std::ptrdiff_t>(late))), 0.0f);
        EXPECT_GT(output[0][late + 20], 0.0f);
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
    EXPECT_EQ(limiter.GetParameter(-1), 0.0f);
    EXPECT_EQ(limiter.GetParameter(7), 0.0f);

    limiter.SetParameter(kLink, 0.5f);
    EXPECT_EQ(limiter.GetParameter(kLink), 1.0f);
    limiter.SetParameter(kLink, 0.49f);
    EXPECT_EQ(limiter.GetParameter(kLink), 0.0f);
    limiter.SetParameter(kTruePeak, 1.0f);
    EXPECT_EQ(limiter.GetParameter(kTowardsCeiling), 1.0f);
    plain.SetParameter(kTowardsCeiling, 0.0f);
    plain.SetParameter(kTruePeak, 1.0f);
    EXPECT_EQ(plain.GetParameter(kTruePeak), 0.0f);
    EXPECT_EQ(plain.GetParameter(kTowardsCeiling), 0.0f);
    EXPECT_EQ(plain.GetLatency(), 882);
}

TEST(HardLimitTest, TakesChangesOfParametersWhileItRuns)
{
    HardLimit limiter(true);
    Prepare(limiter, 1, {{kCeiling, -3.0f}});
    PlanarRows input({testing::MakeNoise(20000, 9, 2.0)}), output(1, 20000);
    float ceiling = -3.0f;
    testing::AllocationGuard guard;
    for (std::size_t done = 0, step = 0; done < 20000; done += 400, ++step) {
        limiter.SetParameter(kLookAhead, static_cast<float>(5 + step * 7 % 16));
        limiter.SetParameter(kTowardsCeiling, static_cast<float>(step / 3 % 2));
        limiter.SetParameter(kTruePeak, static_cast<float>(step / 10 % 2));
        const float before = ceiling;
        ceiling = -static_cast<float>(step % 4) * 3.0f;
        limiter.SetParameter(kCeiling, ceiling);
        limiter.Process(input.From(done), output.From(done), 400);
        float peak = 0.0f;
        for (std::size_t i = done; i < done + 400; ++i) {
            peak = std::max(peak, std::abs(output[0][i]));
        }
        EXPECT_LE(peak, Linear(std::max(before, ceiling)));
    }
}

TEST(HardLimitTest, LetsNotANumberPassOnceAndForgetsItOnResume)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const bool isTruePeak : {false, true}) {
        HardLimit limiter(true);
        Prepare(limiter, 1, {{kCeiling, -6.0f}, {kTruePeak, isTruePeak ? 1.0f : 0.0f}});
        auto input = testing::MakeNoise(4000, 11, 1.0);
        const auto expected = Limit(limiter, PlanarRows({input}));
        input[100] = std::numeric_limits<float>::quiet_NaN();
        input[200] = -kInfinity;
        limiter.Resume();
        const auto output = Limit(limiter, PlanarRows({input}));
        EXPECT_TRUE(std::isnan(output[0][100]));
        EXPECT_EQ(output[0][200], -kInfinity);
        const std::span<const float> rest(output[0].begin() + 201, output[0].end());
        EXPECT_TRUE(testing::AreAllFinite(rest));
        EXPECT_LE(*std::max_element(rest.begin(), rest.end()), Linear(-6.0f));
        limiter.Resume();
        input[100] = input[200] = 0.5f;
        EXPECT_TRUE(testing::AreAllFinite(Limit(limiter, PlanarRows({input}))[0]));
    }
}

} // namespace

} // namespace tessaro
