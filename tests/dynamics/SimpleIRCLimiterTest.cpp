#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include <algorithm>
#include <cmath>
#include <limits>
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

/// The threshold is met but for rounding.
constexpr double kRounding = 2e-6;

double Linear(double inDecibels)
{
    return std::pow(10.0, inDecibels / 20.0);
}

struct Settings
{
    float mBehavior = 0.6f;
    float mThreshold = -6.0f;
    int mRate = 48000;
    bool mIsAnalog = false;
};

/// The output of the whole input, which ends in silence
PlanarRows Limit(const PlanarRows& inInput, const Settings& inSettings, int inBlock = 333)
{
    SimpleIRCLimiter limiter;
    const auto length = inInput.GetLength();
    limiter.SetMode(static_cast<int>(inInput.GetChannelCount()), inSettings.mRate, inBlock);
    limiter.SetThreshold(inSettings.mThreshold);
    limiter.SetBehavior(inSettings.mBehavior);
    limiter.EnableAnalogDetection(inSettings.mIsAnalog);
    PlanarRows input = inInput, output = inInput;
    for (std::size_t i = 0; i < inInput.GetChannelCount(); ++i) {
        input[i].resize(length + static_cast<std::size_t>(limiter.GetLookAhead()));
    }
    for (std::size_t done = 0; done < length; done += static_cast<std::size_t>(inBlock)) {
        const int count = std::min(inBlock, static_cast<int>(length - done));
        limiter.Process(input.From(done), count, output.From(done), {});
    }
    return output;
}

/// The reduction in dB for a curve of dB above the threshold, each stage by its plain formula over the whole
std::vector<double> ReduceByFormula(const std::vector<double>& inOver, double inBehavior, double inRate,
                                    std::ptrdiff_t inHalfLength)
{
    const auto length = std::ssize(inOver);
    // Zeros around the signal
    const auto at = [](const std::vector<double>& inCurve, std::ptrdiff_t inPlace) {
        return inPlace >= 0 && inPlace < std::ssize(inCurve) ? inCurve[static_cast<std::size_t>(inPlace)]
                                                             : 0.0;
    };
    const double fullLength = static_cast<double>(2 * inHalfLength + 1);
    const double share = std::pow(inBehavior / 0.3, 1.5);
    const auto width =
        static_cast<std::ptrdiff_t>(inBehavior >= 0.3f ? fullLength : share * fullLength + 0.5);
    if (width < 3) {
        return inOver;
    }
    const auto reach = width / 2;
    const double c = inBehavior > 1.0 ? 2.0 * inBehavior - 1.0 : inBehavior;
    const double longFactor = 1.0 - inRate / 44100.0 * 0.1 / (35.0 * std::exp(2.0 * c));
    const double p = 44.100002 / inRate;
    const double q = c > 0.7 ? std::min(1.0, p + (c - 0.7) * (c - 0.7)) : p;
    const double offset = c > 0.5 ? std::min(0.9, (c - 0.5) * 0.7) : 0.0;
    const double scale = inBehavior < 0.3f ? inBehavior * inBehavior / 0.09 : 1.0;
    const auto span = static_cast<std::ptrdiff_t>(0.014 * inRate);

    const auto margin = reach;
    std::vector<double> peaks(static_cast<std::size_t>(length + 2 * margin)), curve(peaks.size());
    for (std::ptrdiff_t i = 0; i < std::ssize(peaks); ++i) {
        for (auto k = i - margin - reach; k <= i - margin + reach; ++k) {
            peaks[static_cast<std::size_t>(i)] = std::max(peaks[static_cast<std::size_t>(i)], at(inOver, k));
        }
    }
    double held = 0.0, s = 0.0, t = 0.0;
    // The limiter has run over the empty look-ahead, six samples of it for analog detection.
    for (std::ptrdiff_t i = margin - inHalfLength - span - 6; i < std::ssize(peaks); ++i) {
        double activity = 0.0;
        for (std::ptrdiff_t k = 0; k < span; ++k) {
            activity += std::abs(at(peaks, i + k + 1) - at(peaks, i + k));
        }
        held = std::max(at(peaks, i), longFactor * held);
        const double wanted = std::min(1.0, activity * 0.018181818 * std::exp(2.0 * c) + offset) * scale;
        const double e = wanted * p + (1.0 - p) * s;
        s = std::clamp(s + (e - s) * (e > s ? 0.3 : 2.0), 0.0, 1.0);
        t = held * held * q + (1.0 - q) * t;
        if (i >= 0) {
            curve[static_cast<std::size_t>(i)] =
                inBehavior > 0.04f ? std::max(at(peaks, i), std::sqrt(t) * s) : at(peaks, i);
        }
    }
    std::vector<double> result(static_cast<std::size_t>(length));
    double sum = 0.0;
    for (auto m = -reach; m <= reach; ++m) {
        const double tap = 1.0 + std::cos(2.0 * M_PI * static_cast<double>(m) / static_cast<double>(width));
        sum += tap;
        for (std::ptrdiff_t i = 0; i < length; ++i) {
            result[static_cast<std::size_t>(i)] += tap * at(curve, i + margin + m);
        }
    }
    for (auto& value : result) {
        value /= sum;
    }
    return result;
}

