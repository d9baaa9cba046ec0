#include <tessaro/utility/AudioDelayBuffer.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Row = std::vector<float>;

/// Writes a block of the next numbers, channel 1 the negative ones, and appends what comes out to the rows.
void Turn(AudioDelayBuffer& ioDelay, unsigned inSize, float& ioNext, Row (&ioRows)[2])
{
    AudioBuffer block(2, inSize);
    for (unsigned i = 0; i < inSize; ++i) {
        block[0][i] = ioNext;
        block[1][i] = -ioNext;
        ioNext += 1.0f;
    }
    {
        testing::AllocationGuard guard;
        ioDelay.Write(block);
        ioDelay.Read(block);
    }
    for (unsigned channel = 0; channel < 2; ++channel) {
        ioRows[channel].insert(ioRows[channel].end(), block[channel], block[channel] + inSize);
    }
}

/// Zeros, then the numbers from 1 on.
Row DelayedNumbers(unsigned inDelay, std::size_t inLength)
{
    Row row(inLength, 0.0f);
    for (std::size_t i = inDelay; i < inLength; ++i) {
        row[i] = static_cast<float>(i - inDelay + 1);
    }
    return row;
}

TEST(AudioDelayBufferTest, DelaysBlocksOfAnySize)
{
    for (const unsigned delay : {0u, 1u, 5u, 16u, 40u}) {
        AudioDelayBuffer buffer;
        buffer.Init(2, 16, delay);
        EXPECT_EQ(buffer.GetDelay(), delay);
        EXPECT_EQ(buffer.GetBufferSize(), 16 + delay);
        EXPECT_TRUE(buffer.IsZero());
        float next = 1.0f;
        Row rows[2];
        for (const unsigned size : {16u, 3u, 1u, 16u, 7u, 16u, 16u}) {
            Turn(buffer, size, next, rows);
        }
        AudioDelayBuffer copy(buffer); // goes on where the original stands
        for (const unsigned size : {5u, 16u}) {
            Turn(copy, size, next, rows);
        }
        const auto expected = DelayedNumbers(delay, rows[0].size());
        EXPECT_EQ(rows[0], expected) << "delay " << delay;
        std::transform(rows[1].begin(), rows[1].end(), rows[1].begin(), [](float x) { return 0.0f - x; });
        EXPECT_EQ(rows[1], expected) << "delay " << delay;
    }
}

TEST(AudioDelayBufferTest, SilentInputGivesZerosThatAreNotFlagged)
{
    AudioDelayBuffer buffer;
    buffer.Init(2, 4, 2);
    AudioBuffer block(3, 4);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        std::fill_n(block[channel], 4, std::numeric_limits<float>::quiet_NaN());
    }
    std::fill_n(block[0], 4, 1.0f);
    block.MarkChannelZero(1);
    buffer.Write(block);
    EXPECT_EQ(buffer.GetChannelZeroMask().GetValue() & 3u, 2u); // what it holds itself is flagged truly
    block.MarkChannelsZero(7u);
    buffer.Read(block);
    EXPECT_FALSE(block.GetChannelZeroMask().IsAnySet(7u));
    EXPECT_EQ(Row(block[0], block[0] + 4), (Row{0, 0, 1, 1}));
    EXPECT_EQ(Row(block[1], block[1] + 4), Row(4, 0.0f));
    EXPECT_EQ(Row(block[2], block[2] + 4), Row(4, 0.0f)); // a channel that only the block has

    AudioDelayBuffer empty;
    empty.Write(block);
    empty.Read(block);
    EXPECT_EQ(Row(block[0], block[0] + 4), Row(4, 0.0f));
}

TEST(AudioDelayBufferTest, NewDelayClearsAndMakesTheRingLonger)
{
    AudioDelayBuffer buffer;
    buffer.Init(2, 8, 3);
    float next = 100.0f;
    Row rows[2];
    Turn(buffer, 8, next, rows);
    buffer.SetDelay(5);
    EXPECT_EQ(buffer.GetDelay(), 5u);
    EXPECT_EQ(buffer.GetBufferSize(), 8u + 3 + 5);
    rows[0].clear();
    next = 1.0f;
    Turn(buffer, 8, next, rows);
    Turn(buffer, 8, next, rows);
    EXPECT_EQ(rows[0], DelayedNumbers(5, 16));
}

} // namespace

} // namespace tessaro
