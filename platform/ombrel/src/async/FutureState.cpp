#include <ombrel/async/FutureState.h>

namespace ombrel::async::details {

/// Runs inline continuations one after the other instead of one inside the other, so that a chain of any
/// length needs the stack of one: what becomes due while a continuation runs on this thread waits for it to
/// return.
class Continuation::InlineRunner
{
public:
    static void Run(std::unique_ptr<Continuation> inStep) noexcept
    {
        if (sCurrent) {
            sCurrent->Append(std::move(inStep));
            return;
        }
        InlineRunner runner;
        sCurrent = &runner;
        runner.RunOne(std::move(inStep));
        while (runner.mFirst) {
            std::unique_ptr<Continuation> step = std::move(runner.mFirst);
            runner.mFirst = std::move(step->mNext);
            runner.RunOne(std::move(step));
        }
        sCurrent = nullptr;
    }

private:
    void Append(std::unique_ptr<Continuation> inStep) noexcept
    {
        Continuation* const step = inStep.get();
        (mFirst ? mLast->mNext : mFirst) = std::move(inStep);
        mLast = step;
    }

    /// The step is destroyed here, as that may complete further futures.
    void RunOne(std::unique_ptr<Continuation> inStep) noexcept
    {
        const std::shared_ptr<FutureStateBase> source = std::move(inStep->mSource);
        inStep->Run(source);
    }

    static thread_local InlineRunner* sCurrent;

    std::unique_ptr<Continuation> mFirst;
    Continuation* mLast = nullptr;
};

thread_local Continuation::InlineRunner* Continuation::InlineRunner::sCurrent = nullptr;

Continuation::Continuation(std::shared_ptr<threads::AsyncExecutor> inExecutor) noexcept
    : mExecutor(std::move(inExecutor))
{
}

Continuation::~Continuation() = default;

void Continuation::Start(std::unique_ptr<Continuation> inStep,
                         std::shared_ptr<FutureStateBase> inSource) noexcept
{
    inStep->mSource = std::move(inSource);
    if (!inStep->mExecutor || !inStep->NeedsExecutor(*inStep->mSource)) {
        InlineRunner::Run(std::move(inStep));
        return;
    }
    // Kept here as well: the step may run, and be gone, before the executor returns.
    const std::shared_ptr<threads::AsyncExecutor> executor = std::move(inStep->mExecutor);
    try {
        executor->Post([step = std::move(inStep)] {
            const std::shared_ptr<FutureStateBase> source = std::move(step->mSource);
            step->Run(source);
        });
    } catch (...) {
        // The step went down with the task, and so its own promise is broken: the next stage hears of it.
    }
}

FutureStateBase::~FutureStateBase() = default;

void FutureStateBase::Wait() const
{
    if (IsDone()) {
        return;
    }
    std::unique_lock lock(mMutex);
    ++mWaiting;
    mCompleted.wait(lock, [this] { return IsDone(); });
    --mWaiting;
}

bool FutureStateBase::WaitUntil(std::chrono::steady_clock::time_point inTime) const
{
    if (IsDone()) {
        return true;
    }
    if (inTime == std::chrono::steady_clock::time_point::max()) {
        Wait();
        return true;
    }
    std::unique_lock lock(mMutex);
    ++mWaiting;
    const bool done = mCompleted.wait_until(lock, inTime, [this] { return IsDone(); });
    --mWaiting;
    return done;
}

void FutureStateBase::Complete(const std::shared_ptr<FutureStateBase>& inState) noexcept
{
    std::unique_ptr<Continuation> step;
    bool isAwaited = false;
    {
        std::lock_guard lock(inState->mMutex);
        inState->mDone.store(true, std::memory_order_release);
        step = std::move(inState->mFirst);
        isAwaited = inState->mWaiting > 0;
    }
    if (isAwaited) {
        inState->mCompleted.notify_all();
    }
    while (step) {
        std::unique_ptr<Continuation> next = std::move(step->mNext);
        Continuation::Start(std::move(step), inState);
        step = std::move(next);
    }
}

void FutureStateBase::Attach(const std::shared_ptr<FutureStateBase>& inState,
                             std::unique_ptr<Continuation> inStep)
{
    {
        std::lock_guard lock(inState->mMutex);
        if (!inState->IsDone()) {
            Continuation* const step = inStep.get();
            (inState->mFirst ? inState->mLast->mNext : inState->mFirst) = std::move(inStep);
            inState->mLast = step;
            return;
        }
    }
    Continuation::Start(std::move(inStep), inState);
}

} // namespace ombrel::async::details
