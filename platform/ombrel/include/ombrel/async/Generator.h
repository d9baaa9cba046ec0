#pragma once

#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

#include <ombrel/async/Submit.h>

namespace ombrel::async {

/// A stream of values that are asked for one by one: each `Next` gives the future of one more value, and
/// asking does not wait for it.
///
/// The end of the stream is a future that carries `StopGeneratorException`, and so do all that are asked for
/// behind it. Another exception tells of one failed value.
///
/// `Next` is called by one thread at a time. Several futures may be pending at once; values are made in the
/// order of the calls when the executor's degree of concurrency is 1.
template <class T>
class Generator
{
public:
    using ValueType = T;

    Generator() = default;
    Generator(const Generator&) = delete;
    Generator& operator=(const Generator&) = delete;
    virtual ~Generator() = default;

    virtual Future<T> Next() = 0;

    /// Where the values are made, and where a stage behind this one should do its own work. Never null.
    virtual std::shared_ptr<threads::AsyncExecutor> Executor() const = 0;
};

namespace details {

template <class T>
class FunctionGenerator final : public Generator<T>
{
public:
    FunctionGenerator(std::function<T(unsigned)> inFunction,
                      std::shared_ptr<threads::AsyncExecutor> inExecutor)
        : mStream(std::make_shared<Stream>(std::move(inFunction))), mExecutor(std::move(inExecutor))
    {
    }

    Future<T> Next() override
    {
        return Submit(mExecutor, [stream = mStream, index = mNextIndex++] { return stream->Make(index); });
    }

    std::shared_ptr<threads::AsyncExecutor> Executor() const override { return mExecutor; }

private:
    /// Shared with the work in progress, which may outlive the generator.
    class Stream
    {
    public:
        explicit Stream(std::function<T(unsigned)> inFunction) : mFunction(std::move(inFunction)) {}

        T Make(unsigned inIndex)
        {
            if (inIndex >= mEnd.load(std::memory_order_relaxed)) {
                throw StopGeneratorException();
            }
            try {
                return mFunction(inIndex);
            } catch (const StopGeneratorException&) {
                unsigned end = mEnd.load(std::memory_order_relaxed);
                while (inIndex < end &&
                       !mEnd.compare_exchange_weak(end, inIndex, std::memory_order_relaxed)) {
                }
                throw;
            }
        }

    private:
        std::function<T(unsigned)> mFunction;
        std::atomic<unsigned> mEnd{std::numeric_limits<unsigned>::max()};
    };

    std::shared_ptr<Stream> mStream;
    std::shared_ptr<threads::AsyncExecutor> mExecutor;
    unsigned mNextIndex = 0;
};

} // namespace details

/// A generator whose value number `n`, counted from 0, is what `inFunction(n)` returns on `inExecutor`. The
/// function throws `StopGeneratorException` to end the stream; it is not called for later numbers once it
/// has. It may keep state without a lock if the executor's degree of concurrency is 1. It lives until the
/// last pending call is over. Throws `std::bad_function_call` if either argument is empty.
template <class T>
std::shared_ptr<Generator<T>> CreateFunctionGenerator(std::function<T(unsigned inIndex)> inFunction,
                                                      std::shared_ptr<threads::AsyncExecutor> inExecutor)
{
    if (!inFunction || !inExecutor) {
        throw std::bad_function_call();
    }
    return std::make_shared<details::FunctionGenerator<T>>(std::move(inFunction), std::move(inExecutor));
}

} // namespace ombrel::async
