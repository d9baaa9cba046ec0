#include <tessaro/dynamics/IRCLimiter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include <gtest/gtest.h>
#include <tessaro/loudness/TruePeak.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::MakeNoise;
using testing::MakeSine;
using testing::PlanarRows;
using testing::Row;

using Channels = ombrel::utility::Flags<std::uint64_t>;

constexpr int kRate = 48000;

struct Setting
{
    float mBehavior = 0.5f;
    float mThreshold = -6.0f;
    bool mIsDouble = false;
    bool mIsAnalog = false;
    float mLink = 100.0f;
};

void Prepare(IRCLimiter& ioLimiter, const Setting& inSetting, std::size_t inChannels, int inRate = kRate)
{
    ioLimiter.SetThreshold(inSetting.mThreshold);
    ioLimiter.SetBehavior(inSetting.mBehavior);
    ioLimiter.SetStereoLinking(inSetting.mLink);
    ioLimiter.EnableDoubleEnvelope(inSetting.mIsDouble);
    ioLimiter.SetMode(static_cast<int>(inChannels), inRate, 512);
    ioLimiter.EnableAnalogDetection(inSetting.mIsAnalog);
}

/// Whole input, with zeros behind it, in blocks; the output is in time.
PlanarRows Limit(IRCLimiter& ioLimiter, PlanarRows inInput)
{
    const auto late = static_cast<std::size_t>(ioLimiter.GetLatency());
    const auto length = inInput.GetLength() + late;
    for (std::size_t c = 0; c < inInput.GetChannelCount(); ++c) {
        inInput[c].resize(length);
    }
    for (std::size_t done = 0, block = 512; done < length; done += block) {
        block = std::min<std::size_t>(block, length - done);
        ioLimiter.Process(inInput.From(done), static_cast<int>(block), inInput.From(done), Channels());
    }
    for (std::size_t c = 0; c < inInput.GetChannelCount(); ++c) {
        inInput[c].erase(inInput[c].begin(), inInput[c].begin() + static_cast<std::ptrdiff_t>(late));
    }
    return inInput;
}

PlanarRows Limit(const Setting& inSetting, const PlanarRows& inInput, int inRate = kRate)
{
    IRCLimiter limiter;
    Prepare(limiter, inSetting, inInput.GetChannelCount(), inRate);
    return Limit(limiter, inInput);
}

float Peak(const Row& inRow)
{
    float peak = 0.0f;
    for (const float sample : inRow) {
        peak = std::max(peak, std::abs(sample)); // passes over NaN
    }
    return peak;
}

/// Noise, clicks, a square wave, steps and silence, one after the other
Row MakeTorture(std::uint32_t inSeed)
{
    auto row = MakeNoise(30000, inSeed, 1.0);
    for (std::size_t i = 5000; i < row.size(); ++i) {
        const auto part = i / 5000;
        const float square = i / 37 % 2 == 0 ? 1.0f : -1.0f;
        const float click = i % 997 == 0 ? 3.0f : 0.001f * row[i];
        const float step = i % 5000 < 2500 ? 0.1f : 2.0f;
        row[i] = part == 1 ? click : part == 2 ? square : part == 3 ? step : part == 4 ? 0.0f : 8.0f * row[i];
    }
    return row;
}

TEST(IRCLimiterTest, NoSamplePassesTheThreshold)
{
    const PlanarRows input({MakeTorture(1), MakeTorture(2)});
    for (const float behavior : {0.0f, 0.05f, 0.5f, 1.0f, 1.5f, 3.0f}) {
        for (const int kind : {0, 1, 2, 3, 4}) {
            const Setting setting{behavior, kind == 4 ? -60.0f : -6.0f, kind % 2 == 1, kind / 2 == 1,
                                  kind == 3 ? 30.0f : 100.0f};
            const auto output = Limit(setting, input);
            const float threshold = AudioProcessor::DB2Amp(setting.mThreshold);
            for (std::size_t c = 0; c < 2; ++c) {
                EXPECT_LE(Peak(output[c]), threshold) << behavior << ", " << kind;
                EXPECT_GE(Peak(output[c]), 0.999f * threshold) << behavior << ", " << kind;
            }
        }
    }
}

