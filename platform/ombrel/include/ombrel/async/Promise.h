#pragma once

#include <exception>
#include <memory>
#include <utility>

#include <ombrel/async/Future.h>

namespace ombrel::async {

/// The writing end of a future: its owner keeps it once, with a value or an exception. All setters may be
/// called on any thread, also by several at once, of which the first wins.
///
/// Keeping it runs the inline continuations of the future before the setter returns, unless this thread is
/// inside such a continuation already: then they run behind that one. A promise that is destroyed, or
/// assigned over, before it was kept gives its future `BrokenPromiseException`. A moved-from promise is
/// empty: it may only be destroyed or assigned to.
template <class T>
class Promise
{
public:
    Promise() : mState(std::make_shared<details::FutureState<T>>()) {}
    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&& ioOther) noexcept
    {
        if (this != &ioOther) {
            Break();
            mState = std::move(ioOther.mState);
        }
        return *this;
    }
    ~Promise() { Break(); }

    /// The reading end. Every call gives one for the same result.
    Future<T> GetFuture() const { return details::FutureAccess::Make<Future<T>>(mState); }

    /// Stores a value made from the arguments (none for `void`). If making it throws, the future gets that
    /// exception. Throws `InvalidFutureException` if the promise was kept already.
    template <class... Arguments>
    void SetValue(Arguments&&... inArguments)
    {
        if (!TrySetValue(std::forward<Arguments>(inArguments)...)) {
            details::ThrowPromiseKeptTwice();
        }
    }

    /// Stores an exception, which must not be null. Throws like `SetValue`.
    void SetException(std::exception_ptr inException)
    {
        if (!TrySetException(std::move(inException))) {
            details::ThrowPromiseKeptTwice();
        }
    }

    /// As the setters above, but false instead of an exception if the promise was kept already.
    template <class... Arguments>
    bool TrySetValue(Arguments&&... inArguments)
    {
        if (!mState->Claim()) {
            return false;
        }
        try {
            mState->StoreValue(std::forward<Arguments>(inArguments)...);
        } catch (...) {
            mState->StoreError(std::current_exception());
        }
        details::FutureStateBase::Complete(mState);
        return true;
    }
    bool TrySetException(std::exception_ptr inException)
    {
        if (!mState->Claim()) {
            return false;
        }
        mState->StoreError(std::move(inException));
        details::FutureStateBase::Complete(mState);
        return true;
    }

private:
    void Break() noexcept
    {
        if (mState && mState->Claim()) {
            mState->StoreError(details::MakeBrokenPromiseError());
            details::FutureStateBase::Complete(mState);
        }
    }

    std::shared_ptr<details::FutureState<T>> mState;
};

/// A future that is done already, with a value of type `T` made from the arguments.
template <class T, class... Arguments>
Future<T> MakeReadyFuture(Arguments&&... inArguments)
{
    Promise<T> promise;
    promise.SetValue(std::forward<Arguments>(inArguments)...);
    return promise.GetFuture();
}

/// A future that is done already, with an exception.
template <class T>
Future<T> MakeFailedFuture(std::exception_ptr inException)
{
    Promise<T> promise;
    promise.SetException(std::move(inException));
    return promise.GetFuture();
}

} // namespace ombrel::async
