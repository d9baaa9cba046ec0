#pragma once

#include <atomic>
#include <chrono>

#include <semaphore.h>

#include <tessaro/Export.h>

namespace tessaro::threads {

/// A counter of things to do that threads wait on: one side signals, the other takes signals away and sleeps
/// while there are none. For the workers behind asynchronous code; a real-time thread may signal them.
///
/// Begins at 0 and counts no further than `kMaximum`. A signal beyond that is ignored. [any thread]
class TESSARO_EXPORT CountingSemaphore
{
public:
    static constexpr int kMaximum = 32768;

    CountingSemaphore();
    CountingSemaphore(const CountingSemaphore&) = delete;
    CountingSemaphore& operator=(const CountingSemaphore&) = delete;
    ~CountingSemaphore();

    /// Raises the count by 1 and wakes a thread that waits. No lock and no allocation; one system call if
    /// somebody sleeps. [any thread] [real-time]
    void Signal() noexcept;

    /// Lowers the count by 1 and returns true as soon as that is possible, false if it was not within the
    /// given time. A duration of 0 or less, or NaN, tries once and does not block; no duration is too long.
    [[nodiscard]] bool TimedWait(std::chrono::duration<double> inDuration) noexcept;

private:
    bool Wait(std::chrono::duration<double> inDuration) noexcept;

    // Every signal that a waiting thread has not returned with yet. The count of `mSemaphore` follows it.
    std::atomic<int> mCount{0};
    sem_t mSemaphore;
};

} // namespace tessaro::threads
