#include <ombrel/allocator/MemoryRecycler.h>
#include <ombrel/allocator/RecycledMemory.h>
#include <ombrel/allocator/STLAllocator.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <list>
#include <mutex>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ombrel::allocator::MemoryRecycler;
using ombrel::allocator::RecycledMemory;
using ombrel::allocator::STLAllocator;

constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();

TEST(MemoryRecyclerTest, GrantsEverySizeWithAQuarterOfSlackAtMostAndGrantsItsOwnGrantAgain)
{
    std::size_t previous = 0;
    for (std::size_t bytes = 1; bytes < (std::size_t{80} << 20); bytes += 1 + bytes / 37) {
        const auto granted = MemoryRecycler::GrantedSize(bytes);
        ASSERT_GE(granted, bytes);
        ASSERT_LE(granted, std::max<std::size_t>(bytes + 63, bytes + bytes / 4)) << bytes;
        ASSERT_EQ(granted % MemoryRecycler::kAlignment, 0u);
        ASSERT_EQ(MemoryRecycler::GrantedSize(granted), granted);
        ASSERT_GT(MemoryRecycler::GrantedSize(granted + 1), granted);
        ASSERT_GE(granted, previous);
        previous = granted;
    }
}

TEST(MemoryRecyclerTest, BlocksAreAlignedWritableInFullAndHandedOutAgain)
{
    for (const std::size_t bytes : {1u, 64u, 65u, 1000u, 65536u, 65537u, 1u << 20, (1u << 25) + 1}) {
        std::size_t granted = 0;
        void* block = MemoryRecycler::Allocate(bytes, granted);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % MemoryRecycler::kAlignment, 0u);
        std::memset(block, 0x5A, granted);
        MemoryRecycler::Recycle(block, granted);
        if (bytes <= (1u << 25)) {
            std::size_t again = 0;
            void* same = MemoryRecycler::Allocate(granted, again);
            EXPECT_EQ(same, block);
            MemoryRecycler::Recycle(same, bytes);
        }
    }
}

TEST(MemoryRecyclerTest, ZeroBytesAreNullAndImpossibleSizesThrow)
{
    std::size_t granted = 7;
    EXPECT_EQ(MemoryRecycler::Allocate(0, granted), nullptr);
    EXPECT_EQ(granted, 0u);
    MemoryRecycler::Recycle(nullptr, 64);
    EXPECT_EQ(MemoryRecycler::GrantedSize(MemoryRecycler::kLargestBlock), MemoryRecycler::kLargestBlock);
    for (const auto bytes : {MemoryRecycler::kLargestBlock + 1, kHuge}) {
        EXPECT_THROW(static_cast<void>(MemoryRecycler::Allocate(bytes, granted)), std::bad_alloc);
        EXPECT_EQ(MemoryRecycler::GrantedSize(bytes), 0u);
    }
}

TEST(MemoryRecyclerTest, KeepsNoMoreThanItsLimitAndReleasesWhatIsUnused)
{
    constexpr std::size_t kBlock = std::size_t{1} << 20;
    MemoryRecycler::ReleaseUnused();
    ASSERT_EQ(MemoryRecycler::GetRetainedBytes(), 0u);
    const auto limit = MemoryRecycler::GetRetentionLimit();
    MemoryRecycler::SetRetentionLimit(3 * kBlock);
    std::vector<RecycledMemory> blocks;
    for (int i = 0; i < 8; ++i) {
        blocks.emplace_back(kBlock);
    }
    blocks.clear();
    EXPECT_EQ(MemoryRecycler::GetRetainedBytes(), 3 * kBlock);
    MemoryRecycler::ReleaseUnused();
    EXPECT_EQ(MemoryRecycler::GetRetainedBytes(), 0u);
    MemoryRecycler::SetRetentionLimit(limit);
}

