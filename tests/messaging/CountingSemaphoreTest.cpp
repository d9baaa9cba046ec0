#include <tessaro/messaging/CountingSemaphore.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro::threads {

namespace {

using namespace std::chrono_literals;

TEST(CountingSemaphoreTest, GivesEachSignalToOneWait)
{
    CountingSemaphore semaphore;
    EXPECT_FALSE(semaphore.TimedWait(0s));
    EXPECT_FALSE(semaphore.TimedWait(1ms));
    semaphore.Signal();
    semaphore.Signal();
    EXPECT_TRUE(semaphore.TimedWait(0s));
    EXPECT_TRUE(semaphore.TimedWait(std::chrono::hours::max()));
    EXPECT_FALSE(semaphore.TimedWait(-1s));
    EXPECT_FALSE(
        semaphore.TimedWait(std::chrono::duration<double>(std::numeric_limits<double>::quiet_NaN())));
}

TEST(CountingSemaphoreTest, CountsUpToItsMaximum)
{
    CountingSemaphore semaphore;
    for (int i = 0; i < CountingSemaphore::kMaximum + 5; ++i) {
        semaphore.Signal();
    }
    int taken = 0;
    while (semaphore.TimedWait(0s)) {
        ++taken;
    }
    EXPECT_EQ(taken, 32768);
}

TEST(CountingSemaphoreTest, WakesSleepingThreadsOnceForEachSignal)
{
    constexpr int kSignals = 3000;
    CountingSemaphore semaphore;
    std::atomic<int> taken{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < 3; ++i) {
        workers.emplace_back([&] {
            while (taken.load() < kSignals && semaphore.TimedWait(60s)) {
                ++taken;
            }
        });
    }
    for (int i = 0; i < kSignals; ++i) {
        semaphore.Signal();
    }
    while (taken.load() < kSignals) {
        std::this_thread::yield();
    }
    for (std::size_t i = 0; i < workers.size(); ++i) {
        semaphore.Signal();
    }
    for (auto& worker : workers) {
        worker.join();
    }
    EXPECT_GE(taken.load(), kSignals);
    EXPECT_LE(taken.load(), kSignals + 3);
}

} // namespace

} // namespace tessaro::threads
