#include <tessaro/dynamics/TubeLimiter.h>

#include <cmath>

#include <gtest/gtest.h>
#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include "dynamics/HarshSignals.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::FindPeak;
using testing::PlanarRows;
using testing::Row;

constexpr float kRate = 48000.0f;
constexpr unsigned kLength = 8000;

float Linear(float inDecibels)
{
    return std::exp(inDecibels * 0.115129255f);
}

TEST(TubeLimiterTest, InPlaceScalesWhatTheLimiterLeaves)
{
    const auto signals = testing::MakeHarshSignals(kLength, kRate);
    for (const float character : {-1.0f, 2.0f, 4.0f, 9.0f}) { // -1: as constructed
        TubeLimiter tube(512, kRate, static_cast<int>(signals.size()));
        SimpleIRCLimiter limiter;
        limiter.SetThreshold(-14.0f);
        limiter.SetBehavior((character < 0.0f ? 4.0f : character) * 0.15f);
        limiter.SetMode(static_cast<int>(signals.size()), static_cast<int>(kRate), kLength);
        tube.SetThreshold(-14.0f);
        tube.SetMargin(-2.0f);
        if (character >= 0.0f) {
            tube.SetCharacter(character);
        }
        const auto late = static_cast<std::size_t>(tube.GetSystemDelay());
        EXPECT_EQ(tube.GetSystemDelay(), limiter.GetLookAhead());
        PlanarRows rows(signals), ahead(signals);
        tube.Process(kLength, rows.From(0), rows.From(0), {});
        for (std::size_t i = 0; i < signals.size(); ++i) {
            ahead[i].insert(ahead[i].begin(), late, 0.0f);
        }
        PlanarRows expected(signals.size(), kLength);
        limiter.Process(ahead.From(0), kLength, expected.From(0), {});
        for (std::size_t i = 0; i < signals.size(); ++i) {
            EXPECT_LE(FindPeak(rows[i]), Linear(-2.0f) * 1.00001f);
            for (std::size_t n = 0; n < kLength; ++n) {
                ASSERT_FLOAT_EQ(rows[i][n], expected[i][n] * Linear(12.0f)) << i << ", " << n;
            }
        }
        EXPECT_GT(tube.GetReduction(), 3.0f);
    }
}

TEST(TubeLimiterTest, FromSeparateRowsLiftsTheInputAndLimitsNothing)
{
    TubeLimiter tube(512, kRate, 1);
    tube.SetThreshold(-14.0f);
    tube.SetMargin(-2.0f);
    PlanarRows input({testing::MakeNoise(kLength, 2, 1.0)}), output(1, kLength);
    tube.Process(kLength, input.From(0), output.From(0), {});
    for (std::size_t n = 0; n < kLength; ++n) {
        ASSERT_FLOAT_EQ(output[0][n], input[0][n] * Linear(12.0f));
    }
    EXPECT_GT(tube.GetReduction(), 3.0f); // the limiter has run
}

TEST(TubeLimiterTest, SkippedChannelsAreNotWritten)
{
    TubeLimiter tube(512, kRate, 2);
    tube.SetThreshold(-6.0f);
    const PlanarRows input({Row(kLength, 0.1f), Row(kLength, 1.0f)});
    TubeLimiter::ChannelMask second;
    second.SetBit(1);
    for (const auto mask : {TubeLimiter::ChannelMask(), second}) {
        auto rows = input;
        tube.Process(kLength, rows.From(0), rows.From(0), mask);
        const bool isHeard = !mask.GetBit(1);
        EXPECT_EQ(rows[1] == input[1], !isHeard); // nor is what it has left in the look-ahead
        EXPECT_NEAR(rows[0].back(), isHeard ? 0.1f : 0.1f * Linear(6.0f), 1e-3f);
    }
}

TEST(TubeLimiterTest, KeepsSettingsThroughAChangeOfFormat)
{
    TubeLimiter changed(64, 44100.0f, 3), fresh(512, kRate, 1);
    for (auto* const tube : {&changed, &fresh}) {
        tube->SetThreshold(-9.0f);
        tube->SetCharacter(6.0f);
        tube->SetPreventIntersampleClips(true);
    }
    changed.SetChannelCount(1);
    changed.SetSampleRate(kRate);
    changed.SetMaxProcessingBlockSize(512);
    EXPECT_EQ(changed.GetSystemDelay(), fresh.GetSystemDelay());
    PlanarRows first({testing::MakeNoise(kLength, 6, 1.0)}), second = first;
    changed.Process(kLength, first.From(0), first.From(0), {});
    fresh.Process(kLength, second.From(0), second.From(0), {});
    EXPECT_EQ(first, second);
    EXPECT_TRUE(changed.GetPreventIntersampleClips());
}

} // namespace

} // namespace tessaro
