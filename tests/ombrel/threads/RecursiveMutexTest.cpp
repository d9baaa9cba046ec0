#include <ombrel/threads/RecursiveMutex.h>
#include <ombrel/threads/ThreadID.h>

#include <future>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace ombrel::threads {

namespace {

using namespace std::chrono_literals;

TEST(ThreadIDTest, IsNeverZeroStaysTheSameAndIsNotGivenAgain)
{
    const unsigned own = GetCurrentThreadID();
    EXPECT_NE(own, 0u);
    EXPECT_EQ(GetCurrentThreadID(), own);
    std::set<unsigned> seen{own};
    for (int i = 0; i < 20; ++i)
        std::thread([&] { EXPECT_TRUE(seen.insert(GetCurrentThreadID()).second); }).join();
    EXPECT_FALSE(seen.contains(0));
}

TEST(RecursiveMutexTest, LocksAgainOnTheSameThreadAndTellsItsHolder)
{
    RecursiveMutex mutex("test mutex");
    EXPECT_STREQ(mutex.GetName(), "test mutex");
    EXPECT_EQ(mutex.GetHolder().mThreadID, 0u);
    {
        RecursiveMutex::ScopedLock outer(mutex, "outer");
        EXPECT_TRUE(mutex.Lock("inner", 0ms));
        EXPECT_EQ(mutex.GetHolder().mThreadID, GetCurrentThreadID());
        EXPECT_STREQ(mutex.GetHolder().mWhere, "outer");
        EXPECT_EQ(mutex.GetHolder().mDepth, 2u);
        const auto tryElsewhere = [&](std::chrono::milliseconds inTimeout) {
            return std::async(std::launch::async, [&mutex, inTimeout] {
                mutex.Unlock(); // not this thread's to give up
                return RecursiveMutex::ScopedLock(mutex, "elsewhere", inTimeout).OwnsLock();
            });
        };
        EXPECT_FALSE(tryElsewhere(0ms).get());
        EXPECT_FALSE(tryElsewhere(-1ms).get());
        EXPECT_FALSE(tryElsewhere(5ms).get());
        mutex.Unlock();
        EXPECT_FALSE(tryElsewhere(0ms).get());
        auto waiting = tryElsewhere(std::chrono::milliseconds::max());
        std::this_thread::sleep_for(5ms);
        mutex.Unlock();
        EXPECT_TRUE(waiting.get());
        mutex.Lock("for the scope guard");
    }
    EXPECT_FALSE(mutex.IsHeldByThisThread());
    EXPECT_EQ(mutex.GetHolder().mWhere, nullptr);
}

TEST(RecursiveMutexTest, KeepsThreadsApart)
{
    RecursiveMutex mutex("counter");
    int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                RecursiveMutex::ScopedLock lock(mutex, "outer");
                while (!mutex.Lock("inner", 1ms))
                    ADD_FAILURE();
                ++count;
                mutex.Unlock();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 4 * 2000);
}

} // namespace

} // namespace ombrel::threads
