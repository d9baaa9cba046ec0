#include "filter/MultiRateFilter.h"

#include <algorithm>

namespace brisken::filter {

namespace {

/// Aims of the sizes that follow: inputs and outputs of a chunk, and values of all its streams, stay in the
/// caches.
constexpr std::size_t kChunkValues = 2048;
constexpr std::size_t kChunkStreamValues = 16384;
/// Four of the widest vectors.
constexpr std::size_t kStep = 4 * kMRFSlack;

constexpr std::size_t CeilDivide(std::size_t inA, std::size_t inB)
{
    return (inA + inB - 1) / inB;
}

std::size_t RoundUp(std::size_t inValue)
{
    return CeilDivide(inValue, kMRFSlack) * kMRFSlack;
}

std::size_t ChunkIterations(std::size_t inUp, std::size_t inDown, std::size_t inNumStreams)
{
    const auto values =
        std::min(kChunkValues / std::max(inUp, inDown), kChunkStreamValues / (inUp * inNumStreams));
    // A multiple of the kernel's largest step, if possible.
    return values > kStep ? values / kStep * kStep : std::max<std::size_t>(values, 1);
}

} // namespace

MultiRateFilter::MultiRateFilter(std::size_t inUp, std::size_t inDown, const float* inTaps,
                                 std::size_t inNumTaps, std::size_t inUpPhase, std::size_t inDownPhase)
    : mUp(inUp),
      mDown(inDown),
      mDepth(std::max<std::size_t>(CeilDivide(inNumTaps, inUp), 1)),
      mNumStreams(std::min(inDown, mDepth)),
      mReach(CeilDivide(mDepth, inDown)),
      mPast(mReach * inDown),
      mChunk(ChunkIterations(inUp, inDown, mNumStreams)),
      mRowStride(RoundUp(inUp + kMRFSlack)),
      mRows(mDepth * mRowStride),
      mNewest(inUp),
      // Holding a value starts up to an iteration late, and goes on behind the end by as much and a vector.
      mStreamStride(RoundUp((mReach + mChunk + 1) * inUp + 2 * kMRFSlack)),
      mStreams(mNumStreams * mStreamStride),
      mWindow(mPast + mChunk * inDown),
      mOldPast(mPast),
      mNextPast(mPast)
{
    SpreadTaps(inTaps, inNumTaps, inUpPhase, inDownPhase);
}

void MultiRateFilter::SpreadTaps(const float* inTaps, std::size_t inNumTaps, std::size_t inUpPhase,
                                 std::size_t inDownPhase)
{
    for (std::size_t j = 0; j < mUp; ++j) {
        // Place of the output in the row of inserted zeros, counted from an input one iteration back.
        const auto place = mUp * mDown + j * mDown + inDownPhase - inUpPhase;
        const auto phase = place % mUp;
        mNewest[j] = static_cast<std::ptrdiff_t>(place / mUp) - static_cast<std::ptrdiff_t>(mDown);
        for (std::size_t m = 0; m < mDepth; ++m) {
            const auto tap = phase + m * mUp;
            auto* row = mRows.Get() + m * mRowStride;
            for (std::size_t column = j; column < mUp + kMRFSlack; column += mUp) {
                row[column] = tap < inNumTaps ? inTaps[tap] : 0.0f;
            }
        }
    }
}

void MultiRateFilter::SetDelayLine(const float* inDelayLine, std::size_t inSize)
{
    const auto known = inDelayLine != nullptr ? std::min(inSize, mPast) : 0;
    std::fill_n(mWindow.Get(), mPast - known, 0.0f);
    std::reverse_copy(inDelayLine, inDelayLine + known, mWindow.Get() + mPast - known);
}

void MultiRateFilter::Process(const float* inSource, float* outDest, std::size_t inIterations)
{
    if (inSource == outDest && mUp > mDown) {
        ProcessBackwards(outDest, inIterations);
    } else {
        ProcessForwards(inSource, outDest, inIterations);
    }
}

void MultiRateFilter::ProcessForwards(const float* inSource, float* outDest, std::size_t inIterations)
{
    auto* window = mWindow.Get();
    for (std::size_t begin = 0; begin < inIterations; begin += mChunk) {
        const auto count = std::min(mChunk, inIterations - begin);
        std::copy_n(inSource + begin * mDown, count * mDown, window + mPast);
        ComputeChunk(count, outDest + begin * mUp);
        std::copy_n(window + count * mDown, mPast, window);
    }
}

/// Outputs that outgrow their inputs in the same row are computed from the end, where no input is left to be
/// harmed.
void MultiRateFilter::ProcessBackwards(float* ioRow, std::size_t inIterations)
{
    auto* window = mWindow.Get();
    const auto inputs = inIterations * mDown;
    const auto fresh = std::min(inputs, mPast);
    std::copy_n(window + fresh, mPast - fresh, mNextPast.begin());
    std::copy_n(ioRow + inputs - fresh, fresh, mNextPast.end() - static_cast<std::ptrdiff_t>(fresh));

    std::copy_n(window, mPast, mOldPast.begin());
    for (auto left = inIterations; left > 0;) {
        const auto count = left % mChunk != 0 ? left % mChunk : mChunk;
        left -= count;
        const auto begin = left * mDown;
        const auto known = std::min(begin, mPast);
        std::copy_n(mOldPast.begin() + static_cast<std::ptrdiff_t>(begin), mPast - known, window);
        std::copy_n(ioRow + begin - known, known + count * mDown, window + mPast - known);
        ComputeChunk(count, ioRow + left * mUp);
    }
    std::copy_n(mNextPast.begin(), mPast, window);
}

/// Stream `b` gets the newest input of each output, less `b`, from `mReach` iterations back on.
void MultiRateFilter::FillStreams(std::size_t inIterations)
{
    const auto iterations = mReach + inIterations;
    if (mDown == 1) {
        // The newest input of the first outputs may be the one before.
        const auto delay = static_cast<std::size_t>(std::count(mNewest.begin(), mNewest.end(), -1));
        HoldRow(mWindow.Get(), iterations, mUp, mStreams.Get() + delay);
    } else if (mUp == 1 && mNumStreams == mDown) {
        // Reaching back by less than an iteration, the first values of the streams are never used.
        const auto* source = mWindow.Get() + mDown + mNewest[0] - (static_cast<std::ptrdiff_t>(mDown) - 1);
        DeinterleaveRow(source, iterations - 1, mDown, mStreams.Get() + 1, mStreamStride);
    } else {
        for (std::size_t b = 0; b < mNumStreams; ++b) {
            auto* stream = mStreams.Get() + b * mStreamStride;
            for (std::size_t i = 1; i < iterations; ++i) {
                const auto* newest = mWindow.Get() + i * mDown - b;
                for (std::size_t j = 0; j < mUp; ++j) {
                    stream[i * mUp + j] = newest[mNewest[j]];
                }
            }
        }
    }
}

void MultiRateFilter::ComputeChunk(std::size_t inIterations, float* outDest)
{
    FillStreams(inIterations);
    const MRFTaps taps{mUp, mDown, mDepth, mRows.Get(), mRowStride};
    MRFRow(taps, mStreams.Get() + mReach * mUp, mStreamStride, inIterations * mUp, outDest);
}

} // namespace brisken::filter