/// A click on a constant shows the gain around it: what the limiter does must be all over with, or begin, at
/// the click and not beside it, and be down in full there.
TEST(IRCLimiterTest, TheGainIsInTimeWithTheAudio)
{
    constexpr std::size_t kClick = 7000;
    Row input(12000, 0.01f);
    input[kClick] = 1.0f;
    for (const float behavior : {0.0f, 0.1f, 0.5f, 1.5f}) {
        for (const int kind : {0, 1, 2, 3}) {
            SCOPED_TRACE(::testing::Message() << "behavior " << behavior << ", kind " << kind);
            auto gain = Limit({behavior, -12.0f, kind % 2 == 1, kind / 2 == 1}, PlanarRows({input}))[0];
            for (std::size_t i = 0; i < gain.size(); ++i) {
                gain[i] /= input[i];
            }
            const auto reach = static_cast<std::size_t>(std::sqrt(behavior) * behavior * 0.002 * kRate + 0.5);
            const bool isAnalog = kind / 2 == 1;
            const float ripple = isAnalog ? 3e-3f : 1e-5f; // of the oversampling
            EXPECT_NEAR(gain[kClick], AudioProcessor::DB2Amp(-12.0f), ripple);
            EXPECT_NEAR(gain[kClick - 1], gain[kClick + 1], behavior == 0.0f ? ripple : 0.05f);
            if (behavior > 0.0f) {
                EXPECT_EQ(std::min_element(gain.begin(), gain.begin() + kClick), gain.begin() + kClick - 1);
            }
            // The fade begins as early as it must: the oversampled click is wider.
            EXPECT_FLOAT_EQ(gain[kClick - 2 * reach - (isAnalog ? 3 : 1)], 1.0f);
            if (kind % 2 == 0) { // a click is a transient, for which it may begin later
                EXPECT_LT(gain[kClick - 2 * reach + (behavior == 0.0f ? 0 : 2)], 1.0f);
            }
        }
    }
}

TEST(IRCLimiterTest, WhatIsBelowTheThresholdOnlyComesLate)
{
    const PlanarRows input({MakeNoise(9000, 3, 0.5), MakeNoise(9000, 4, 0.5)});
    for (const bool isDouble : {false, true}) {
        EXPECT_TRUE(Limit({0.5f, -6.0f, isDouble}, input) == input);
    }
}

TEST(IRCLimiterTest, LatencyHangsOnRateAndSwitchesOnly)
{
    for (const int rate : {8000, 44100, 48000, 192000}) {
        IRCLimiter limiter;
        EXPECT_EQ(limiter.GetLatency(), 0);
        Prepare(limiter, {}, 2, rate);
        const int plain = limiter.GetLatency();
        EXPECT_EQ(plain, 2 * std::lround(std::sqrt(1.5) * 0.003 * rate) + std::lround(0.006 * rate) * 3 / 2);
        for (const float behavior : {0.0f, 0.3f, 1.5f, 10.0f, -1.0f}) {
            limiter.SetBehavior(behavior);
            EXPECT_EQ(limiter.GetLatency(), plain);
            limiter.SetMode(2, rate, 100);
            EXPECT_EQ(limiter.GetLatency(), plain);
        }
        limiter.EnableAnalogDetection(true);
        EXPECT_EQ(limiter.GetLatency(), plain + 8);
        limiter.EnableDoubleEnvelope(true);
        const int both = limiter.GetLatency();
        const auto residual = std::lround(0.001 * rate);
        EXPECT_NEAR(both, plain + 8 + rate / 40 + static_cast<int>(residual / 2 + residual), 1);
        limiter.EnableAnalogDetection(false);
        EXPECT_EQ(limiter.GetLatency(), both - 8);
        EXPECT_EQ(limiter.GetSystemDelay(), both - 8);
    }
}

TEST(IRCLimiterTest, LinkingCarriesTheReductionOver)
{
    const PlanarRows input({Row(9000, 1.0f), Row(9000, 0.1f)});
    // level that the quiet channel sees, and its gain at -12 dB
    for (const auto& [link, seen] : {std::pair{100.0f, 1.0f}, {99.0f, 0.99f}, {50.0f, 0.5f}, {0.0f, 0.1f}}) {
        IRCLimiter limiter;
        Prepare(limiter, {0.5f, -12.0f, true, false, link}, 2);
        const auto output = Limit(limiter, input);
        const float threshold = AudioProcessor::DB2Amp(-12.0f);
        EXPECT_NEAR(output[0][5000], threshold, 1e-5f);
        EXPECT_NEAR(output[1][5000], 0.1f * std::min(threshold / seen, 1.0f), 1e-5f);
    }
}

TEST(IRCLimiterTest, AnalogDetectionSeesPeaksBetweenSamples)
{
    // samples at 0.707 of the amplitude
    const PlanarRows input({MakeSine(20000, kRate / 4.0, kRate, 1.0, std::numbers::pi / 4.0)});
    const auto truePeakOf = [](const Row& inRow) {
        TruePeak meter;
        meter.Init(static_cast<unsigned>(inRow.size()), kRate);
        meter.Process(inRow.data() + 5000, 10000);
        float peak = 0.0f;
        std::int64_t position = 0;
        meter.GetPeakValue(peak, position);
        return peak;
    };
    const Setting plain{0.5f, -2.0f};
    EXPECT_GT(truePeakOf(Limit(plain, input)[0]), -0.5f);
    for (const float link : {100.0f, 0.0f}) {
        const Setting analog{0.5f, -2.0f, link == 0.0f, true, link};
        EXPECT_NEAR(truePeakOf(Limit(analog, input)[0]), -2.0f, 0.15f);
    }
}

