#pragma once

#include <memory>
#include <string>

#include <ombrel/Export.h>
#include <ombrel/threads/AsyncExecutor.h>

namespace ombrel::threads {

/// A pool of threads that share one queue: work starts in the order of posting, on whichever thread is free.
///
/// Threads are started as work calls for them, up to the given count, and live as long as the executor.
///
/// The end: the destructor lets all posted work finish and waits for it, with one exception. On a thread that
/// belongs to any executor it does not wait, as that could be a wait for itself; the queue is then finished
/// by the pool's threads in the background. So the last reference may be dropped anywhere, also inside work.
/// Work that goes on for long needs its own way of being told to stop.
class OMBREL_EXPORT AsyncThreadedExecutor : public AsyncExecutor
{
public:
    /// `inThreadCount` 0 takes one thread for each processor. `inName` shows up as the threads' name in
    /// debuggers, which cut it to 15 characters.
    explicit AsyncThreadedExecutor(unsigned inThreadCount = 0, const std::string& inName = "ombrel-pool");
    ~AsyncThreadedExecutor() override;

    /// What is posted after `Close` is done by the threads that are still busy with earlier work, or, when
    /// there are none left, at once on the calling thread.
    void Post(Task inWork) override;

    /// Does what the destructor does, and leaves an executor without threads behind. [control]
    void Close();

    /// The largest number of threads, also while fewer have been started.
    unsigned GetDegreeOfConcurrency() const override;

private:
    class Pool;
    // Shared with the threads, which may outlive the executor.
    std::shared_ptr<Pool> mPool;
};

} // namespace ombrel::threads
