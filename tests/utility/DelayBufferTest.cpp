#include <tessaro/utility/MultiChannelDelayBuffer.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Row = std::vector<float>;

Row Concatenated(const DelayBuffer::WorkChunks& inChunks)
{
    Row row(inChunks.mFirstBegin, inChunks.mFirstEnd);
    row.insert(row.end(), inChunks.mSecondBegin, inChunks.mSecondEnd);
    return row;
}

Row ReadOf(const DelayBuffer& inBuffer, int inCount, int inSkip)
{
    Row row(static_cast<std::size_t>(inCount), -1.0f);
    row.resize(static_cast<std::size_t>(inBuffer.Read(row.data(), inCount, inSkip)));
    return row;
}

TEST(DelayBufferTest, HoldsTheLastSamplesWhateverTheWriteSizes)
{
    std::mt19937 random(1);
    float next = 0.0f;
    for (const int size : {1, 2, 7, 32}) {
        DelayBuffer buffer;
        buffer.Init(size);
        std::deque<float> held;
        for (int round = 0; round < 200; ++round) {
            if (round % 50 == 49) {
                buffer.Reset();
                held.clear();
            }
            Row block(random() % static_cast<unsigned>(size + 1));
            std::generate(block.begin(), block.end(), [&] { return next += 1.0f; });
            {
                testing::AllocationGuard guard;
                buffer.Write(block.data(), static_cast<int>(block.size()));
            }
            held.insert(held.end(), block.begin(), block.end());
            while (held.size() > static_cast<std::size_t>(size)) {
                held.pop_front();
            }
            ASSERT_EQ(buffer.GetValidDataSize(), static_cast<int>(held.size()));
            for (int skip = 0; skip <= size + 1; ++skip) {
                const Row expected(held.begin() + std::min<std::ptrdiff_t>(skip, std::ssize(held)),
                                   held.end());
                ASSERT_EQ(Concatenated(buffer.GetWorkChunks(skip)), expected);
                ASSERT_EQ(ReadOf(buffer, size + 3, skip), expected);
                const auto some = std::min<std::size_t>(expected.size(), 3);
                ASSERT_EQ(ReadOf(buffer, 3, skip), Row(expected.begin(), expected.begin() + some));
            }
        }
    }
}

TEST(DelayBufferTest, OneRunIsTheFirstWhereOneIsEnough)
{
    DelayBuffer buffer;
    buffer.Init(4);
    const Row samples{1, 2, 3, 4, 5, 6, 7};
    buffer.Write(samples.data(), 4);
    const float* const start = buffer.GetWorkChunks(0).mFirstBegin;
    EXPECT_EQ(buffer.GetWorkChunks(0).mFirstEnd, start + 4); // wrapped at once, the next goes to the start
    buffer.Write(samples.data() + 4, 1);

    auto chunks = buffer.GetWorkChunks(2); // 4, then 5
    EXPECT_EQ(chunks.mFirstBegin, start + 3);
    EXPECT_EQ(chunks.mSecondBegin, start);
    EXPECT_EQ(chunks.mSecondEnd, start + 1);
    chunks = buffer.GetWorkChunks(3); // just what was the first run is left out
    EXPECT_EQ(chunks.mFirstBegin, start);
    EXPECT_EQ(chunks.mFirstEnd, start + 1);
    EXPECT_EQ(chunks.mSecondBegin, start);
    EXPECT_EQ(chunks.mSecondEnd, start);

    buffer.Write(samples.data(), 7); // more than there is room for
    EXPECT_EQ(ReadOf(buffer, 9, 0), (Row{4, 5, 6, 7}));
}

TEST(MultiChannelDelayBufferTest, ChannelsStandAlone)
{
    MultiChannelDelayBuffer buffer;
    Row row(4, -1.0f);
    float* rows[] = {row.data(), row.data() + 2};
    EXPECT_EQ(buffer.GetValidDataSize(), 0);
    EXPECT_EQ(buffer.Read(rows, 2, 0), 0);
    EXPECT_TRUE(buffer.GetWorkChunks(0).empty());

    buffer.Init(2, 3);
    const Row first{1, 2};
    const Row second{3, 4};
    const float* sources[] = {first.data(), second.data()};
    buffer.Write(sources, 2);
    buffer.Write(1, first.data(), 1);
    buffer.Write(2, first.data(), 1);
    buffer.Write(-1, first.data(), 1);
    EXPECT_EQ(buffer.GetValidDataSize(), 2); // the first channel's
    EXPECT_EQ(buffer.Read(rows, 2, 1), 2);   // the last channel's
    EXPECT_EQ(row, (Row{2, -1, 4, 1}));
    EXPECT_EQ(buffer.Read(2, row.data(), 1, 0), 0);
    EXPECT_EQ(buffer.Read(0, nullptr, 1, 0), 0);
    EXPECT_EQ(buffer.Read(1, row.data(), 4, 0), 3);
    const auto chunks = buffer.GetWorkChunks(1);
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(Concatenated(chunks[0]), (Row{2}));
    EXPECT_EQ(Concatenated(chunks[1]), (Row{4, 1}));
    buffer.Reset();
    EXPECT_EQ(buffer.Read(1, row.data(), 4, 0), 0);
}

} // namespace

} // namespace tessaro
