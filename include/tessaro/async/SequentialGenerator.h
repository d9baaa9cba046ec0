#pragma once

#include <memory>
#include <utility>

#include <ombrel/async/Generator.h>

namespace tessaro::async {

/// A generator that asks another one for its next value only when the one before is done, well or not: so the
/// work behind two values never overlaps and needs no lock, however many futures are pending and whatever the
/// executor. A value that can be had at once comes in a future that is done already.
///
/// `Next` is called by one thread at a time; the source's `Next` is then too, on that thread or on the one
/// that completes the value before.
template <class T>
class SequentialGenerator final : public ombrel::async::Generator<T>
{
public:
    /// `inSource` must not be null, and not be used by anybody else.
    explicit SequentialGenerator(std::shared_ptr<ombrel::async::Generator<T>> inSource)
        : mSource(std::move(inSource))
    {
    }

    ombrel::async::Future<T> Next() override
    {
        if (!mLast.IsValid() || mLast.IsDone()) {
            mLast = mSource->Next();
        } else {
            mLast = mLast.OnCompletion(
                [source = mSource](const ombrel::async::UntypedFuture&) { return source->Next(); });
        }
        return mLast;
    }

    std::shared_ptr<ombrel::threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    std::shared_ptr<ombrel::async::Generator<T>> mSource;
    ombrel::async::Future<T> mLast;
};

} // namespace tessaro::async
