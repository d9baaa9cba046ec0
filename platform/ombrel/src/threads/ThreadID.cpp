#include <ombrel/threads/ThreadID.h>

#include <atomic>

namespace ombrel::threads {

namespace {

std::atomic<unsigned> sLastThreadID{0};

#if defined(__GNUC__) && !defined(_WIN32)
// The default model of a shared library allocates a thread's block at its first access, which the first call
// of a real-time thread must not do.
[[gnu::tls_model("initial-exec")]]
#endif
thread_local unsigned sThreadID = 0;

} // namespace

unsigned GetCurrentThreadID() noexcept
{
    while (sThreadID == 0) {
        sThreadID = sLastThreadID.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    return sThreadID;
}

} // namespace ombrel::threads
