#include <ombrel/async/Submit.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>
#include <ombrel/threads/ThreadID.h>

#include <atomic>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace ombrel::async {

namespace {

using namespace std::chrono_literals;

TEST(FutureTest, CopiesSeeTheSameResultAndOnlyTheFirstSetCounts)
{
    Promise<std::string> promise;
    const Future<std::string> first = promise.GetFuture();
    const Future<std::string> second = first; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_FALSE(first.IsDone());
    EXPECT_FALSE(first.HasFailed());
    EXPECT_FALSE(first.WaitFor(1ms));
    promise.SetValue(3, 'a');
    EXPECT_FALSE(promise.TrySetValue("b"));
    EXPECT_THROW(promise.SetException(std::make_exception_ptr(1)), InvalidFutureException);
    EXPECT_TRUE(second.HasSucceeded());
    EXPECT_EQ(&first.Get(), &second.Get());
    EXPECT_EQ(second.Get(), "aaa");
    EXPECT_EQ(MakeReadyFuture<std::string>("c").Get(), "c");
    EXPECT_THROW(Future<int>().Get(), InvalidFutureException);
    EXPECT_THROW(UntypedFuture().IsDone(), InvalidFutureException);
}

TEST(FutureTest, ADroppedPromiseIsBroken)
{
    Promise<void> promise;
    const Future<void> dropped = promise.GetFuture();
    promise = Promise<void>();
    EXPECT_THROW(dropped.Get(), BrokenPromiseException);
    const Future<void> last = Promise<void>(std::move(promise)).GetFuture();
    EXPECT_THROW(last.Get(), BrokenPromiseException);
    EXPECT_NE(last.GetException(), nullptr);
}

TEST(FutureTest, AValueThatCannotBeMadeIsAnException)
{
    struct Fussy
    {
        explicit Fussy(int) { throw std::domain_error("fussy"); }
    };
    Promise<Fussy> promise;
    promise.SetValue(1);
    EXPECT_THROW(promise.GetFuture().Take(), std::domain_error);
}

TEST(FutureTest, TimedWaitsEndInTimeAndTakeAnyLength)
{
    Promise<int> promise;
    const Future<int> future = promise.GetFuture();
    const auto now = std::chrono::steady_clock::now();
    EXPECT_FALSE(WaitForUntypedUntil(future, now - 1h));
    EXPECT_FALSE(WaitForUntypedUntil(future, std::chrono::steady_clock::time_point::min()));
    EXPECT_FALSE(WaitForUntypedUntil(future, now + 2ms));
    EXPECT_GE(std::chrono::steady_clock::now(), now + 2ms);
    EXPECT_FALSE(future.WaitFor(-1s));
    EXPECT_FALSE(future.WaitFor(std::chrono::hours::min()));
    std::vector<std::thread> waiting;
    waiting.emplace_back([=] { EXPECT_TRUE(future.WaitFor(std::chrono::hours::max())); });
    waiting.emplace_back([=] { EXPECT_TRUE(future.WaitFor(std::chrono::duration<double>(1e300))); });
    waiting.emplace_back([=] { EXPECT_TRUE(future.WaitFor(1h)); });
    waiting.emplace_back([=] { future.Wait(); });
    std::this_thread::sleep_for(2ms);
    promise.SetValue(1);
    for (std::thread& thread : waiting)
        thread.join();
}

TEST(FutureTest, DurationToIntegerCountsNanosecondsAndSaturates)
{
    using details::DurationToInteger;
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(DurationToInteger(3ms), 3'000'000);
    EXPECT_EQ(DurationToInteger(-3us), -3'000);
    EXPECT_EQ(DurationToInteger(std::chrono::duration<double, std::micro>(1.5)), 1'500);
    EXPECT_EQ(DurationToInteger(std::chrono::nanoseconds::max() - 1ns), Limits::max() - 1);
    EXPECT_EQ(DurationToInteger(std::chrono::hours::max()), Limits::max());
    EXPECT_EQ(DurationToInteger(std::chrono::hours::min()), Limits::min());
    EXPECT_EQ(DurationToInteger(std::chrono::duration<double>(std::numeric_limits<double>::quiet_NaN())), 0);
}

TEST(FutureTest, DurationToIntegerIsExactForTicksOfAnyLength)
{
    using MediaTicks = std::chrono::duration<std::int64_t, std::ratio<1, 254016000000>>;
    EXPECT_EQ(details::DurationToInteger(MediaTicks(254016000000)), 1000000000);
    EXPECT_EQ(details::DurationToInteger(MediaTicks(std::numeric_limits<std::int64_t>::max())),
              36310201077313144); // 2^63 - 1 ticks, of which 254.016 make a nanosecond
    EXPECT_EQ(details::DurationToInteger(MediaTicks(-255)), -1);
    EXPECT_EQ(details::DurationToInteger(std::chrono::hours(1) * 2562047), 9223369200000000000);
    EXPECT_EQ(details::DurationToInteger(std::chrono::hours(2562048)),
              std::numeric_limits<std::int64_t>::max());
}

template <class T>
concept GivesItsValueAsATemporary = requires(Future<T> inFuture)
{
    std::move(inFuture).Get();
};
static_assert(GivesItsValueAsATemporary<int> && GivesItsValueAsATemporary<void>);
static_assert(!GivesItsValueAsATemporary<std::unique_ptr<int>>);

TEST(ContinuationTest, ResultsAndExceptionsGoThroughEveryStage)
{
    const auto executor = threads::CreateSerialExecutor();
    for (const bool inlineSteps : {true, false}) {
        const auto where = inlineSteps ? nullptr : executor;
        const auto run = [&](Future<int> inStart) {
            return inStart.OnSuccess(where, [](int inValue) { return std::to_string(inValue); })
                .OnSuccess(where,
                           [](const std::string& inText) {
                               if (inText == "13")
                                   throw std::out_of_range("unlucky");
                               return std::make_unique<std::string>(inText + "!");
                           })
                .OnCompletion(where,
                              [](Future<std::unique_ptr<std::string>>& ioFuture) {
                                  return ioFuture.HasFailed() && !ioFuture.GetException() ? nullptr
                                                                                          : ioFuture.Take();
                              })
                .OnSuccess(where,
                           [](const std::unique_ptr<std::string>& inText) { EXPECT_EQ(*inText, "7!"); });
        };
        EXPECT_NO_THROW(run(MakeReadyFuture<int>(7)).Get());
        EXPECT_THROW(run(MakeReadyFuture<int>(13)).Get(), std::out_of_range);
        const auto broken = [] { return Promise<int>().GetFuture(); }();
        EXPECT_THROW(run(broken).Get(), BrokenPromiseException);
        const auto failed = MakeFailedFuture<int>(std::make_exception_ptr(std::length_error("")));
        EXPECT_THROW(run(failed).Get(), std::length_error);
        const UntypedFuture untyped = failed;
        EXPECT_TRUE(
            untyped.OnCompletion(where, [](const UntypedFuture& in) { return in.HasFailed(); }).Get());
    }
}

TEST(ContinuationTest, RunsOnItsExecutorOrWhereTheFutureIsCompleted)
{
    const auto executor = threads::CreateSerialExecutor();
    const auto threadOf = [](auto&&...) { return threads::GetCurrentThreadID(); };
    const unsigned own = threads::GetCurrentThreadID();
    const unsigned elsewhere = Submit(executor, threadOf).Get();
    EXPECT_NE(elsewhere, own);
    EXPECT_EQ(MakeReadyFuture<void>().OnSuccess(threadOf).Get(), own);
    EXPECT_EQ(MakeReadyFuture<void>().OnSuccess(executor, threadOf).Get(), elsewhere);
    EXPECT_EQ(MakeReadyFuture<void>().OnCompletion(executor, threadOf).Get(), elsewhere);
    Promise<void> promise;
    const auto inlineStep = promise.GetFuture().OnSuccess(threadOf);
    CallAsync(executor, [&] { promise.SetValue(); });
    EXPECT_EQ(inlineStep.Get(), elsewhere);
}

TEST(ContinuationTest, AFutureThatAFunctionReturnsIsTheResult)
{
    Promise<std::unique_ptr<int>> inner;
    const Future<void> start = MakeReadyFuture<void>();
    Future<std::unique_ptr<int>> outer = start.OnSuccess([&] { return inner.GetFuture(); });
    EXPECT_FALSE(outer.IsDone());
    inner.SetValue(std::make_unique<int>(5));
    EXPECT_EQ(*outer.Take(), 5);
    EXPECT_THROW(start.OnSuccess([] { return Future<int>(); }).Get(), InvalidFutureException);
    EXPECT_THROW(start.OnSuccess([] { return Promise<int>().GetFuture(); }).Get(), BrokenPromiseException);
    const auto executor = threads::CreateSerialExecutor();
    EXPECT_EQ(Submit(executor, [&] { return Submit(executor, [] { return 9; }); }).Get(), 9);
}

TEST(ContinuationTest, AnExecutorThatRefusesOrDropsWorkBreaksThePromise)
{
    class BadExecutor : public threads::AsyncExecutor
    {
    public:
        explicit BadExecutor(bool inRefuses) : mRefuses(inRefuses) {}
        void Post(threads::Task) override
        {
            if (mRefuses)
                throw std::bad_alloc();
        }
        unsigned GetDegreeOfConcurrency() const override { return 1; }

    private:
        const bool mRefuses;
    };
    for (const bool refuses : {true, false}) {
        const auto executor = std::make_shared<BadExecutor>(refuses);
        EXPECT_THROW(MakeReadyFuture<int>(1).OnSuccess(executor, [](int) {}).Get(), BrokenPromiseException);
    }
    EXPECT_THROW(Submit(std::make_shared<BadExecutor>(true), [] {}), std::bad_alloc);
    EXPECT_THROW(Submit(nullptr, [] {}), std::bad_function_call);
}

TEST(ContinuationTest, LongChainsAndLoopsDoNotGrowTheStack)
{
    constexpr int kStages = 100000;
    Promise<int> promise;
    Promise<int> broken;
    Future<int> chain = promise.GetFuture();
    Future<int> brokenChain = broken.GetFuture();
    for (int i = 0; i < kStages; ++i) {
        chain = chain.OnSuccess([](int inValue) { return inValue + 1; });
        brokenChain = brokenChain.OnSuccess([](int inValue) { return inValue; });
    }
    promise.SetValue(0);
    EXPECT_EQ(chain.Get(), kStages);
    broken = Promise<int>();
    EXPECT_THROW(brokenChain.Get(), BrokenPromiseException);

    std::function<Future<int>(int)> countDown = [&](int inLeft) -> Future<int> {
        if (inLeft == 0)
            return MakeReadyFuture<int>(42);
        return MakeReadyFuture<int>(inLeft - 1).OnSuccess(countDown);
    };
    EXPECT_EQ(countDown(kStages).Get(), 42);
}

TEST(ContinuationTest, InlineContinuationsRunInOrderOneAfterTheOther)
{
    Promise<void> first;
    Promise<void> second;
    std::string order;
    second.GetFuture().OnSuccess([&] { order += "c"; });
    first.GetFuture().OnSuccess([&] {
        second.SetValue();
        order += "a";
    });
    first.GetFuture().OnSuccess([&] { order += "d"; });
    second.GetFuture().OnSuccess([&] { order += "e"; });
    first.SetValue();
    EXPECT_EQ(order, "aced");
}

TEST(FutureStressTest, NothingIsLostBetweenSettersWaitersAndContinuations)
{
    const auto pool = std::make_shared<threads::AsyncThreadedExecutor>(3);
    std::atomic<int> continued{0};
    std::atomic<int> won{0};
    std::atomic<int> ran{0};
    constexpr int kRounds = 1500;
    for (int round = 0; round < kRounds; ++round) {
        auto promise = std::make_shared<Promise<int>>();
        const Future<int> future = promise->GetFuture();
        for (int setter = 0; setter < 2; ++setter)
            pool->Post([promise, setter, &won, &ran] {
                won += promise->TrySetValue(setter) ? 1 : 0;
                ++ran;
            });
        const auto direct = future.OnSuccess([&](int) { ++continued; });
        const auto posted = future.OnCompletion(pool, [&](const Future<int>& inFuture) {
            EXPECT_TRUE(inFuture.IsDone());
            ++continued;
        });
        EXPECT_LE(future.Get(), 1);
        posted.Wait();
        direct.Wait();
    }
    while (ran.load() < 2 * kRounds) {
        std::this_thread::yield(); // a setter counts its win behind the value that this thread waited for
    }
    EXPECT_EQ(continued.load(), 2 * kRounds);
    EXPECT_EQ(won.load(), kRounds);
}

} // namespace

} // namespace ombrel::async