/// Blocks wander between threads; each is filled with its owner's pattern, which must still stand when it is
/// given back: no block may have two owners at once.
TEST(MemoryRecyclerTest, NeverGivesOneBlockToTwoThreads)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    std::mutex mutex;
    std::vector<std::pair<unsigned char*, std::size_t>> exchange;
    std::atomic<int> damaged{0};
    const auto checkAndRecycle = [&](std::pair<unsigned char*, std::size_t> inBlock) {
        damaged += inBlock.first[0] != inBlock.first[inBlock.second - 1];
        MemoryRecycler::Recycle(inBlock.first, inBlock.second);
    };
    const auto work = [&](unsigned inSeed) {
        std::minstd_rand random(inSeed);
        for (int round = 0; round < kRounds; ++round) {
            std::size_t granted = 0;
            const std::size_t bytes = 1 + random() % (round % 16 == 0 ? 200000 : 3000);
            auto* block = static_cast<unsigned char*>(MemoryRecycler::Allocate(bytes, granted));
            block[0] = block[granted - 1] = static_cast<unsigned char>(random());
            const std::lock_guard lock(mutex);
            exchange.emplace_back(block, granted);
            if (exchange.size() > 64) {
                std::swap(exchange[random() % exchange.size()], exchange.back());
                checkAndRecycle(exchange.back());
                exchange.pop_back();
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back(work, i + 1);
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& block : exchange) {
        checkAndRecycle(block);
    }
    EXPECT_EQ(damaged, 0);
}

/// Made before any test ran, so it outlives the main thread's cache.
RecycledMemory gLivesToTheEnd(1000);

TEST(MemoryRecyclerTest, WorksWhileThreadsAndTheProcessEnd)
{
    struct LateUser
    {
        ~LateUser() { RecycledMemory(500); }
    };
    std::thread([] {
        static thread_local LateUser late;
        static_cast<void>(late);
        RecycledMemory(700);
    }).join();
    EXPECT_EQ(gLivesToTheEnd.GetSize(), 1000u);
}

TEST(RecycledMemoryTest, TellsTheSizeAskedForAndKeepsItsBlockWhenAllocationFails)
{
    RecycledMemory memory(1000);
    EXPECT_EQ(memory.GetSize(), 1000u);
    EXPECT_GE(memory.GetGrantedSize(), 1000u);
    memory.BufferAs<int>()[249] = 42;
    EXPECT_THROW(memory.Allocate(kHuge), std::bad_alloc);
    EXPECT_THROW(memory.Allocate(kHuge / 4), std::bad_alloc);
    EXPECT_EQ(memory.GetSize(), 1000u);
    EXPECT_EQ(memory.BufferAs<int>()[249], 42);

    const void* block = memory.GetMemory();
    memory.Allocate(1010);
    EXPECT_EQ(memory.GetMemory(), block);
    EXPECT_EQ(memory.GetSize(), 1010u);

    RecycledMemory moved(std::move(memory));
    EXPECT_EQ(memory.GetMemory(), nullptr);
    EXPECT_EQ(memory.GetSize(), 0u);
    memory = std::move(moved);
    EXPECT_EQ(memory.GetMemory(), block);
    memory.Allocate(0);
    EXPECT_EQ(memory.GetMemory(), nullptr);
    EXPECT_EQ(RecycledMemory::Create(64)->GetSize(), 64u);
}

TEST(STLAllocatorTest, CarriesContainersOfAnyKind)
{
    std::vector<float, STLAllocator<float>> samples;
    for (int i = 0; i < 100000; ++i) {
        samples.push_back(static_cast<float>(i));
    }
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(samples.data()) % MemoryRecycler::kAlignment, 0u);
    EXPECT_EQ(samples[99999], 99999.0f);
    std::list<int, STLAllocator<int>> nodes(1000, 7);
    auto moved = std::move(nodes);
    EXPECT_EQ(moved.size(), 1000u);
    EXPECT_THROW(static_cast<void>(STLAllocator<double>().allocate(kHuge / 4)), std::bad_alloc);
}

} // namespace
