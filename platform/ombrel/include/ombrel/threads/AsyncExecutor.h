#pragma once

#include <functional>
#include <memory>

#include <ombrel/Export.h>
#include <ombrel/threads/Task.h>

namespace ombrel::threads {

/// A place where work is run later, on some other thread. Executors are shared: whoever posts holds a
/// `std::shared_ptr`.
///
/// All executors of this library promise:
/// - Work starts in the order of posting; as many pieces run at a time as the degree of concurrency says.
/// - Work that was posted is run, even when the last reference to the executor goes before its turn.
/// - An exception that leaves a piece of work is handed to `logging::LogException` and ends nothing else.
/// - Posting never waits for work, and may be done from inside work.
///
/// They lock and allocate, so they are not for real-time threads. [any thread]
class OMBREL_EXPORT AsyncExecutor
{
public:
    AsyncExecutor() = default;
    AsyncExecutor(const AsyncExecutor&) = delete;
    AsyncExecutor& operator=(const AsyncExecutor&) = delete;
    virtual ~AsyncExecutor();

    /// Takes a piece of work, which must not be empty. Throws what taking it raises (out of memory, no thread
    /// to be had), and then has not taken it.
    virtual void Post(Task inWork) = 0;

    /// How many pieces of work may run at the same time: 1 means strictly one after the other, so that work
    /// may keep state without a lock.
    virtual unsigned GetDegreeOfConcurrency() const = 0;
};

/// Posts `inFunction` to `inExecutor`. Throws `std::bad_function_call` when the function is empty or the
/// executor null. To get at the result use `async::Submit`.
OMBREL_EXPORT void CallAsync(const std::shared_ptr<AsyncExecutor>& inExecutor,
                             std::function<void()> inFunction);

/// An executor that runs one piece of work after the other, strictly in the order of posting, on a thread of
/// its own that starts with the first piece. Its degree of concurrency is 1, and its end is that of an
/// `AsyncThreadedExecutor`.
OMBREL_EXPORT std::shared_ptr<AsyncExecutor> CreateSerialExecutor();

/// An executor for what has to be done before the application ends, such as writing out a cache: the work
/// waits until the host calls `RunPreTerminationWork`. All such executors share one list in order of posting,
/// which outlives them; dropping the executor drops no work. The degree of concurrency is 1.
OMBREL_EXPORT std::shared_ptr<AsyncExecutor> CreatePreTerminationExecutor();

/// The host's side: runs, on the calling thread, all work that waits in pre-termination executors, including
/// what that work posts in turn, and returns how many pieces it ran. Called by the host when it begins to
/// shut down, while everything still stands; it may be called again. While another call is under way, on this
/// thread or another, it returns 0 at once. What nobody asked for by the end of the process is dropped.
/// [control]
OMBREL_EXPORT unsigned RunPreTerminationWork();

} // namespace ombrel::threads
