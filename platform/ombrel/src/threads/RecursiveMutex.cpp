#include <ombrel/threads/RecursiveMutex.h>

#include <algorithm>

#include <ombrel/threads/ThreadID.h>

namespace ombrel::threads {

RecursiveMutex::RecursiveMutex(const char* inName) noexcept : mName(inName) {}

void RecursiveMutex::Lock(const char* inWhere)
{
    if (LockAgain()) {
        return;
    }
    std::unique_lock lock(mMutex);
    mFreed.wait(lock, [this] { return IsFree(); });
    Enter(inWhere);
}

bool RecursiveMutex::Lock(const char* inWhere, std::chrono::milliseconds inTimeout)
{
    if (LockAgain()) {
        return true;
    }
    // The clock that sleeps are measured with cannot count every number of milliseconds from now.
    constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24 * 365);
    std::unique_lock lock(mMutex);
    const bool owned = inTimeout.count() <= 0 ? IsFree()
                                              : mFreed.wait_for(lock, std::min(inTimeout, kLongestWait),
                                                                [this] { return IsFree(); });
    if (owned) {
        Enter(inWhere);
    }
    return owned;
}

void RecursiveMutex::Unlock()
{
    if (!IsHeldByThisThread()) {
        return;
    }
    const unsigned depth = mDepth.load(std::memory_order_relaxed) - 1;
    mDepth.store(depth, std::memory_order_relaxed);
    if (depth > 0) {
        return;
    }
    std::lock_guard lock(mMutex);
    mWhere.store(nullptr, std::memory_order_relaxed);
    mHolder.store(0, std::memory_order_relaxed);
    mFreed.notify_one();
}

bool RecursiveMutex::IsHeldByThisThread() const noexcept
{
    // Only this thread ever writes its own number here, so a relaxed read can not be mistaken.
    return mHolder.load(std::memory_order_relaxed) == GetCurrentThreadID();
}

RecursiveMutex::Holder RecursiveMutex::GetHolder() const noexcept
{
    return {mHolder.load(std::memory_order_relaxed), mWhere.load(std::memory_order_relaxed),
            mDepth.load(std::memory_order_relaxed)};
}

bool RecursiveMutex::LockAgain() noexcept
{
    if (!IsHeldByThisThread()) {
        return false;
    }
    mDepth.store(mDepth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return true;
}

bool RecursiveMutex::IsFree() const noexcept
{
    return mHolder.load(std::memory_order_relaxed) == 0;
}

void RecursiveMutex::Enter(const char* inWhere) noexcept
{
    mHolder.store(GetCurrentThreadID(), std::memory_order_relaxed);
    mDepth.store(1, std::memory_order_relaxed);
    mWhere.store(inWhere, std::memory_order_relaxed);
}

} // namespace ombrel::threads
