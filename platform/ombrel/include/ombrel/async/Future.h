#pragma once

#include <chrono>
#include <concepts>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include <ombrel/Export.h>
#include <ombrel/async/AsyncExceptions.h>
#include <ombrel/async/FutureState.h>
#include <ombrel/threads/AsyncExecutor.h>

/// Results that come later.
///
///     Future<Peaks> peaks = Submit(executor, [=] { return FindPeaks(file); });
///     peaks.OnSuccess(uiExecutor, [](const Peaks& inPeaks) { Draw(inPeaks); });
///
/// A `Future` is the reading end and a `Promise` the writing end of one shared result, which is pending at
/// first and then done for good, with a value or with an exception. Futures are cheap to copy and all copies
/// see the same result. A promise that is dropped before it was kept leaves `BrokenPromiseException`.
///
/// Continuations (`OnSuccess`, `OnCompletion`) give a new future for what the given function returns:
/// - An exception of the function is the new future's. An exception of the first future goes past a function
///   that waits for success, unchanged, down to the last stage.
/// - A function that returns a `Future<U>` gives a `Future<U>`, done when that one is. Its value is copied
///   over, or moved where it cannot be copied.
/// - With an executor, the function runs there. Without one it runs inline: on the thread that completes the
///   future, or on the one that attaches the continuation if the future is done already; and if that thread
///   is in the middle of an inline continuation, then right after it. So chains and loops of any length, made
///   of futures that are long done, do not grow the stack. An inline function should be short and must not
///   wait for a future.
/// - Work that an executor refuses or drops breaks the new future's promise.
///
/// Everything here may be used from any thread. It locks and allocates, so not from a real-time thread.
namespace ombrel::async {

template <class T>
class Future;
template <class T>
class Promise;

namespace details {

template <class T>
struct FutureValue
{
    using Type = T;
    static constexpr bool kIsFuture = false;
};
template <class T>
struct FutureValue<Future<T>>
{
    using Type = T;
    static constexpr bool kIsFuture = true;
};

/// The `T` of the `Future<T>` that stands for a function's result.
template <class Result>
using FutureValueOf = typename FutureValue<std::remove_cvref_t<Result>>::Type;

template <class T>
using ConstReference = std::conditional_t<std::is_void_v<T>, void, std::add_lvalue_reference_t<const T>>;

template <class T, class Function>
decltype(auto) InvokeWithValue(Function& ioFunction, FutureState<T>& inState)
{
    if constexpr (std::is_void_v<T>) {
        return std::invoke(ioFunction);
    } else {
        return std::invoke(ioFunction, std::as_const(inState.GetValue()));
    }
}

template <class T, class Function>
using SuccessResult =
    decltype(InvokeWithValue<T>(std::declval<Function&>(), std::declval<FutureState<T>&>()));

struct FutureAccess;

} // namespace details

/// What a future is without its value: one can ask how far it is, wait for it, and continue on its
/// completion.
class OMBREL_EXPORT UntypedFuture
{
public:
    /// Stands for no result at all. All but `IsValid` throw `InvalidFutureException` on such a future.
    UntypedFuture() noexcept = default;

    bool IsValid() const noexcept { return mState != nullptr; }

    /// True with a value as well as with an exception.
    bool IsDone() const { return GetState().IsDone(); }
    bool HasSucceeded() const { return IsDone() && !GetState().HasError(); }
    bool HasFailed() const { return GetState().HasError(); }

    /// Null while the future is pending and after success.
    std::exception_ptr GetException() const { return GetState().GetError(); }

    /// Block until the future is done. Not inside a continuation, and not in work on an executor that has to
    /// run the awaited work.
    void Wait() const { GetState().Wait(); }

    /// As `Wait`, but gives up in time and returns false. No length of time is too long.
    template <class Rep, class Period>
    bool WaitFor(const std::chrono::duration<Rep, Period>& inDuration) const
    {
        return WaitUntil(details::DeadlineAfter(inDuration));
    }
    bool WaitUntil(std::chrono::steady_clock::time_point inTime) const
    {
        return GetState().WaitUntil(inTime);
    }

    /// Calls `inFunction` with this future when it is done, well or not. The result is described above.
    template <std::invocable<const UntypedFuture&> Function>
    auto OnCompletion(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function&& inFunction) const;
    template <std::invocable<const UntypedFuture&> Function>
    auto OnCompletion(Function&& inFunction) const
    {
        return OnCompletion(nullptr, std::forward<Function>(inFunction));
    }

protected:
    explicit UntypedFuture(std::shared_ptr<details::FutureStateBase> inState) noexcept
        : mState(std::move(inState))
    {
    }

    details::FutureStateBase& GetState() const
    {
        if (!mState) {
            ThrowInvalid();
        }
        return *mState;
    }
    const std::shared_ptr<details::FutureStateBase>& GetSharedState() const
    {
        GetState();
        return mState;
    }
    [[noreturn]] static void ThrowInvalid();

private:
    friend struct details::FutureAccess;

    std::shared_ptr<details::FutureStateBase> mState;
};

namespace details {

/// Makes futures of a shared state and the other way round.
struct FutureAccess
{
    template <class AnyFuture>
    static AnyFuture Make(std::shared_ptr<FutureStateBase> inState) noexcept
    {
        return AnyFuture(std::move(inState));
    }

    static const std::shared_ptr<FutureStateBase>& GetState(const UntypedFuture& inFuture)
    {
        return inFuture.GetSharedState();
    }
};

} // namespace details

/// A result of type `T`, which may be `void` or a type that can only be moved. See the namespace for the
/// rules.
template <class T>
class Future : public UntypedFuture
{
    static_assert(!std::is_reference_v<T>, "a future holds a value; use a pointer for a reference");

public:
    Future() noexcept = default;

    /// Waits, and gives the value or throws the exception. The reference holds as long as any future of this
    /// result; a temporary future gives a copy instead, and refuses a type that has none: see `Take`.
    details::ConstReference<T> Get() const&;
    T Get() const&& requires(std::is_void_v<T> || std::copy_constructible<T>);
    void Get() const&& requires(!std::is_void_v<T> && !std::copy_constructible<T>) = delete;

    /// Waits, and moves the value out or throws the exception. For a result that has only one reader: whoever
    /// asks afterwards finds what moving left behind.
    T Take();

    /// Calls `inFunction` with the value as `const T&` (with nothing for `void`) on success only.
    template <class Function>
    auto OnSuccess(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function&& inFunction) const;
    template <class Function>
    auto OnSuccess(Function&& inFunction) const
    {
        return OnSuccess(nullptr, std::forward<Function>(inFunction));
    }

    /// Calls `inFunction` with this future when it is done, well or not: the place to handle an error, or to
    /// `Take` a value that cannot be copied.
    template <std::invocable<Future<T>&> Function>
    auto OnCompletion(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function&& inFunction) const;
    template <std::invocable<Future<T>&> Function>
    auto OnCompletion(Function&& inFunction) const
    {
        return OnCompletion(nullptr, std::forward<Function>(inFunction));
    }

private:
    friend struct details::FutureAccess;

    explicit Future(std::shared_ptr<details::FutureStateBase> inState) noexcept
        : UntypedFuture(std::move(inState))
    {
    }

    details::FutureState<T>& Await() const;
};

/// Waits until `inFuture` is done, but not beyond `inTime`; true if it is done.
OMBREL_EXPORT bool WaitForUntypedUntil(const UntypedFuture& inFuture,
                                       std::chrono::steady_clock::time_point inTime);

} // namespace ombrel::async

#include <ombrel/async/FutureSteps.h>
