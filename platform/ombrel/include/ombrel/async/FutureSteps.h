#pragma once

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

#include <ombrel/async/Promise.h>

/// The machinery of the continuations that `Future.h` describes.
namespace ombrel::async {

namespace details {

/// Hands the outcome of a future that a function returned on to the promise of that function's result.
template <class T>
class ForwardStep final : public Continuation
{
public:
    explicit ForwardStep(Promise<T>&& ioPromise) noexcept
        : Continuation(nullptr), mPromise(std::move(ioPromise))
    {
    }

private:
    void Run(const std::shared_ptr<FutureStateBase>& inSource) noexcept override
    {
        auto& source = static_cast<FutureState<T>&>(*inSource);
        if (source.HasError()) {
            mPromise.TrySetException(source.GetError());
        } else if constexpr (std::is_void_v<T>) {
            mPromise.TrySetValue();
        } else if constexpr (std::copy_constructible<T>) {
            mPromise.TrySetValue(std::as_const(source.GetValue()));
        } else {
            mPromise.TrySetValue(std::move(source.GetValue()));
        }
    }
    bool NeedsExecutor(const FutureStateBase&) const noexcept override { return false; }

    Promise<T> mPromise;
};

/// Keeps the promise with what the function returns or throws. The promise may be moved from.
template <class T, class Function>
void KeepWith(Promise<T>& ioPromise, Function&& inFunction) noexcept
{
    using Result = decltype(inFunction());
    try {
        if constexpr (FutureValue<std::remove_cvref_t<Result>>::kIsFuture) {
            const auto inner = inFunction();
            const std::shared_ptr<FutureStateBase>& state = FutureAccess::GetState(inner);
            FutureStateBase::Attach(state, std::make_unique<ForwardStep<T>>(std::move(ioPromise)));
        } else if constexpr (std::is_void_v<Result>) {
            inFunction();
            ioPromise.TrySetValue();
        } else {
            ioPromise.TrySetValue(inFunction());
        }
    } catch (...) {
        ioPromise.TrySetException(std::current_exception());
    }
}

/// Runs the function with the value; an error goes past it.
template <class T, class Result, class Function>
class SuccessStep final : public Continuation
{
public:
    template <class Given>
    SuccessStep(std::shared_ptr<threads::AsyncExecutor> inExecutor, Given&& inFunction)
        : Continuation(std::move(inExecutor)), mFunction(std::forward<Given>(inFunction))
    {
    }

    Future<Result> GetFuture() const { return mPromise.GetFuture(); }

private:
    void Run(const std::shared_ptr<FutureStateBase>& inSource) noexcept override
    {
        auto& source = static_cast<FutureState<T>&>(*inSource);
        if (source.HasError()) {
            mPromise.TrySetException(source.GetError());
        } else {
            KeepWith(mPromise, [&]() -> decltype(auto) { return InvokeWithValue<T>(mFunction, source); });
        }
    }
    bool NeedsExecutor(const FutureStateBase& inSource) const noexcept override
    {
        return !inSource.HasError();
    }

    Function mFunction;
    Promise<Result> mPromise;
};

/// Runs the function with the future itself.
template <class Source, class Result, class Function>
class CompletionStep final : public Continuation
{
public:
    template <class Given>
    CompletionStep(std::shared_ptr<threads::AsyncExecutor> inExecutor, Given&& inFunction)
        : Continuation(std::move(inExecutor)), mFunction(std::forward<Given>(inFunction))
    {
    }

    Future<Result> GetFuture() const { return mPromise.GetFuture(); }

private:
    void Run(const std::shared_ptr<FutureStateBase>& inSource) noexcept override
    {
        auto source = FutureAccess::Make<Source>(inSource);
        KeepWith(mPromise, [&]() -> decltype(auto) { return std::invoke(mFunction, source); });
    }
    bool NeedsExecutor(const FutureStateBase&) const noexcept override { return true; }

    Function mFunction;
    Promise<Result> mPromise;
};

/// Attaches a step of the given kind and returns the future of its result.
template <class Step, class Function>
auto AttachStep(const UntypedFuture& inFuture, std::shared_ptr<threads::AsyncExecutor>&& inExecutor,
                Function&& inFunction)
{
    const std::shared_ptr<FutureStateBase>& state = FutureAccess::GetState(inFuture);
    auto step = std::make_unique<Step>(std::move(inExecutor), std::forward<Function>(inFunction));
    auto result = step->GetFuture();
    FutureStateBase::Attach(state, std::move(step));
    return result;
}

} // namespace details

template <std::invocable<const UntypedFuture&> Function>
auto UntypedFuture::OnCompletion(std::shared_ptr<threads::AsyncExecutor> inExecutor,
                                 Function&& inFunction) const
{
    using Held = std::remove_cvref_t<Function>;
    using Result = details::FutureValueOf<std::invoke_result_t<Held&, UntypedFuture&>>;
    using Step = details::CompletionStep<UntypedFuture, Result, Held>;
    return details::AttachStep<Step>(*this, std::move(inExecutor), std::forward<Function>(inFunction));
}

template <class T>
template <class Function>
auto Future<T>::OnSuccess(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function&& inFunction) const
{
    using Held = std::remove_cvref_t<Function>;
    using Result = details::FutureValueOf<details::SuccessResult<T, Held>>;
    using Step = details::SuccessStep<T, Result, Held>;
    return details::AttachStep<Step>(*this, std::move(inExecutor), std::forward<Function>(inFunction));
}

template <class T>
template <std::invocable<Future<T>&> Function>
auto Future<T>::OnCompletion(std::shared_ptr<threads::AsyncExecutor> inExecutor, Function&& inFunction) const
{
    using Held = std::remove_cvref_t<Function>;
    using Result = details::FutureValueOf<std::invoke_result_t<Held&, Future<T>&>>;
    using Step = details::CompletionStep<Future<T>, Result, Held>;
    return details::AttachStep<Step>(*this, std::move(inExecutor), std::forward<Function>(inFunction));
}

template <class T>
details::FutureState<T>& Future<T>::Await() const
{
    Wait();
    if (HasFailed()) {
        std::rethrow_exception(GetException());
    }
    return static_cast<details::FutureState<T>&>(GetState());
}

template <class T>
details::ConstReference<T> Future<T>::Get() const&
{
    if constexpr (std::is_void_v<T>) {
        Await();
    } else {
        return Await().GetValue();
    }
}

template <class T>
T Future<T>::Get() const&& requires(std::is_void_v<T> || std::copy_constructible<T>)
{
    if constexpr (std::is_void_v<T>) {
        Await();
    } else {
        return std::as_const(Await().GetValue());
    }
}

template <class T>
T Future<T>::Take()
{
    if constexpr (std::is_void_v<T>) {
        Await();
    } else {
        return std::move(Await().GetValue());
    }
}

} // namespace ombrel::async
