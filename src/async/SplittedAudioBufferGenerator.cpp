#include <tessaro/async/AudioBufferGenerator.h>

#include <utility>

#include <ombrel/async/Promise.h>
#include <ombrel/config/OmbrelException.h>
#include <tessaro/async/SequentialGenerator.h>

#include "async/CopyFrames.h"

namespace tessaro::async {

namespace {

/// To be asked for one slice at a time: see `SequentialGenerator`.
class SplittedAudioBufferGenerator final : public AudioBufferChunkGenerator
{
public:
    SplittedAudioBufferGenerator(std::shared_ptr<AudioBufferChunkGenerator> inSource,
                                 std::int64_t inSplitSize)
        : mSource(std::move(inSource)), mState(std::make_shared<State>(inSplitSize))
    {
    }

    ombrel::async::Future<AudioBufferChunk> Next() override
    {
        if (mState->HasSlice()) {
            return ombrel::async::MakeReadyFuture<AudioBufferChunk>(mState->TakeSlice());
        }
        return mSource->Next().OnSuccess(mSource->Executor(),
                                         [state = mState](const AudioBufferChunk& inChunk) {
                                             state->SetChunk(inChunk);
                                             return state->TakeSlice();
                                         });
    }

    std::shared_ptr<ombrel::threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    /// Shared with the work in progress, which may outlive the generator.
    class State
    {
    public:
        explicit State(std::int64_t inSplitSize) : mSplitSize(inSplitSize) {}

        bool HasSlice() const
        {
            return mBuffer != nullptr && mSplitSize > 0 && mSplitSize <= mBuffer->GetBufferSize() - mPosition;
        }

        AudioBufferChunk TakeSlice()
        {
            const std::int64_t start = mStart + mPosition;
            AudioBufferChunk slice{CopyFrames(*mBuffer, mPosition, mSplitSize), {start, start + mSplitSize}};
            mPosition += mSplitSize;
            return slice;
        }

        /// Keeps the chunk also when it throws, so that what fits can still be had.
        void SetChunk(const AudioBufferChunk& inChunk)
        {
            mBuffer = std::get<0>(inChunk);
            mStart = std::get<1>(inChunk).GetStart();
            mPosition = 0;
            const std::int64_t frames = mBuffer != nullptr ? mBuffer->GetBufferSize() : 0;
            if (frames == 0 || mSplitSize <= 0 || frames % mSplitSize != 0) {
                throw ombrel::ombrel_exception(kResultUnevenSplit);
            }
        }

    private:
        const std::int64_t mSplitSize;
        std::shared_ptr<AudioBuffer> mBuffer;
        std::int64_t mStart = 0;
        std::int64_t mPosition = 0;
    };

    std::shared_ptr<AudioBufferChunkGenerator> mSource;
    std::shared_ptr<State> mState;
};

} // namespace

std::shared_ptr<AudioBufferChunkGenerator>
SplitAudioBufferGenerator(const std::shared_ptr<AudioBufferChunkGenerator>& inSource,
                          const std::int64_t& inSplitSize)
{
    return std::make_shared<SequentialGenerator<AudioBufferChunk>>(
        std::make_shared<SplittedAudioBufferGenerator>(inSource, inSplitSize));
}

} // namespace tessaro::async
