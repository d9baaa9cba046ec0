#pragma once

#include <atomic>
#include <chrono>
#include <concepts>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <ratio>
#include <type_traits>
#include <utility>
#include <variant>

#include <ombrel/Export.h>
#include <ombrel/threads/AsyncExecutor.h>

/// What futures and promises share. Use it through `Future` and `Promise`.
namespace ombrel::async::details {

class FutureStateBase;

/// A step that waits for a future to be done. It runs once, on its executor or, without one, where the future
/// was completed.
class OMBREL_EXPORT Continuation
{
public:
    explicit Continuation(std::shared_ptr<threads::AsyncExecutor> inExecutor) noexcept;
    Continuation(const Continuation&) = delete;
    Continuation& operator=(const Continuation&) = delete;
    virtual ~Continuation();

protected:
    /// The step itself. It must not throw.
    virtual void Run(const std::shared_ptr<FutureStateBase>& inSource) noexcept = 0;

    /// False if there is nothing to do on the executor and `Run` may be called anywhere.
    virtual bool NeedsExecutor(const FutureStateBase& inSource) const noexcept = 0;

private:
    friend class FutureStateBase;
    class InlineRunner;

    static void Start(std::unique_ptr<Continuation> inStep,
                      std::shared_ptr<FutureStateBase> inSource) noexcept;

    std::shared_ptr<threads::AsyncExecutor> mExecutor;
    std::shared_ptr<FutureStateBase> mSource;
    std::unique_ptr<Continuation> mNext;
};

/// The part of the shared state that does not depend on the type of the result: pending, then done for good
/// with a result or an error.
class OMBREL_EXPORT FutureStateBase
{
public:
    FutureStateBase() = default;
    FutureStateBase(const FutureStateBase&) = delete;
    FutureStateBase& operator=(const FutureStateBase&) = delete;

    bool IsDone() const noexcept { return mDone.load(std::memory_order_acquire); }

    /// Null while pending and after success.
    std::exception_ptr GetError() const noexcept { return IsDone() ? mError : nullptr; }
    bool HasError() const noexcept { return IsDone() && mError != nullptr; }

    void Wait() const;
    bool WaitUntil(std::chrono::steady_clock::time_point inTime) const;

    /// True for the first caller, who alone may then store a result or error and call `Complete`.
    bool Claim() noexcept
    {
        return !mClaimed.load(std::memory_order_relaxed) &&
               !mClaimed.exchange(true, std::memory_order_relaxed);
    }

    void StoreError(std::exception_ptr inError) noexcept { mError = std::move(inError); }

    /// Publishes what was stored, wakes those who wait and starts the continuations in the order in which
    /// they were attached.
    static void Complete(const std::shared_ptr<FutureStateBase>& inState) noexcept;

    static void Attach(const std::shared_ptr<FutureStateBase>& inState, std::unique_ptr<Continuation> inStep);

protected:
    ~FutureStateBase();

private:
    std::atomic<bool> mDone{false};
    std::atomic<bool> mClaimed{false};
    mutable unsigned mWaiting = 0;
    std::exception_ptr mError;
    mutable std::mutex mMutex;
    mutable std::condition_variable mCompleted;
    std::unique_ptr<Continuation> mFirst;
    Continuation* mLast = nullptr;
};

/// A void result is stored as this.
template <class T>
using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

template <class T>
class FutureState final : public FutureStateBase
{
public:
    template <class... Arguments>
    void StoreValue(Arguments&&... inArguments)
    {
        mValue.emplace(std::forward<Arguments>(inArguments)...);
    }

    /// Only after success.
    Stored<T>& GetValue() noexcept { return *mValue; }

private:
    std::optional<Stored<T>> mValue;
};

[[noreturn]] OMBREL_EXPORT void ThrowPromiseKeptTwice();
OMBREL_EXPORT std::exception_ptr MakeBrokenPromiseError() noexcept;

/// The length of time in nanoseconds. Lengths beyond what the integer can count give its largest or smallest
/// value, NaN gives 0; fractions of a nanosecond are cut off.
template <class Rep, class Period>
constexpr std::int64_t DurationToInteger(const std::chrono::duration<Rep, Period>& inDuration)
{
    using Limits = std::numeric_limits<std::int64_t>;
    using PerNano = std::ratio_divide<Period, std::nano>;
    const auto nanoseconds = static_cast<long double>(inDuration.count()) * PerNano::num / PerNano::den;
    if (nanoseconds != nanoseconds) {
        return 0;
    }
    if (nanoseconds >= static_cast<long double>(Limits::max())) {
        return Limits::max();
    }
    if (nanoseconds <= static_cast<long double>(Limits::min())) {
        return Limits::min();
    }
    if constexpr (std::integral<Rep>) {
        // In whole numbers and exactly. The products of 64-bit figures need twice the width.
        __extension__ using Wide = __int128;
        return static_cast<std::int64_t>(static_cast<Wide>(inDuration.count()) * PerNano::num / PerNano::den);
    } else {
        return static_cast<std::int64_t>(nanoseconds);
    }
}

/// The moment that is `inDuration` from now; the end of time if the clock does not reach so far.
template <class Rep, class Period>
std::chrono::steady_clock::time_point DeadlineAfter(const std::chrono::duration<Rep, Period>& inDuration)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point now = Clock::now();
    const std::chrono::nanoseconds length(DurationToInteger(inDuration));
    return length >= Clock::time_point::max() - now ? Clock::time_point::max() : now + length;
}

} // namespace ombrel::async::details
