#include <tessaro/messaging/CountingSemaphore.h>

#include <cerrno>
#include <cmath>
#include <ctime>

namespace tessaro::threads {

namespace {

/// Longer waits than this, a hundred years, count as endless: the clock's type has an end.
constexpr double kEndless = 100.0 * 365.0 * 86400.0;

timespec GetDeadline(double inSeconds) noexcept
{
    constexpr long kNanosecondsPerSecond = 1'000'000'000;
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    const double wholeSeconds = std::floor(inSeconds);
    deadline.tv_sec += static_cast<std::time_t>(wholeSeconds);
    deadline.tv_nsec += static_cast<long>((inSeconds - wholeSeconds) * kNanosecondsPerSecond);
    if (deadline.tv_nsec >= kNanosecondsPerSecond) {
        deadline.tv_nsec -= kNanosecondsPerSecond;
        ++deadline.tv_sec;
    }
    return deadline;
}

/// Calls until a signal of the operating system no longer gets in between.
template <class Function>
bool Succeeds(Function inCall) noexcept
{
    int result = inCall();
    while (result != 0 && errno == EINTR) {
        result = inCall();
    }
    return result == 0;
}

} // namespace

CountingSemaphore::CountingSemaphore()
{
    sem_init(&mSemaphore, 0, 0);
}

CountingSemaphore::~CountingSemaphore()
{
    sem_destroy(&mSemaphore);
}

void CountingSemaphore::Signal() noexcept
{
    int count = mCount.load(std::memory_order_relaxed);
    do {
        if (count >= kMaximum) {
            return;
        }
    } while (!mCount.compare_exchange_weak(count, count + 1, std::memory_order_release,
                                           std::memory_order_relaxed));
    sem_post(&mSemaphore);
}

bool CountingSemaphore::TimedWait(std::chrono::duration<double> inDuration) noexcept
{
    const bool isTaken = Wait(inDuration);
    if (isTaken) {
        mCount.fetch_sub(1, std::memory_order_acq_rel);
    }
    return isTaken;
}

bool CountingSemaphore::Wait(std::chrono::duration<double> inDuration) noexcept
{
    if (!(inDuration.count() > 0.0)) {
        return Succeeds([this] { return sem_trywait(&mSemaphore); });
    }
    if (inDuration.count() > kEndless) {
        return Succeeds([this] { return sem_wait(&mSemaphore); });
    }
    const timespec deadline = GetDeadline(inDuration.count());
    return Succeeds([this, &deadline] { return sem_clockwait(&mSemaphore, CLOCK_MONOTONIC, &deadline); });
}

} // namespace tessaro::threads
