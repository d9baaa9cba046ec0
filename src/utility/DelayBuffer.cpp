#include <tessaro/utility/DelayBuffer.h>

#include <algorithm>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

namespace kernels = brisken::utility;

void Copy(std::ptrdiff_t inCount, const float* inSource, float* outDest)
{
    kernels::Copy(static_cast<unsigned>(inCount), inSource, outDest);
}

} // namespace

DelayBuffer::~DelayBuffer() = default;

void DelayBuffer::Init(int inSize)
{
    mSize = 0;
    mStart.reset();
    mEnd = nullptr;
    Reset();

    const int size = std::max(inSize, 0);
    mStart = std::make_unique_for_overwrite<float[]>(static_cast<std::size_t>(size));
    mEnd = mStart.get() + size;
    mSize = size;
    Reset();
}

void DelayBuffer::Reset()
{
    mWrite = mStart.get();
    mIsWrapped = false;
}

void DelayBuffer::Write(const float* inSource, int inCount)
{
    if (inCount > mSize) {
        inSource += inCount - mSize;
        inCount = mSize;
    }
    if (inCount <= 0) {
        return;
    }
    const auto firstRun = std::min<std::ptrdiff_t>(inCount, mEnd - mWrite);
    Copy(firstRun, inSource, mWrite);
    Copy(inCount - firstRun, inSource + firstRun, mStart.get());
    if (firstRun == mEnd - mWrite) {
        mWrite = mStart.get() + (inCount - firstRun);
        mIsWrapped = true;
    } else {
        mWrite += firstRun;
    }
}

int DelayBuffer::Read(float* outDest, int inCount, int inSkip) const
{
    const auto chunks = GetWorkChunks(inSkip);
    const auto wanted = std::max<std::ptrdiff_t>(inCount, 0);
    const auto first = std::min(wanted, chunks.mFirstEnd - chunks.mFirstBegin);
    const auto second = std::min(wanted - first, chunks.mSecondEnd - chunks.mSecondBegin);
    Copy(first, chunks.mFirstBegin, outDest);
    Copy(second, chunks.mSecondBegin, outDest + first);
    return static_cast<int>(first + second);
}

int DelayBuffer::GetValidDataSize() const
{
    return mIsWrapped ? mSize : static_cast<int>(mWrite - mStart.get());
}

DelayBuffer::WorkChunks DelayBuffer::GetWorkChunks(int inSkip) const
{
    const float* const start = mStart.get();
    WorkChunks chunks{mWrite, mEnd, start, mWrite};
    if (!mIsWrapped) {
        chunks = {start, mWrite, start, start};
    }
    const auto skip = std::max(inSkip, 0);
    const auto firstLength = chunks.mFirstEnd - chunks.mFirstBegin;
    if (skip < firstLength) {
        chunks.mFirstBegin += skip;
        return chunks;
    }
    const auto secondLength = chunks.mSecondEnd - chunks.mSecondBegin;
    const auto skipInSecond = std::min(skip - firstLength, secondLength);
    return {chunks.mSecondBegin + skipInSecond, chunks.mSecondEnd, start, start};
}

} // namespace tessaro
