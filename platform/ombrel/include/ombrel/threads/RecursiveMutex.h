#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include <ombrel/Export.h>

namespace ombrel::threads {

/// A named mutex that the thread holding it may lock again, and that can tell who holds it and since which
/// place.
///
///     RecursiveMutex mutex("coefficient cache");
///     ...
///     RecursiveMutex::ScopedLock lock(mutex, "FindInCache");
///
/// Each successful lock is undone by one `Unlock` on the same thread; the last one lets others in. Names and
/// places are kept as pointers, so pass string literals.
///
/// It blocks: nothing here belongs on a real-time thread. A lock that nobody contends for costs about two
/// locks of a plain mutex, a repeated lock of the holder a few loads and stores. Nothing throws. [any thread]
class OMBREL_EXPORT RecursiveMutex
{
public:
    /// What `GetHolder` tells. All zero while the mutex is free.
    struct Holder
    {
        unsigned mThreadID; ///< `GetCurrentThreadID()` of the holder, 0 for none
        const char* mWhere; ///< the place that the outermost lock named
        unsigned mDepth;    ///< how many `Unlock` calls are due
    };

    explicit RecursiveMutex(const char* inName) noexcept;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    /// Waits until the mutex is this thread's. `inWhere` names the caller for diagnostics.
    void Lock(const char* inWhere);

    /// The same with an end to the wait: false if the mutex could not be had within `inTimeout`. A timeout of
    /// 0 or less tries once.
    [[nodiscard]] bool Lock(const char* inWhere, std::chrono::milliseconds inTimeout);

    /// Gives up one lock. Ignored on a thread that does not hold the mutex.
    void Unlock();

    const char* GetName() const noexcept { return mName; }

    /// True if the calling thread holds the mutex; exact.
    bool IsHeldByThisThread() const noexcept;

    /// Who holds the mutex. For diagnostics: unless it is the calling thread, the answer may be out of date,
    /// and its fields may stem from two holders.
    Holder GetHolder() const noexcept;

    /// Holds the mutex for the length of a scope.
    class ScopedLock
    {
    public:
        ScopedLock(RecursiveMutex& ioMutex, const char* inWhere) : mMutex(&ioMutex) { mMutex->Lock(inWhere); }

        /// Waits no longer than `inTimeout`; ask `OwnsLock` how it went.
        ScopedLock(RecursiveMutex& ioMutex, const char* inWhere, std::chrono::milliseconds inTimeout)
            : mMutex(ioMutex.Lock(inWhere, inTimeout) ? &ioMutex : nullptr)
        {
        }

        ScopedLock(const ScopedLock&) = delete;
        ScopedLock& operator=(const ScopedLock&) = delete;

        ~ScopedLock()
        {
            if (mMutex) {
                mMutex->Unlock();
            }
        }

        bool OwnsLock() const noexcept { return mMutex != nullptr; }

    private:
        RecursiveMutex* mMutex;
    };

private:
    bool LockAgain() noexcept;
    void Enter(const char* inWhere) noexcept;
    bool IsFree() const noexcept;

    std::mutex mMutex;
    std::condition_variable mFreed;
    // Written under the mutex or by the holder; read by every thread to see whether it is the holder itself.
    std::atomic<unsigned> mHolder{0};
    std::atomic<unsigned> mDepth{0};
    std::atomic<const char*> mWhere{nullptr};
    const char* mName;
};

} // namespace ombrel::threads
