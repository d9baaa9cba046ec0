#include <ombrel/threads/AsyncThreadedExecutor.h>
#include <ombrel/threads/ThreadID.h>

#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <ombrel/async/Submit.h>

namespace ombrel::threads {

namespace {

TEST(TaskTest, HoldsSmallAndLargeMoveOnlyWorkAndDestroysItOnce)
{
    const auto witness = std::make_shared<int>(0);
    const auto check = [&](auto inPadding) {
        Task task(
            [copy = witness, only = std::make_unique<int>(3), inPadding] { *copy += *only + inPadding[0]; });
        Task moved(std::move(task));
        EXPECT_FALSE(task);
        task = std::move(moved);
        task();
        EXPECT_EQ(witness.use_count(), 2);
        task = Task();
        EXPECT_EQ(witness.use_count(), 1);
    };
    check(std::array<char, 1>{1});
    check(std::array<char, 200>{2});
    EXPECT_EQ(*witness, 4 + 5);
}

TEST(SerialExecutorTest, RunsEverythingInOrderOneAtATimeEvenWhenDropped)
{
    constexpr int kThreads = 3;
    constexpr int kPosts = 2000;
    std::vector<std::pair<int, int>> ran;
    std::atomic<int> atOnce{0};
    {
        const auto executor = CreateSerialExecutor();
        EXPECT_EQ(executor->GetDegreeOfConcurrency(), 1u);
        std::vector<std::thread> posters;
        for (int t = 0; t < kThreads; ++t) {
            posters.emplace_back([&, t] {
                for (int i = 0; i < kPosts; ++i) {
                    CallAsync(executor, [&, t, i] {
                        EXPECT_EQ(atOnce.fetch_add(1), 0);
                        ran.emplace_back(t, i);
                        atOnce.fetch_sub(1);
                    });
                }
            });
        }
        for (std::thread& poster : posters)
            poster.join();
    }
    ASSERT_EQ(ran.size(), static_cast<std::size_t>(kThreads * kPosts));
    std::array<int, kThreads> next{};
    for (const auto& [thread, index] : ran)
        ASSERT_EQ(index, next[static_cast<std::size_t>(thread)]++);
}

TEST(AsyncThreadedExecutorTest, RunsAsManyPiecesAtATimeAsItSays)
{
    constexpr unsigned kDegree = 3;
    // Each waits for the others, so this only ends if all three run at once.
    std::atomic<unsigned> arrived{0};
    std::promise<void> all;
    const std::shared_future<void> allArrived = all.get_future().share();
    AsyncThreadedExecutor executor(kDegree);
    EXPECT_EQ(executor.GetDegreeOfConcurrency(), kDegree);
    EXPECT_GE(AsyncThreadedExecutor().GetDegreeOfConcurrency(), 1u);
    for (unsigned i = 0; i < kDegree; ++i) {
        executor.Post([&] {
            if (arrived.fetch_add(1) + 1 == kDegree)
                all.set_value();
            allArrived.wait();
        });
    }
    allArrived.wait();
}

TEST(AsyncThreadedExecutorTest, FinishesWorkPostedFromWorkAndSurvivesExceptions)
{
    std::atomic<int> count{0};
    for (const unsigned threads : {1u, 4u}) {
        const auto executor = std::make_shared<AsyncThreadedExecutor>(threads);
        for (int i = 0; i < 200; ++i) {
            executor->Post([&count, pool = std::weak_ptr(executor)] {
                if (const auto alive = pool.lock())
                    alive->Post([&count] { ++count; });
                else
                    ++count;
                if (count.load() == 1)
                    throw std::runtime_error("one piece of work fails");
            });
        }
    }
    // A pool may have been let go on one of its own threads, and then nobody waited for it.
    for (int i = 0; i < 2000 && count.load() < 400; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(count.load(), 400);
}

TEST(AsyncThreadedExecutorTest, MayLoseItsLastReferenceInItsOwnWork)
{
    for (int i = 0; i < 50; ++i) {
        std::promise<void> finished;
        auto executor = std::make_shared<AsyncThreadedExecutor>(2);
        auto other = CreateSerialExecutor();
        AsyncThreadedExecutor& pool = *executor;
        std::promise<void> posted;
        pool.Post(
            [go = posted.get_future(), held = std::move(executor), alsoHeld = std::move(other)]() mutable {
                go.wait();
                alsoHeld.reset();
                held.reset();
            });
        pool.Post([&finished] { finished.set_value(); });
        posted.set_value();
        finished.get_future().wait();
    }
}

TEST(AsyncThreadedExecutorTest, AClosedOneStillDoesWhatIsPosted)
{
    AsyncThreadedExecutor executor(2);
    std::atomic<int> done{0};
    std::function<void(int)> chain = [&](int inLeft) {
        ++done;
        if (inLeft > 0) {
            executor.Post([&chain, inLeft] { chain(inLeft - 1); });
        }
    };
    executor.Post([&chain] { chain(50); });
    executor.Close();
    EXPECT_EQ(done, 51);
    const auto caller = std::this_thread::get_id();
    executor.Post([&] { done = std::this_thread::get_id() == caller ? 1 : 2; });
    EXPECT_EQ(done, 1);
    executor.Close();
}

TEST(AsyncThreadedExecutorDeathTest, TheDefaultOneOutlivesWorkThatPostsAtTheEndOfTheProgram)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto postAndLeave = [] {
        static std::function<void(int)> sChain = [](int inLeft) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            for (int i = 0; i < 2 && inLeft > 0; ++i) {
                async::GetDefaultExecutor()->Post([inLeft] { sChain(inLeft - 1); });
            }
        };
        async::GetDefaultExecutor()->Post([] { sChain(6); });
        std::exit(3);
    };
    EXPECT_EXIT(postAndLeave(), ::testing::ExitedWithCode(3), "");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(AsyncThreadedExecutorDeathTest, WorkThatNoThreadCanBeStartedForIsGivenBackOutsideTheLock)
{
    struct PostsAtItsEnd
    {
        explicit PostsAtItsEnd(AsyncThreadedExecutor& inExecutor) : mExecutor(&inExecutor) {}
        PostsAtItsEnd(PostsAtItsEnd&& ioOther) noexcept : mExecutor(std::exchange(ioOther.mExecutor, nullptr))
        {
        }
        ~PostsAtItsEnd()
        {
            if (mExecutor != nullptr) {
                EXPECT_THROW(mExecutor->Post([] {}), std::system_error);
            }
        }
        void operator()() {}
        AsyncThreadedExecutor* mExecutor;
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto postWithoutMemoryForAStack = [] {
        AsyncThreadedExecutor executor(2);
        alarm(20); // a deadlock ends the child
        const rlimit limit{1, 1};
        setrlimit(RLIMIT_AS, &limit); // what the process has it keeps
        try {
            executor.Post(PostsAtItsEnd(executor));
        } catch (const std::system_error&) {
            _exit(4);
        }
        _exit(5);
    };
    EXPECT_EXIT(postWithoutMemoryForAStack(), ::testing::ExitedWithCode(4), "");
}
#endif

TEST(AsyncThreadedExecutorTest, RefusesEmptyWork)
{
    EXPECT_THROW(CallAsync(CreateSerialExecutor(), nullptr), std::bad_function_call);
    EXPECT_THROW(CallAsync(nullptr, [] {}), std::bad_function_call);
}

TEST(PreTerminationExecutorTest, RunsOnTheHostsRequestInOrderOfPosting)
{
    std::vector<int> ran;
    const unsigned hostThread = GetCurrentThreadID();
    const auto first = CreatePreTerminationExecutor();
    auto second = CreatePreTerminationExecutor();
    EXPECT_EQ(first->GetDegreeOfConcurrency(), 1u);
    first->Post([&] { ran.push_back(1); });
    second->Post([&] {
        EXPECT_EQ(GetCurrentThreadID(), hostThread);
        ran.push_back(2);
        first->Post([&] { ran.push_back(4); });
        EXPECT_EQ(RunPreTerminationWork(), 0u);
        throw std::runtime_error("does not keep the rest from running");
    });
    second.reset();
    first->Post([&] { ran.push_back(3); });
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(RunPreTerminationWork(), 4u);
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(RunPreTerminationWork(), 0u);
}

} // namespace

} // namespace ombrel::threads
