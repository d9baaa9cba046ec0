#include "dropouts/DropoutQueue.h"

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro::dropouts {
namespace {

/// Each thread puts in as much as it takes out, so that a handful of nodes goes round and round between the
/// queue and the free list.
TEST(DropoutQueueTest, RecordsComeOutOnceWholeAndInTheirWritersOrder)
{
    constexpr std::uint32_t kThreads = 8;
    constexpr std::uint32_t kRecords = 40000;
    DropoutQueue queue;
    std::vector<std::atomic<int>> taken(kThreads * kRecords);
    std::atomic<int> faults{0};
    const auto take = [&](std::vector<std::int64_t>& ioLast) {
        DropoutRecord record{};
        if (!queue.Pop(record)) {
            return false;
        }
        const auto number = record.mTime;
        faults += record.mContextId >= kThreads || record.mReason != static_cast<std::uint32_t>(number) ||
                  record.mFrameRate != -number || number <= ioLast[record.mContextId];
        ioLast[record.mContextId] = number;
        ++taken[record.mContextId * kRecords + record.mReason];
        return true;
    };
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (std::uint32_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            std::vector<std::int64_t> last(kThreads, -1);
            start.arrive_and_wait();
            for (std::uint32_t i = 0; i < kRecords; ++i) {
                queue.Push({thread, -std::int64_t{i}, i, i});
                take(last);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::vector<std::int64_t> last(kThreads, -1);
    while (take(last)) {
    }
    EXPECT_EQ(faults, 0);
    for (const auto& times : taken) {
        ASSERT_EQ(times, 1);
    }
}

} // namespace
} // namespace tessaro::dropouts