/// With tones so low that there is nothing between the samples, both detections come to the same gain, and
/// see transients at the same time.
TEST(IRCLimiterTest, DetectionsAgreeOnLowTones)
{
    auto input = MakeSine(60000, 1000.0, kRate, 1.0);
    for (std::size_t i = 0; i < input.size(); ++i) {
        input[i] *= i % 7200 < 48 ? 1.5f : 0.1f; // a period, and then little more
    }
    const auto plain = Limit({1.5f, -12.0f, true, false}, PlanarRows({input}))[0];
    const auto analog = Limit({1.5f, -12.0f, true, true}, PlanarRows({input}))[0];
    EXPECT_LT(testing::NullDepthInDecibels(plain, analog), -48.0); // the ripple of the oversampling
}

/// All but `SetMode` goes between blocks of a running stream.
TEST(IRCLimiterTest, SettersDoNotAllocate)
{
    IRCLimiter limiter;
    Prepare(limiter, {}, 2);
    const testing::AllocationGuard guard;
    for (const bool isOn : {true, false}) {
        limiter.EnableAnalogDetection(isOn);
        limiter.EnableDoubleEnvelope(isOn);
        limiter.SetBehavior(isOn ? 1.5f : 0.0f);
        limiter.SetStereoLinking(isOn ? 0.0f : 100.0f);
        limiter.SetThreshold(-3.0f);
        limiter.Reset();
    }
}

TEST(IRCLimiterTest, SkippedChannelsAreLeftAlone)
{
    for (const float link : {100.0f, 50.0f}) {
        for (const bool isAnalog : {false, true}) {
            PlanarRows input({Row(600, 0.5f), Row(600, 4.0f)});
            PlanarRows output(2, 600, 7.0f);
            IRCLimiter limiter;
            Prepare(limiter, {0.5f, 0.0f, true, isAnalog, link}, 2);
            const testing::PoisonedRow poisoned(600);
            const float* const rows[] = {input[0].data(), poisoned.Get()};
            for (int block = 0; block < 20; ++block) {
                limiter.Process(rows, 600, output.From(0), Channels(2));
                EXPECT_EQ(limiter.GetMeter(0), 0.0f);
                EXPECT_EQ(limiter.GetMeter(1), 0.0f);
            }
            EXPECT_EQ(output[0], input[0]);       // the loud one was not heard
            EXPECT_EQ(output[1], Row(600, 7.0f)); // nor written
            for (int block = 0; block < 20; ++block) {
                limiter.Process(input.From(0), 600, output.From(0), Channels());
            }
            EXPECT_NEAR(output[1][599], 1.0f, 1e-3f);
            EXPECT_NEAR(limiter.GetMeter(1), AudioProcessor::Amp2DB(4.0f), 1e-2f);
            EXPECT_EQ(limiter.GetMeter(2), 0.0f);
            EXPECT_EQ(limiter.GetMeter(-1), 0.0f);
        }
    }
}

/// Loud, then quiet, then skipped, then quiet: what was loud is past, however the stream is cut.
TEST(IRCLimiterTest, AChannelThatComesBackDoesNotHangOnTheSplit)
{
    const auto limit = [](const Setting& inSetting, std::size_t inFirst, std::size_t inSkipped) {
        PlanarRows rows({MakeNoise(4080, 1, 1.0)});
        std::for_each(rows[0].begin() + 1300, rows[0].end(), [](float& ioSample) { ioSample *= 0.1f; });
        IRCLimiter limiter;
        Prepare(limiter, inSetting, 1);
        for (std::size_t done = 0; done < 4080;) {
            const bool isSkipped = done >= 1400 && done < 2680;
            const auto block = isSkipped ? inSkipped : inFirst;
            limiter.Process(rows.From(done), static_cast<int>(block), rows.From(done), Channels(isSkipped));
            done += block;
        }
        return rows;
    };
    for (const int kind : {0, 1, 2, 3}) {
        const Setting setting{1.0f, -30.0f, kind % 2 == 1, kind / 2 == 1};
        EXPECT_TRUE(limit(setting, 1400, 1280) == limit(setting, 40, 40)) << kind;
    }
}

TEST(IRCLimiterTest, SamplesThatAreNoNumbersDoNotStay)
{
    for (const int kind : {0, 1, 2, 3}) {
        const auto clean = MakeNoise(40000, 9, 1.0);
        auto poison = clean;
        poison[3000] = std::numeric_limits<float>::quiet_NaN();
        poison[3100] = std::numeric_limits<float>::infinity();
        const Setting setting{0.5f, -6.0f, kind % 2 == 1, kind / 2 == 1};
        const auto output = Limit(setting, PlanarRows({poison}))[0];
        const auto bad = std::count_if(output.begin(), output.end(), [](float x) { return std::isnan(x); });
        EXPECT_EQ(bad, 1);
        EXPECT_TRUE(std::isnan(output[3000]));
        const Row end(output.end() - 2000, output.end());
        EXPECT_GT(testing::Rms(end), 0.2);
    }
}

} // namespace

} // namespace tessaro