TEST(SimpleIRCLimiterTest, ReducesAsTheFormulasSay)
{
    const std::pair<int, std::ptrdiff_t> rates[] = {{8000, 8}, {17000, 16}, {44100, 32}, {96000, 64}};
    for (const auto& [rate, halfLength] : rates) {
        for (const float behavior : {0.04f, 0.1f, 0.2f, 0.3f, 0.6f, 0.9f, 1.3f}) {
            // Bursts of noise, and a steady tone between them
            PlanarRows input({testing::MakeNoise(6000, 1, 2.0), testing::MakeSine(6000, 500.0, rate, 1.4)});
            std::vector<double> over(6000);
            for (std::size_t i = 0; i < over.size(); ++i) {
                input[0][i] *= i / 800 % 3 == 1 ? 1.0f : 0.1f;
                input[1][i] *= i < 4000 ? 1.0f : 0.1f;
                const double level = std::max(std::abs(input[0][i]), std::abs(input[1][i]));
                over[i] = std::max(0.0, 20.0 * std::log10(level) + 6.0);
            }
            const auto output = Limit(input, {behavior, -6.0f, rate});
            const auto reduction = ReduceByFormula(over, behavior, rate, halfLength);
            double largestError = 0.0;
            for (std::size_t i = 0; i < over.size(); ++i) {
                const double expected = input[0][i] * Linear(-reduction[i]);
                largestError = std::max(largestError, std::abs(expected - output[0][i]));
            }
            EXPECT_LT(largestError, 1e-6) << behavior << " at " << rate;
        }
    }
}

TEST(SimpleIRCLimiterTest, KeepsAnySignalBelowTheThresholdAndMeetsIt)
{
    for (const int rate : {8000, 22050, 44100, 192000}) {
        for (const float behavior : {0.02f, 0.05f, 0.1f, 0.25f, 0.3f, 0.6f, 1.0f, 1.5f}) {
            for (const auto& signal : testing::MakeHarshSignals(12000, rate)) {
                const auto output = Limit(PlanarRows({signal}), {behavior, -9.5f, rate});
                EXPECT_LE(FindPeak(output[0]), Linear(-9.5) * (1.0 + kRounding));
                EXPECT_GT(FindPeak(output[0], 6000), Linear(-9.5) * 0.998) << behavior << " at " << rate;
            }
        }
    }
}

TEST(SimpleIRCLimiterTest, ClipsAtBehaviorZeroAndLeavesWhatIsBelowTheThreshold)
{
    const auto noise = testing::MakeNoise(3000, 5, 2.0);
    for (const float behavior : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        const auto clipped = Limit(PlanarRows({noise}), {behavior});
        const auto most = static_cast<float>(Linear(-6.0));
        for (std::size_t i = 0; i < noise.size(); ++i) {
            EXPECT_NEAR(clipped[0][i], std::clamp(noise[i], -most, most), 1e-6f);
        }
    }
    const auto soft = testing::MakeNoise(3000, 6, Linear(-6.001));
    EXPECT_EQ(Limit(PlanarRows({soft}), {1.0f})[0], soft);
}

TEST(SimpleIRCLimiterTest, HoldsTheGainLongerBehindBusySignalsAndAtHigherBehavior)
{
    constexpr std::size_t kEnd = 24000, kLater = 240; // 5 ms
    Row busy(30000, 2.0f), steady(30000, 2.0f);
    for (std::size_t i = 0; i < busy.size(); ++i) {
        if (i >= kEnd) {
            busy[i] = steady[i] = 0.1f;
        } else if (i / 240 % 2 == 0) {
            busy[i] = 0.3f;
        }
    }
    const auto reductionLater = [](const Row& inRow, float inBehavior) {
        const auto output = Limit(PlanarRows({inRow}), {inBehavior});
        return -testing::ToDecibels(static_cast<double>(output[0][kEnd + kLater]) / 0.1);
    };
    EXPECT_LT(reductionLater(busy, 0.03f), 1e-6); // comes back at once
    double before = 0.1;
    for (const float behavior : {0.1f, 0.3f, 0.5f, 0.6f, 1.0f}) {
        const double now = reductionLater(busy, behavior);
        EXPECT_GT(now, before) << behavior;
        EXPECT_LT(reductionLater(steady, behavior), 0.6 * now) << behavior;
        before = now;
    }
}

