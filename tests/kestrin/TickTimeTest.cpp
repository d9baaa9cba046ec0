#include <kestrin/TickTime.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace kestrin {
namespace {

constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();

TEST(TickTimeTest, FrameNumbersAreRoundedDownOnBothSidesOfZero)
{
    const auto rate = FrameRate::FromFramesPerSecond(48000);
    ASSERT_EQ(rate.GetTicksPerFrame(), 5292000);
    for (std::int64_t frame : {-86400ll * 48000, -2ll, -1ll, 0ll, 1ll, 2ll, 86400ll * 48000}) {
        const TickTime begin(frame, rate);
        EXPECT_EQ(begin.GetTicks(), frame * 5292000);
        EXPECT_EQ(begin.ToFrame64(rate), frame);
        EXPECT_EQ((begin + TickTime(5291999)).ToFrame64(rate), frame);
        EXPECT_EQ((begin - TickTime(1)).ToFrame64(rate), frame - 1);
    }
}

TEST(TickTimeTest, ThirtyTwoBitFrameNumbersAreClamped)
{
    const auto rate = FrameRate::FromFramesPerSecond(192000);
    const auto most = std::numeric_limits<std::int32_t>::max();
    const auto least = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(TickTime(most, rate).ToFrame32(rate), most);
    EXPECT_EQ(TickTime(most + 1ll, rate).ToFrame32(rate), most);
    EXPECT_EQ(TickTime(least - 1ll, rate).ToFrame32(rate), least);
    EXPECT_EQ(TickTime(-1, rate).ToFrame32(rate), -1);
}

TEST(TickTimeTest, WhatIsNoRateConvertsToZero)
{
    for (const FrameRate rate : {FrameRate(), FrameRate(0), FrameRate(-5292000)}) {
        EXPECT_FALSE(rate.IsValid());
        EXPECT_EQ(TickTime(1000, rate), TickTime());
        EXPECT_EQ(TickTime(kLeast).ToFrame64(rate), 0);
        EXPECT_EQ(TickTime(kMost).ToFrame32(rate), 0);
        EXPECT_EQ(rate.GetFramesPerSecond(), 0.0);
        EXPECT_EQ(rate * 80, rate);
    }
    EXPECT_EQ(TickTime(kLeast).ToFrame64(FrameRate(1)), kLeast);
}

TEST(TickTimeTest, ArithmeticStopsAtTheEndsOfTheRange)
{
    EXPECT_EQ(TickTime(kMost) + TickTime(1), TickTime(kMost));
    EXPECT_EQ(TickTime(kLeast) + TickTime(-1), TickTime(kLeast));
    EXPECT_EQ(TickTime(kLeast) + TickTime(kMost), TickTime(-1));
    EXPECT_EQ(TickTime(-1) - TickTime(kLeast), TickTime(kMost));
    EXPECT_EQ(TickTime(0) - TickTime(kLeast), TickTime(kMost));
    EXPECT_EQ(TickTime(kLeast) - TickTime(1), TickTime(kLeast));
    EXPECT_EQ(-TickTime(kLeast), TickTime(kMost));
    EXPECT_EQ(TickTime(kMost / 2, FrameRate(3)), TickTime(kMost));
    EXPECT_EQ(TickTime(kLeast / 2, FrameRate(3)), TickTime(kLeast));
    EXPECT_EQ(TickTime(kMost) * 1.5, TickTime(kMost));
    EXPECT_EQ(TickTime(kMost) * -1e30, TickTime(kLeast));
    EXPECT_EQ(TickTime(kMost) * std::numeric_limits<double>::quiet_NaN(), TickTime());
    EXPECT_TRUE((TickTime() - TickTime(400000, FrameRate(kTicksPerSecond))).IsNoTime());
}

TEST(TickTimeTest, ScalingGoesToTheNearestTick)
{
    const auto bitRate = FrameRate::FromRatio(30000, 1001) * 80;
    EXPECT_EQ((TickTime(1, bitRate) * 0.75).GetTicks(), 79459380);
    EXPECT_EQ(TickTime(3) * 0.5, TickTime(2));
    EXPECT_EQ(TickTime(-3) * 0.5, TickTime(-2));
    // A whole factor is exact over the whole range where long double has the bits for it.
    if (std::numeric_limits<long double>::digits >= 64) {
        EXPECT_EQ(TickTime(kMost) * 1.0, TickTime(kMost));
        EXPECT_EQ(TickTime(kMost - 1) * -1.0, TickTime(1 - kMost));
    }
}

TEST(FrameRateTest, UsualRatesAreWholeTicks)
{
    EXPECT_EQ(FrameRate::FromRatio(30000, 1001).GetTicksPerFrame(), 8475667200);
    EXPECT_EQ(FrameRate::FromRatio(24000, 1001).GetTicksPerFrame(), 10594584000);
    EXPECT_EQ(FrameRate::FromRatio(60000, 1001).GetTicksPerFrame() * 60000, kTicksPerSecond * 1001);
    for (int rate : {8000, 11025, 22050, 24, 25, 30, 44100, 48000, 50, 60, 88200, 96000, 176400, 192000}) {
        EXPECT_EQ(FrameRate::FromFramesPerSecond(rate).GetTicksPerFrame() * rate, kTicksPerSecond);
        EXPECT_EQ(FrameRate::FromRatio(rate, 1), FrameRate::FromFramesPerSecond(rate));
        EXPECT_EQ(FrameRate::FromRatio(rate, 1).GetFramesPerSecond(), rate);
    }
}

TEST(FrameRateTest, MultiplicationShortensTheFrame)
{
    EXPECT_EQ(FrameRate(8475667200) * 80, FrameRate(105945840));
    EXPECT_EQ(FrameRate(11) * 2, FrameRate(6));
    EXPECT_EQ(FrameRate(10) * 3, FrameRate(3));
    EXPECT_EQ(FrameRate(1) * 1000, FrameRate(1));
    EXPECT_EQ(FrameRate(10) * 0, FrameRate());
    EXPECT_EQ(FrameRate(10) * -2, FrameRate());
}

TEST(FrameRateTest, ImpossibleRatesAreInvalid)
{
    for (double rate : {0.0, -1.0, std::nan(""), 1e-300}) {
        EXPECT_EQ(FrameRate::FromFramesPerSecond(rate), FrameRate(0x7FFFFFFFFFFFFFFF)) << rate;
    }
    EXPECT_EQ(FrameRate::FromFramesPerSecond(std::numeric_limits<double>::infinity()), FrameRate(1));
    EXPECT_FALSE(FrameRate::FromRatio(0, 1).IsValid());
    EXPECT_FALSE(FrameRate::FromRatio(1, 0).IsValid());
    EXPECT_FALSE(FrameRate::FromRatio(1, 36000001).IsValid());
    EXPECT_EQ(FrameRate::FromRatio(1, 36000000).GetTicksPerFrame() / kTicksPerSecond, 36000000);
}

} // namespace
} // namespace kestrin
