#include <tessaro/utility/GainTransition.h>

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Row = std::vector<float>;

/// Ones through the transition, in blocks of the given sizes.
Row ApplyToOnes(GainTransition& ioTransition, const std::vector<std::int64_t>& inBlocks)
{
    Row output;
    for (const auto block : inBlocks) {
        Row row(static_cast<std::size_t>(block), 1.0f);
        float* rows[] = {row.data()};
        {
            testing::AllocationGuard guard;
            ioTransition.Process(rows, 1, block);
        }
        output.insert(output.end(), row.begin(), row.end());
    }
    return output;
}

TEST(GainTransitionTest, JumpsOnTheirSample)
{
    GainTransition transition(4);
    EXPECT_EQ(transition.GetCurrentGain(), 1.0f);
    EXPECT_EQ(ApplyToOnes(transition, {2}), (Row{1, 1}));
    EXPECT_TRUE(transition.JumpTo(0, 0.5f));
    EXPECT_EQ(ApplyToOnes(transition, {3}), (Row{0.5f, 0.5f, 0.5f}));
    EXPECT_TRUE(transition.JumpTo(2, 0.0f));
    EXPECT_EQ(ApplyToOnes(transition, {3, 1}), (Row{0.5f, 0.5f, 0.0f, 0.0f}));
    transition.SetCurrentGain(2.0f);
    EXPECT_TRUE(transition.JumpTo(5, 3.0f)); // in the block after the next
    EXPECT_EQ(ApplyToOnes(transition, {3, 3}), (Row{2, 2, 2, 2, 2, 3}));
}

TEST(GainTransitionTest, RampMeetsItsTargetOnTheSampleBehindIt)
{
    for (const auto& blocks : {std::vector<std::int64_t>{10}, {4, 6}, {3, 3, 0, 4}, {2, 1, 1, 6}}) {
        GainTransition transition(2);
        EXPECT_TRUE(transition.RampTo(1, 8, 0.0f));
        EXPECT_EQ(ApplyToOnes(transition, blocks),
                  (Row{1, 1, 0.875f, 0.75f, 0.625f, 0.5f, 0.375f, 0.25f, 0.125f, 0}));
        EXPECT_EQ(transition.GetCurrentGain(), 0.0f);
    }
}

TEST(GainTransitionTest, NextEventTakesOverFromTheGainReached)
{
    GainTransition transition(3);
    EXPECT_TRUE(transition.RampTo(0, 8, 0.0f));
    EXPECT_TRUE(transition.RampTo(4, 2, 1.0f));
    EXPECT_TRUE(transition.JumpTo(5, 0.25f));
    EXPECT_EQ(ApplyToOnes(transition, {7}), (Row{1, 0.875f, 0.75f, 0.625f, 0.5f, 0.25f, 0.25f}));
}

TEST(GainTransitionTest, FullnessIsLookedAtFirstAndKnownGainsAddNothing)
{
    GainTransition transition(2);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(transition.JumpTo(i, 1.0f)); // the current gain
    }
    EXPECT_TRUE(transition.JumpTo(0, 0.5f));
    EXPECT_TRUE(transition.JumpTo(1, 0.5f)); // where the last event leads
    EXPECT_TRUE(transition.RampTo(1, 4, 1.0f));
    EXPECT_FALSE(transition.JumpTo(2, 1.0f));
    EXPECT_FALSE(transition.JumpTo(2, 0.0f));
    ApplyToOnes(transition, {8});
    EXPECT_TRUE(transition.JumpTo(0, 0.0f));
    EXPECT_FALSE(GainTransition(0).JumpTo(0, 0.5f));
    auto moved = std::move(transition);
    EXPECT_TRUE(moved.JumpTo(1, 0.5f));
    EXPECT_FALSE(moved.JumpTo(1, 0.25f));
}

TEST(GainTransitionTest, LateStartsCountAsTheEarliestThatIsLeft)
{
    GainTransition transition(3);
    transition.JumpTo(-4, 0.5f);
    EXPECT_EQ(ApplyToOnes(transition, {1}), Row{0.5f});
    transition.JumpTo(3, 1.0f);
    transition.RampTo(1, -2, 0.25f);
    EXPECT_EQ(ApplyToOnes(transition, {5}), (Row{0.5f, 0.5f, 0.5f, 0.25f, 0.25f}));
}

TEST(GainTransitionTest, SplitIntoBlocksChangesOnlyTheRounding)
{
    std::mt19937 random(9);
    for (int round = 0; round < 200; ++round) {
        GainTransition whole(8), split(8);
        std::int64_t start = 0;
        for (int event = 0; event < 8; ++event) {
            start += static_cast<std::int64_t>(random() % 60);
            const auto length = static_cast<std::int64_t>(random() % 3 == 0 ? 0 : random() % 80);
            const float gain = static_cast<float>(random() % 9) / 4.0f;
            whole.RampTo(start, length, gain);
            split.RampTo(start, length, gain);
        }
        std::vector<std::int64_t> blocks;
        std::int64_t total = 0;
        while (total < 600) {
            blocks.push_back(static_cast<std::int64_t>(random() % 50));
            total += blocks.back();
        }
        const auto expected = ApplyToOnes(whole, {total});
        const auto output = ApplyToOnes(split, blocks);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_NEAR(output[i], expected[i], 2e-5f) << i;
        }
        EXPECT_NEAR(whole.GetCurrentGain(), split.GetCurrentGain(), 1e-6f);
    }
}

} // namespace

} // namespace tessaro
