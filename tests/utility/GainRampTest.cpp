#include <tessaro/utility/GainRamp.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioBufferChannel.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Row = std::vector<float>;

constexpr auto kDefaultN = GainRamp::kDefaultRampBufferSize;
constexpr auto kTinyN = GainRamp::kUnitTestRampBufferSize;

/// A ramp of step 0.125 from `inGain`.
GainRamp MakeRamp(float inGain)
{
    return GainRamp(8.0f, inGain, 1.0f);
}

template <std::size_t N = kDefaultN>
Row ProcessOnes(GainRamp& ioRamp, std::size_t inCount)
{
    Row row(inCount, 1.0f);
    float* rows[] = {row.data()};
    ioRamp.Process<N>(rows, 1, static_cast<int>(inCount));
    return row;
}

TEST(GainRampTest, FirstSampleIsOneStepOnAndTheTargetIsMetExactly)
{
    const Row expected{0.875f, 0.75f, 0.625f, 0.5f, 0.375f, 0.25f, 0.125f, 0.0f, 0.0f, 0.0f};
    auto ramp = MakeRamp(1.0f);
    ramp.SetTargetGain(0.0f);
    auto chunked = ramp;
    EXPECT_EQ(ProcessOnes(ramp, 10), expected);
    EXPECT_EQ(ProcessOnes<kTinyN>(chunked, 10), expected);
    EXPECT_TRUE(ramp.HasConstantGainZero());
    ramp.SetTargetGain(1.0f);
    EXPECT_FALSE(ramp.HasConstantGainZero());
    EXPECT_EQ(ProcessOnes(ramp, 3), (Row{0.125f, 0.25f, 0.375f}));
    ramp.SetTargetGain(1.0f); // does not disturb the ramp
    EXPECT_EQ(ProcessOnes(ramp, 1), Row{0.5f});
    ramp.SetTargetGain(0.45f);
    EXPECT_EQ(ProcessOnes(ramp, 2), (Row{0.45f, 0.45f}));
}

TEST(GainRampTest, DefaultsRampFromUnityInFiveMilliseconds)
{
    for (auto ramp : {GainRamp(), GainRamp(48000.0f), GainRamp(kestrin::FrameRate(5292000))}) {
        EXPECT_EQ(ProcessOnes(ramp, 2), (Row{1.0f, 1.0f}));
        ramp.SetTargetGain(0.0f);
        EXPECT_NEAR(ProcessOnes(ramp, 120).back(), 0.5f, 1e-5f);
        EXPECT_NEAR(ProcessOnes(ramp, 121).back(), 0.0f, 1e-6f);
        EXPECT_TRUE(ramp.HasConstantGainZero());
    }
}

TEST(GainRampTest, AnySplitAndChunkSizeGiveTheSameRampOnAllChannels)
{
    std::mt19937 random(7);
    for (const std::size_t total : {kDefaultN - 1, kDefaultN, kDefaultN + 1, 3 * kDefaultN + 5}) {
        GainRamp whole(48000.0f, 1.0f, 0.3f);
        whole.SetTargetGain(0.2f);
        auto split = whole;
        auto tiny = whole;
        auto outOfPlace = whole;
        auto empty = whole;
        const auto expected = ProcessOnes(whole, total);
        EXPECT_EQ(ProcessOnes<kTinyN>(tiny, total), expected);
        const auto count = static_cast<int>(total);
        empty.Process<kDefaultN>(nullptr, 0, count); // moves on without channels

        Row first(total, 1.0f), second(total, 2.0f);
        float* rows[] = {first.data(), second.data()};
        const float* source[] = {first.data(), second.data()};
        Row out0(total), out1(total);
        float* out[] = {out0.data(), out1.data()};
        outOfPlace.Process(source, out, 2, count);
        for (std::size_t done = 0; done < total;) {
            const auto block = std::min<std::size_t>(total - done, random() % 3000);
            float* at[] = {rows[0] + done, rows[1] + done};
            split.Process<kDefaultN>(at, 2, static_cast<int>(block));
            done += block;
        }
        EXPECT_EQ(first, expected);
        EXPECT_EQ(out0, expected);
        EXPECT_EQ(out1, second);
        EXPECT_TRUE(std::equal(first.begin(), first.end(), second.begin(),
                               [](float inA, float inB) { return 2.0f * inA == inB; }));
        EXPECT_EQ(ProcessOnes(empty, 1), ProcessOnes(whole, 1));
    }
}

