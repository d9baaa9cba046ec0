#include "utility/RingBuffer.h"

#include <algorithm>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

TEST(RingBufferTest, RefusesAReadOfMoreThanThereIs)
{
    RingBuffer<float> ring(1, 5);
    const float samples[] = {1, 2, 3, 4};
    const float* source[] = {samples};
    float dest[4] = {-1, -1, -1, -1};
    float* rows[] = {dest};
    EXPECT_EQ(ring.Read(rows, 1), 0);
    EXPECT_EQ(ring.Read(rows, 0), 0);
    for (int round = 0; round < 6; ++round) { // all positions, one slot is always free
        std::fill_n(dest, 4, -1.0f);
        {
            testing::AllocationGuard guard;
            EXPECT_EQ(ring.GetNumWritable(), 4);
            ring.Write(source, 1, 1);
            ring.Write(source, 2, 2);
            EXPECT_EQ(ring.GetNumReadable(), 3);
            EXPECT_EQ(ring.Read(rows, 4), 3);
            EXPECT_EQ(dest[0], -1.0f);
            EXPECT_EQ(ring.Read(rows, 2, 1), 2);
            EXPECT_EQ(ring.Read(rows, 1, 3), 1);
        }
        EXPECT_EQ((std::vector<float>(dest, dest + 4)), (std::vector<float>{-1, 2, 3, 4}));
    }
}

/// Numbers that a float holds exactly and that tell each sample of some millions from its neighbours.
float SampleAt(std::int64_t inPosition, int inChannel)
{
    return static_cast<float>((inPosition * 2 + inChannel) % 16777213);
}

TEST(RingBufferTest, TwoThreadsSeeEachSampleOnceAndWhole)
{
    constexpr std::int64_t kSamples = 10'000'000;
    constexpr int kMaxBlock = 700;
    const auto ring = std::make_shared<RingBuffer<float>>(2, 1021);

    const auto produce = [ring] {
        std::mt19937 random(1);
        std::vector<float> block[2] = {std::vector<float>(kMaxBlock), std::vector<float>(kMaxBlock)};
        const float* rows[] = {block[0].data(), block[1].data()};
        for (std::int64_t written = 0; written < kSamples;) {
            const auto count =
                static_cast<int>(std::min<std::int64_t>({static_cast<std::int64_t>(random() % kMaxBlock),
                                                         ring->GetNumWritable(), kSamples - written}));
            for (int i = 0; i < count; ++i) {
                block[0][static_cast<std::size_t>(i)] = SampleAt(written + i, 0);
                block[1][static_cast<std::size_t>(i)] = SampleAt(written + i, 1);
            }
            ring->Write(rows, count);
            written += count;
            if (count == 0) {
                std::this_thread::yield();
            }
        }
    };
    std::thread producer(produce);

    std::mt19937 random(2);
    std::vector<float> block[2] = {std::vector<float>(kMaxBlock), std::vector<float>(kMaxBlock)};
    float* rows[] = {block[0].data(), block[1].data()};
    std::int64_t wrong = 0;
    for (std::int64_t read = 0; read < kSamples;) {
        const auto wanted = static_cast<int>(std::min<std::int64_t>(random() % kMaxBlock, kSamples - read));
        if (ring->Read(rows, wanted) != wanted) {
            std::this_thread::yield();
            continue;
        }
        for (int i = 0; i < wanted; ++i) {
            wrong += block[0][static_cast<std::size_t>(i)] != SampleAt(read + i, 0);
            wrong += block[1][static_cast<std::size_t>(i)] != SampleAt(read + i, 1);
        }
        read += wanted;
    }
    producer.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(ring->GetNumReadable(), 0);
}

} // namespace

} // namespace tessaro