TEST(SimpleIRCLimiterTest, TakesPeaksBetweenSamplesIntoAccount)
{
    const auto measure = [](const Row& inRow, int inRate, bool inIsAnalog) {
        const auto output = Limit(PlanarRows({inRow}), {0.6f, -6.0f, inRate, inIsAnalog});
        TruePeak meter;
        meter.Init(19000, static_cast<float>(inRate));
        // The ends of the row are steps, which ring between samples.
        meter.Process(output[0].data() + 500, 19000);
        float peak = 0.0f;
        std::int64_t place = 0;
        meter.GetPeakValue(peak, place);
        return peak + 6.0f;
    };
    for (const int rate : {22050, 44100, 96000}) {
        const auto tone = testing::MakeSine(20000, rate / 4.0, rate, 1.0, M_PI / 4.0);
        EXPECT_GT(measure(tone, rate, false), 2.9f);
        EXPECT_LT(measure(tone, rate, true), 0.3f);
        EXPECT_LT(measure(testing::MakeNoise(20000, 8), rate, true), 1.2f);
    }
}

TEST(SimpleIRCLimiterTest, SkipsSilentChannelsAndTellsItsReduction)
{
    SimpleIRCLimiter limiter;
    limiter.SetMode(2, 48000, 100);
    PlanarRows input({Row(2000, 0.5f), Row(2000, 1.0f)}), output(2, 2000, 7.0f);
    const testing::PoisonedRow poison(2000);
    const float* rows[] = {input[0].data(), poison.Get()};
    ombrel::utility::Flags<std::uint64_t> silent;
    silent.SetBit(1);
    const testing::AllocationGuard guard;
    limiter.Process(rows, 1000, output.From(0), silent); // larger than the maximum
    EXPECT_EQ(output[0][500], 0.5f);
    EXPECT_EQ(output[1][500], 7.0f);
    EXPECT_EQ(limiter.GetReduction(), 0.0f);
    limiter.Reset();
    limiter.Process(input.From(0), 1000, input.From(0), {}); // in place
    EXPECT_NEAR(input[0][500], 0.5 * Linear(-3.0), 1e-6);
    EXPECT_NEAR(limiter.GetReduction(), 3.0f, 0.02f);
}

TEST(SimpleIRCLimiterTest, KeepsThresholdAndLookAheadWhenItsBehaviorChanges)
{
    SimpleIRCLimiter limiter;
    limiter.SetBehavior(0.2f);
    limiter.SetMode(1, 48000, 500);
    PlanarRows input({testing::MakeNoise(12000, 9, 2.0)}), output(1, 10000);
    for (std::size_t done = 0; done < 10000; done += 500) {
        limiter.SetBehavior(static_cast<float>(done / 500 % 4) * 0.25f);
        limiter.EnableAnalogDetection(done % 1500 == 0);
        limiter.Process(input.From(done), 500, output.From(done), {});
        EXPECT_EQ(limiter.GetLookAhead(), 2 * 32 + 672 + 6);
        EXPECT_EQ(limiter.GetSystemDelay(), 0);
    }
    EXPECT_LE(FindPeak(output[0]), Linear(-3.0) * (1.0 + kRounding));
}

TEST(SimpleIRCLimiterTest, DoesNotHearWhatIsNoNumber)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const bool isAnalog : {false, true}) {
        auto noise = testing::MakeNoise(6000, 10, 2.0);
        auto other = testing::MakeNoise(6000, 11, 0.1);
        noise[500] = std::numeric_limits<float>::quiet_NaN();
        noise[800] = kInfinity;
        other[500] = other[800] = 4.0f; // heard beside it, whichever channel comes first
        const auto first = Limit(PlanarRows({other, noise}), {0.6f, -6.0f, 48000, isAnalog});
        EXPECT_LE(FindPeak(first[0]), Linear(-6.0) * (1.0 + kRounding));
        const auto output = Limit(PlanarRows({noise, other}), {0.6f, -6.0f, 48000, isAnalog});
        EXPECT_LE(FindPeak(output[1]), Linear(-6.0) * (1.0 + kRounding));
        EXPECT_TRUE(std::isnan(output[0][500]));
        EXPECT_EQ(output[0][800], kInfinity);
        const Row rest(output[0].begin() + 801, output[0].end());
        EXPECT_TRUE(testing::AreAllFinite(rest));
        EXPECT_LE(FindPeak(rest), Linear(-6.0) * (1.0 + kRounding));
    }
}

} // namespace

} // namespace tessaro