TEST(GainRampTest, SourceFormKnowsAllStatesAndSharedRows)
{
    const Row source(4, 3.0f);
    Row dest(4, 9.0f);
    const float* from[] = {source.data()};
    float* to[] = {dest.data()};
    auto ramp = MakeRamp(1.0f);
    EXPECT_EQ(ramp.Process(from, to, 1, 4), GainRamp::kNonSilent);
    EXPECT_EQ(dest, source);
    ramp.SetTargetGain(0.5f);
    ramp.Process(to, to, 1, 4); // in place
    EXPECT_EQ(dest, (Row{2.625f, 2.25f, 1.875f, 1.5f}));
    EXPECT_EQ(ramp.Process(from, to, 1, 4), GainRamp::kNonSilent);
    EXPECT_EQ(dest, Row(4, 1.5f));
    auto silent = MakeRamp(0.0f);
    EXPECT_EQ(silent.Process(from, to, 1, 4), GainRamp::kSilent);
    EXPECT_EQ(dest, Row(4, 0.0f));
}

TEST(GainRampTest, GainsSnapNearZeroAndOne)
{
    const auto settle = [](float inGain) {
        auto ramp = MakeRamp(0.5f);
        ramp.SetTargetGain(inGain);
        ramp.AdvanceWithoutProcessing(100);
        return ProcessOnes(ramp, 1)[0];
    };
    EXPECT_EQ(settle(1e-7f), 0.0f);
    EXPECT_EQ(settle(-3.0f), 0.0f);
    EXPECT_EQ(settle(std::nanf("")), 0.0f);
    EXPECT_EQ(settle(1.0f + 5e-7f), 1.0f);
    EXPECT_EQ(settle(1.0f - 5e-7f), 1.0f);
    EXPECT_EQ(settle(2e-6f), 2e-6f);
    EXPECT_EQ(settle(1.00001f), 1.00001f);
    EXPECT_TRUE(MakeRamp(9e-7f).HasConstantGainZero());
    auto ramp = MakeRamp(2e-6f);
    EXPECT_EQ(ProcessOnes(ramp, 1)[0], 2e-6f);
}

TEST(GainRampTest, RateOfZeroJumpsAndNeverMakesNaN)
{
    for (auto ramp : {GainRamp(0.0f), GainRamp(kestrin::FrameRate()), GainRamp(48000.0f, 1.0f, 0.0f)}) {
        ramp.SetTargetGain(0.0f);
        ramp.AdvanceWithoutProcessing(0);
        EXPECT_EQ(ProcessOnes(ramp, 3), Row(3, 0.0f));
        ramp.SetTargetGain(0.25f);
        ramp.AdvanceWithoutProcessing(1);
        EXPECT_EQ(ProcessOnes(ramp, 1)[0], 0.25f);
    }
}

TEST(GainRampTest, SilentBuffersKeepTheirSamplesAndMoveTheRampOn)
{
    AudioBuffer buffer(2, 3);
    std::fill_n(buffer[0], 3, 1.0f);
    std::fill_n(buffer[1], 3, 1.0f);
    buffer.MarkChannelsZero(AudioBuffer::SilenceMask::All());
    auto ramp = MakeRamp(1.0f);
    ramp.SetTargetGain(0.0f);
    testing::AllocationGuard guard;
    ramp.Process(buffer);
    EXPECT_EQ(buffer[0][0], 1.0f);
    buffer.ClearZeroFlags();
    ramp.Process(buffer);
    EXPECT_EQ(buffer[0][0], 0.5f);
    EXPECT_EQ(buffer[1][2], 0.25f);
    ramp.AdvanceWithoutProcessing(1);
    ramp.Process(buffer); // reaches 0, but only the next block is silent
    EXPECT_FALSE(buffer.IsZero());
    ramp.Process(buffer);
    EXPECT_TRUE(buffer.IsZero());
    EXPECT_EQ(buffer[1][0], 0.0f);
}

