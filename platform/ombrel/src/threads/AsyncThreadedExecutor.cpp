#include <ombrel/threads/AsyncThreadedExecutor.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <pthread.h>
#endif

#include "threads/RunTask.h"
#include "threads/TaskQueue.h"

namespace ombrel::threads {

namespace {

thread_local bool sIsExecutorThread = false;

void NameThisThread([[maybe_unused]] const std::string& inName)
{
#if defined(__linux__)
    constexpr std::size_t kLongestName = 15;
    pthread_setname_np(pthread_self(), inName.substr(0, kLongestName).c_str());
#endif
}

} // namespace

class AsyncThreadedExecutor::Pool
{
public:
    Pool(unsigned inThreadCount, const std::string& inName) : mThreadCount(inThreadCount), mName(inName) {}

    unsigned GetThreadCount() const { return mThreadCount; }

    static void Post(const std::shared_ptr<Pool>& inPool, Task&& ioWork)
    {
        Task notTaken; // destroyed when the lock is gone, since a task's end may post again
        std::unique_lock lock(inPool->mMutex);
        if (inPool->mClosed && inPool->mRunningThreads == 0) {
            lock.unlock();
            RunTask(std::move(ioWork));
            return;
        }
        inPool->mQueue.Push(std::move(ioWork));
        // With more work than idle threads each of those has been woken already.
        const bool allAreBusy = inPool->mQueue.GetSize() > inPool->mIdleThreads;
        if (allAreBusy && !inPool->mClosed && inPool->mRunningThreads < inPool->mThreadCount) {
            try {
                inPool->mThreads.emplace_back([inPool] { inPool->Work(); });
                ++inPool->mRunningThreads;
            } catch (...) {
                // With other threads alive the work gets its turn later.
                if (inPool->mRunningThreads == 0) {
                    notTaken = inPool->mQueue.TakeLast();
                    throw;
                }
            }
        }
        lock.unlock();
        if (!allAreBusy) {
            inPool->mWorkArrived.notify_one();
        }
    }

    /// Lets the threads end when the queue is empty, and hands them over to be waited for or let go.
    std::vector<std::thread> Close()
    {
        std::lock_guard lock(mMutex);
        mClosed = true;
        mWorkArrived.notify_all();
        return std::move(mThreads);
    }

private:
    void Work()
    {
        sIsExecutorThread = true;
        NameThisThread(mName);
        TaskQueue batch;
        while (TakeBatch(batch)) {
            while (!batch.IsEmpty()) {
                RunTask(batch.Pop());
            }
            batch.Trim();
        }
    }

    /// Waits for work; false when the pool is closed and none is left. A lone thread takes all there is,
    /// which saves it the lock for each piece; several take one each so that none sits on work for another.
    bool TakeBatch(TaskQueue& ioBatch)
    {
        std::unique_lock lock(mMutex);
        ++mIdleThreads;
        mWorkArrived.wait(lock, [this] { return !mQueue.IsEmpty() || mClosed; });
        --mIdleThreads;
        if (mQueue.IsEmpty()) {
            --mRunningThreads;
            return false;
        }
        if (mThreadCount == 1) {
            ioBatch.Swap(mQueue);
            return true;
        }
        ioBatch.Push(mQueue.Pop());
        return true;
    }

    const unsigned mThreadCount;
    const std::string mName;
    std::mutex mMutex;
    std::condition_variable mWorkArrived;
    TaskQueue mQueue;
    std::vector<std::thread> mThreads;
    std::size_t mRunningThreads = 0;
    std::size_t mIdleThreads = 0;
    bool mClosed = false;
};

AsyncThreadedExecutor::AsyncThreadedExecutor(unsigned inThreadCount, const std::string& inName)
    : mPool(std::make_shared<Pool>(
          inThreadCount > 0 ? inThreadCount : std::max(1u, std::thread::hardware_concurrency()), inName))
{
}

AsyncThreadedExecutor::~AsyncThreadedExecutor()
{
    Close();
}

void AsyncThreadedExecutor::Close()
{
    for (std::thread& thread : mPool->Close()) {
        if (sIsExecutorThread) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void AsyncThreadedExecutor::Post(Task inWork)
{
    Pool::Post(mPool, std::move(inWork));
}

unsigned AsyncThreadedExecutor::GetDegreeOfConcurrency() const
{
    return mPool->GetThreadCount();
}

} // namespace ombrel::threads
