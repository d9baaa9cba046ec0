#include <tessaro/async/AudioBufferGenerator.h>

#include <utility>

#include <ombrel/async/Promise.h>
#include <tessaro/async/SequentialGenerator.h>

#include "async/CopyFrames.h"

namespace tessaro::async {

namespace {

using BufferPtr = std::shared_ptr<AudioBuffer>;
using Range = ombrel::value_range<std::int64_t>;

/// To be asked for one buffer at a time: see `SequentialGenerator`.
class TrimmedAudioBufferGenerator final : public AudioBufferGenerator
{
public:
    TrimmedAudioBufferGenerator(std::shared_ptr<AudioBufferGenerator> inSource, const Range& inRange)
        : mState(std::make_shared<State>(std::move(inSource), inRange))
    {
    }

    ombrel::async::Future<BufferPtr> Next() override
    {
        ombrel::async::Promise<BufferPtr> promise;
        auto future = promise.GetFuture();
        State::Deliver(mState, std::move(promise));
        return future;
    }

    std::shared_ptr<ombrel::threads::AsyncExecutor> Executor() const override
    {
        return mState->mSource->Executor();
    }

private:
    /// Shared with the work in progress, which may outlive the generator.
    struct State
    {
        State(std::shared_ptr<AudioBufferGenerator> inSource, const Range& inRange)
            : mSource(std::move(inSource)), mRange(inRange)
        {
        }

        /// Keeps the promise with the next buffer that has frames inside the range. One promise for all that
        /// are left out on the way, so that a long way leaves no chain of futures behind.
        static void Deliver(const std::shared_ptr<State>& inState,
                            ombrel::async::Promise<BufferPtr> ioPromise)
        {
            if (inState->mRange.IsEmpty() || inState->mPosition >= inState->mRange.GetEnd()) {
                ioPromise.SetException(std::make_exception_ptr(ombrel::async::StopGeneratorException()));
                return;
            }
            ombrel::async::Future<BufferPtr> next;
            try {
                next = inState->mSource->Next();
            } catch (...) {
                ioPromise.SetException(std::current_exception());
                return;
            }
            next.OnCompletion(inState->mSource->Executor(),
                              [state = inState, promise = std::move(ioPromise)](
                                  ombrel::async::Future<BufferPtr>& inNext) mutable {
                                  Receive(state, inNext, std::move(promise));
                              });
        }

        static void Receive(const std::shared_ptr<State>& inState,
                            const ombrel::async::Future<BufferPtr>& inNext,
                            ombrel::async::Promise<BufferPtr> ioPromise)
        {
            BufferPtr buffer;
            try {
                buffer = inState->Trim(inNext.Get());
            } catch (...) {
                ioPromise.SetException(std::current_exception());
                return;
            }
            if (buffer != nullptr) {
                ioPromise.SetValue(std::move(buffer));
            } else {
                Deliver(inState, std::move(ioPromise));
            }
        }

        /// Null when no frame lies inside the range.
        BufferPtr Trim(const BufferPtr& inBuffer)
        {
            const std::int64_t frames = inBuffer != nullptr ? inBuffer->GetBufferSize() : 0;
            const Range inside = mRange.Intersect({mPosition, mPosition + frames});
            const std::int64_t start = inside.GetStart() - mPosition;
            mPosition += frames;
            if (inside.GetLength() == frames) {
                return frames > 0 ? inBuffer : nullptr;
            }
            return inside.IsEmpty() ? nullptr : CopyFrames(*inBuffer, start, inside.GetLength());
        }

        std::shared_ptr<AudioBufferGenerator> mSource;
        const Range mRange;
        std::int64_t mPosition = 0;
    };

    std::shared_ptr<State> mState;
};

} // namespace

std::shared_ptr<AudioBufferGenerator>
TrimAudioBufferGenerator(const std::shared_ptr<AudioBufferGenerator>& inSource, const Range& inRange)
{
    return std::make_shared<SequentialGenerator<BufferPtr>>(
        std::make_shared<TrimmedAudioBufferGenerator>(inSource, inRange));
}

} // namespace tessaro::async
