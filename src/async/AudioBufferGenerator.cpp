#include <tessaro/async/AudioBufferGenerator.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <ombrel/config/OmbrelException.h>
#include <tessaro/async/SequentialGenerator.h>

namespace tessaro::async {

namespace {

std::int64_t GetHopSize(std::int64_t inChunkSize, std::int64_t inMarginSize, std::int64_t inTailSize)
{
    return inChunkSize - 2 * inMarginSize - inTailSize;
}

/// Makes the chunks one after the other. What two neighbours share is kept in the working buffer.
class ChunkReader
{
public:
    ChunkReader(std::function<void(float* const*, std::int64_t)> inSource, std::int64_t inTotalSize,
                std::int64_t inChunkSize, std::int64_t inMarginSize, std::int64_t inTailSize)
        : mSource(std::move(inSource)),
          mTotalSize(inTotalSize),
          mChunkSize(inChunkSize),
          mMarginSize(inMarginSize),
          mHopSize(GetHopSize(inChunkSize, inMarginSize, inTailSize)),
          mWorkingBuffer(1, static_cast<unsigned>(inChunkSize))
    {
    }

    AudioBufferChunk Read(unsigned inIndex)
    {
        const std::int64_t position = std::int64_t{inIndex} * mHopSize;
        if (position >= mTotalSize) {
            throw ombrel::async::StopGeneratorException();
        }
        ReadNewFrames(inIndex == 0 ? mChunkSize : mHopSize);
        const std::int64_t start = position - mMarginSize;
        return {std::make_shared<AudioBuffer>(mWorkingBuffer), {start, start + mChunkSize}};
    }

private:
    /// Moves what is kept to the head and lets the source write behind it.
    void ReadNewFrames(std::int64_t inFrames)
    {
        float* const row = mWorkingBuffer[0];
        std::copy(row + inFrames, row + mChunkSize, row);
        float* const newFrames = row + (mChunkSize - inFrames);
        try {
            mSource(&newFrames, inFrames);
        } catch (...) {
            std::fill_n(newFrames, inFrames, 0.0f);
            throw;
        }
    }

    std::function<void(float* const*, std::int64_t)> mSource;
    std::int64_t mTotalSize;
    std::int64_t mChunkSize;
    std::int64_t mMarginSize;
    std::int64_t mHopSize;
    AudioBuffer mWorkingBuffer;
};

/// Gives the first elements of the tuples of another generator.
class BufferOfChunkGenerator final : public AudioBufferGenerator
{
public:
    explicit BufferOfChunkGenerator(std::shared_ptr<AudioBufferChunkGenerator> inSource)
        : mSource(std::move(inSource))
    {
    }

    ombrel::async::Future<std::shared_ptr<AudioBuffer>> Next() override
    {
        return mSource->Next().OnSuccess(
            [](const AudioBufferChunk& inChunk) { return std::get<0>(inChunk); });
    }

    std::shared_ptr<ombrel::threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    std::shared_ptr<AudioBufferChunkGenerator> mSource;
};

void CheckGeometry(std::int64_t inChunkSize, std::int64_t inMarginSize, std::int64_t inTailSize)
{
    const bool isInRange = inChunkSize >= 0 && inChunkSize <= std::numeric_limits<int>::max() &&
                           inMarginSize >= 0 && inMarginSize <= inChunkSize / 2 && inTailSize >= 0 &&
                           inTailSize <= inChunkSize - 2 * inMarginSize;
    if (!isInRange) {
        throw ombrel::ombrel_exception("AudioBufferGenerator: margins and tail do not fit into a chunk");
    }
}

} // namespace

ombrel::value_range<std::int64_t> GetChunkRange(unsigned inIndex, std::int64_t inChunkSize,
                                                std::int64_t inMarginSize, std::int64_t inTailSize)
{
    const std::int64_t start =
        GetHopSize(inChunkSize, inMarginSize, inTailSize) * std::int64_t{inIndex} - inMarginSize;
    return {start, start + inChunkSize};
}

ombrel::value_range<unsigned> GetChunksContaining(std::int64_t inPosition, std::int64_t inChunkSize,
                                                  std::int64_t inMarginSize, std::int64_t inTailSize)
{
    const std::int64_t hopSize = GetHopSize(inChunkSize, inMarginSize, inTailSize);
    const std::int64_t position = std::max<std::int64_t>(inPosition, 0);
    const std::int64_t first = std::max<std::int64_t>(position - inTailSize, 0) / hopSize;
    return {static_cast<unsigned>(first), static_cast<unsigned>(position / hopSize)};
}

std::shared_ptr<AudioBufferChunkGenerator>
CreateAudioBufferGenerator(std::function<void(float* const*, std::int64_t)> inSource,
                           std::int64_t inTotalSize, std::int64_t inChunkSize, std::int64_t inMarginSize,
                           std::int64_t inTailSize,
                           std::shared_ptr<ombrel::threads::AsyncExecutor> inExecutor)
{
    if (!inSource || !inExecutor) {
        throw std::bad_function_call();
    }
    // The working buffer goes from one chunk to the next without a lock.
    if (inExecutor->GetDegreeOfConcurrency() != 1) {
        throw ombrel::ombrel_exception(
            "Tried to instantiate AudioBufferGenerator with multithreaded executor");
    }
    CheckGeometry(inChunkSize, inMarginSize, inTailSize);
    auto reader = std::make_shared<ChunkReader>(std::move(inSource), inTotalSize, inChunkSize, inMarginSize,
                                                inTailSize);
    return std::make_shared<SequentialGenerator<AudioBufferChunk>>(
        ombrel::async::CreateFunctionGenerator<AudioBufferChunk>(
            [reader = std::move(reader)](unsigned inIndex) { return reader->Read(inIndex); },
            std::move(inExecutor)));
}

std::shared_ptr<AudioBufferGenerator>
CreateAudioBufferGenerator(const std::shared_ptr<AudioBufferChunkGenerator>& inSource)
{
    return std::make_shared<BufferOfChunkGenerator>(inSource);
}

} // namespace tessaro::async
