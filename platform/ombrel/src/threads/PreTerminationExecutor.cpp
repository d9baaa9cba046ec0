#include <atomic>
#include <deque>
#include <mutex>

#include <ombrel/threads/AsyncExecutor.h>

#include "threads/RunTask.h"

namespace ombrel::threads {

namespace {

class PreTerminationQueue
{
public:
    void Post(Task inWork)
    {
        std::lock_guard lock(mMutex);
        mQueue.push_back(std::move(inWork));
    }

    unsigned Run()
    {
        if (mRunning.exchange(true, std::memory_order_acquire)) {
            return 0;
        }
        unsigned count = 0;
        for (Task work = Take(); work; work = Take(), ++count) {
            RunTask(std::move(work));
        }
        mRunning.store(false, std::memory_order_release);
        return count;
    }

private:
    Task Take()
    {
        std::lock_guard lock(mMutex);
        if (mQueue.empty()) {
            return {};
        }
        Task work = std::move(mQueue.front());
        mQueue.pop_front();
        return work;
    }

    std::mutex mMutex;
    std::atomic<bool> mRunning{false};
    std::deque<Task> mQueue;
};

/// Each executor shares the queue, so that one which outlives the statics of this library still has it.
const std::shared_ptr<PreTerminationQueue>& GetQueue()
{
    static const auto sQueue = std::make_shared<PreTerminationQueue>();
    return sQueue;
}

class PreTerminationExecutor : public AsyncExecutor
{
public:
    void Post(Task inWork) override { mQueue->Post(std::move(inWork)); }
    unsigned GetDegreeOfConcurrency() const override { return 1; }

private:
    std::shared_ptr<PreTerminationQueue> mQueue = GetQueue();
};

} // namespace

std::shared_ptr<AsyncExecutor> CreatePreTerminationExecutor()
{
    return std::make_shared<PreTerminationExecutor>();
}

unsigned RunPreTerminationWork()
{
    return GetQueue()->Run();
}

} // namespace ombrel::threads
