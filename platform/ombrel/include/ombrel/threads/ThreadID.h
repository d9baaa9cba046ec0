#pragma once

#include <ombrel/Export.h>

namespace ombrel::threads {

/// A number for the calling thread: never 0, and never given to another thread of this process, not even
/// after this one has ended. It is this library's own count, not the operating system's number.
///
/// One read of thread-local memory, with one atomic addition in a thread's first call. No allocation, no
/// lock, no system call. [any thread] [real-time]
OMBREL_EXPORT unsigned GetCurrentThreadID() noexcept;

} // namespace ombrel::threads
