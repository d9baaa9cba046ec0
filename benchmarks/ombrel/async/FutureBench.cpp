#include <ombrel/async/Submit.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>
#include <ombrel/threads/RecursiveMutex.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include <benchmark/benchmark.h>

namespace {

using ombrel::threads::AsyncExecutor;

/// The peer: one thread, a queue of `std::function` under a mutex, as textbooks have it.
class TextbookQueue
{
public:
    TextbookQueue() : mThread([this] { Run(); }) {}
    ~TextbookQueue()
    {
        Post(nullptr);
        mThread.join();
    }
    void Post(std::function<void()> inWork)
    {
        std::lock_guard lock(mMutex);
        mQueue.push_back(std::move(inWork));
        mArrived.notify_one();
    }

private:
    void Run()
    {
        for (;;) {
            std::unique_lock lock(mMutex);
            mArrived.wait(lock, [this] { return !mQueue.empty(); });
            std::function<void()> work = std::move(mQueue.front());
            mQueue.pop_front();
            lock.unlock();
            if (!work)
                return;
            work();
        }
    }

    std::mutex mMutex;
    std::condition_variable mArrived;
    std::deque<std::function<void()>> mQueue;
    std::thread mThread;
};

constexpr int kBurst = 1000;

/// Posts a burst of work that holds a shared pointer, as most does, and waits for the last piece.
template <class Post>
void RunBursts(benchmark::State& ioState, Post&& inPost)
{
    const auto shared = std::make_shared<long>(0);
    for (auto _ : ioState) {
        std::promise<void> last;
        for (int i = 0; i < kBurst; ++i)
            inPost([shared] { ++*shared; });
        inPost([&last] { last.set_value(); });
        last.get_future().wait();
    }
    ioState.SetItemsProcessed(ioState.iterations() * kBurst);
}

void PostBurst_SerialExecutor(benchmark::State& ioState)
{
    const auto executor = ombrel::threads::CreateSerialExecutor();
    RunBursts(ioState, [&](auto inWork) { executor->Post(std::move(inWork)); });
}
BENCHMARK(PostBurst_SerialExecutor)->UseRealTime();

void PostBurst_TextbookQueue(benchmark::State& ioState)
{
    TextbookQueue queue;
    RunBursts(ioState, [&](auto inWork) { queue.Post(std::move(inWork)); });
}
BENCHMARK(PostBurst_TextbookQueue)->UseRealTime();

/// Work, its result, and the wait for it, one at a time: two switches of threads each.
void RoundTrip_Submit(benchmark::State& ioState)
{
    const auto executor = ombrel::threads::CreateSerialExecutor();
    int value = 0;
    for (auto _ : ioState)
        value = ombrel::async::Submit(executor, [value] { return value + 1; }).Get();
    benchmark::DoNotOptimize(value);
}
BENCHMARK(RoundTrip_Submit)->UseRealTime();

void RoundTrip_PackagedTask(benchmark::State& ioState)
{
    TextbookQueue queue;
    int value = 0;
    for (auto _ : ioState) {
        const auto task = std::make_shared<std::packaged_task<int()>>([value] { return value + 1; });
        queue.Post([task] { (*task)(); });
        value = task->get_future().get();
    }
    benchmark::DoNotOptimize(value);
}
BENCHMARK(RoundTrip_PackagedTask)->UseRealTime();

/// The cost of the shared state alone: set and get on one thread.
void SetAndGet_Promise(benchmark::State& ioState)
{
    for (auto _ : ioState) {
        ombrel::async::Promise<int> promise;
        const auto future = promise.GetFuture();
        promise.SetValue(1);
        benchmark::DoNotOptimize(future.Get());
    }
}
BENCHMARK(SetAndGet_Promise);

void SetAndGet_StdPromise(benchmark::State& ioState)
{
    for (auto _ : ioState) {
        std::promise<int> promise;
        auto future = promise.get_future();
        promise.set_value(1);
        benchmark::DoNotOptimize(future.get());
    }
}
BENCHMARK(SetAndGet_StdPromise);

void InlineContinuation(benchmark::State& ioState)
{
    for (auto _ : ioState) {
        ombrel::async::Promise<int> promise;
        const auto future = promise.GetFuture().OnSuccess([](int inValue) { return inValue + 1; });
        promise.SetValue(1);
        benchmark::DoNotOptimize(future.Get());
    }
}
BENCHMARK(InlineContinuation);

/// What a lock that nobody contends for costs.
void Lock_RecursiveMutex(benchmark::State& ioState)
{
    ombrel::threads::RecursiveMutex mutex("bench");
    for (auto _ : ioState)
        ombrel::threads::RecursiveMutex::ScopedLock lock(mutex, "here");
}
BENCHMARK(Lock_RecursiveMutex);

void Lock_StdRecursiveTimedMutex(benchmark::State& ioState)
{
    std::recursive_timed_mutex mutex;
    for (auto _ : ioState)
        std::lock_guard lock(mutex);
}
BENCHMARK(Lock_StdRecursiveTimedMutex);

} // namespace