TEST(GainRampTest, ASilentChannelOfASoundingBufferIsLeftAlone)
{
    AudioBuffer buffer(2, 4);
    std::fill_n(buffer[0], 4, 1.0f);
    std::fill_n(buffer[1], 4, std::numeric_limits<float>::quiet_NaN());
    buffer.MarkChannelZero(1);
    auto ramp = MakeRamp(1.0f);
    ramp.SetTargetGain(0.5f);
    for (float expected : {0.5f, 0.25f}) { // on its way, then at rest
        ramp.Process(buffer);
        EXPECT_EQ(buffer[0][3], expected);
        EXPECT_TRUE(std::isnan(buffer[1][3]));
        EXPECT_TRUE(buffer.IsChannelZero(1));
    }
}

TEST(GainRampTest, AChannelViewIsProcessedByTheFlagOfItsOwnChannel)
{
    AudioBuffer parent(2, 4);
    std::fill_n(parent[0], 4, 1.0f);
    std::fill_n(parent[1], 4, 1.0f);
    parent.MarkChannelZero(0);
    AudioBufferChannel view;
    view.Assign(parent, 1);
    GainRamp half = MakeRamp(0.5f);
    half.Process(view);
    EXPECT_EQ(parent[1][0], 0.5f);
    EXPECT_EQ(parent[0][0], 1.0f);
    half.Process(parent, 1, view, 9); // a destination that does not exist is left alone, and so is its parent
    EXPECT_FALSE(parent.IsChannelZero(1));
    GainRamp zero = MakeRamp(0.0f);
    zero.Process(view);
    EXPECT_EQ(parent[1][3], 0.0f);
    EXPECT_TRUE(parent.IsZero());
}

TEST(GainRampTest, SilentAndSoundingSourcesMoveTheRampAlike)
{
    AudioBuffer source(2, 8);
    AudioBuffer dest(1, 2);
    std::fill_n(source[0], 8, 1.0f);
    source.MarkChannelZero(1);
    float reached[2];
    for (std::size_t channel : {0u, 1u}) {
        auto ramp = MakeRamp(1.0f);
        ramp.SetTargetGain(0.0f);
        ramp.Process(source, channel, dest, 0);
        reached[channel] = ProcessOnes(ramp, 1)[0];
    }
    EXPECT_EQ(reached[0], reached[1]);
}

TEST(GainRampTest, OneChannelIsFlaggedByItsResult)
{
    AudioBuffer source(2, 4), dest(2, 6);
    std::fill_n(source[1], 4, 1.0f);
    std::fill_n(dest[0], 6, 5.0f);
    dest.MarkChannelZero(0);
    auto ramp = MakeRamp(1.0f);
    ramp.SetTargetGain(0.5f);
    ramp.Process(source, 1, dest, 0);
    EXPECT_FALSE(dest.IsChannelZero(0));
    EXPECT_EQ(Row(dest[0], dest[0] + 6), (Row{0.875f, 0.75f, 0.625f, 0.5f, 0.0f, 0.0f}));
    ramp.Process(source, 1);
    EXPECT_EQ(source[1][0], 0.5f);

    source.MarkChannelZero(0);
    ramp.SetTargetGain(0.0f);
    ramp.Process(source, 0, dest, 1); // silent: four samples pass
    EXPECT_TRUE(dest.IsChannelZero(1));
    EXPECT_TRUE(ramp.HasConstantGainZero());
    ramp.Process(source, 1);
    EXPECT_TRUE(source.IsChannelZero(1));
    EXPECT_TRUE(source.IsZero());
    ramp.SetTargetGain(1.0f); // channels that do not exist let time pass
    ramp.Process(source, 7);
    ramp.Process(source, 7, dest, 7);
    EXPECT_EQ(ProcessOnes(ramp, 1)[0], 1.0f);
}

} // namespace

} // namespace tessaro
