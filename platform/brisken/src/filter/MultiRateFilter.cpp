#include "filter/MultiRateFilter.h"

#include <algorithm>

namespace brisken::filter {

namespace {

/// The inputs and the outputs of a chunk, so that it stays in the caches.
constexpr std::size_t kChunkValues = 2048;
/// Iterations that make four of the widest vectors of each phase.
constexpr std::size_t kStep = 4 * kMostLanes;

constexpr std::size_t CeilDivide(std::size_t inA, std::size_t inB)
{
    return (inA + inB - 1) / inB;
}

std::size_t RoundUp(std::size_t inValue)
{
    return CeilDivide(inValue, kMostLanes) * kMostLanes;
}

std::size_t ChunkIterations(std::size_t inUp, std::size_t inDown)
{
    const auto iterations = kChunkValues / std::max(inUp, inDown);
    // The kernel is quickest on a multiple of its step.
    return iterations > kStep ? iterations / kStep * kStep : std::max<std::size_t>(iterations, 1);
}

} // namespace

MultiRateFilter::MultiRateFilter(std::size_t inUp, std::size_t inDown, const float* inTaps,
                                 std::size_t inNumTaps, std::size_t inUpPhase, std::size_t inDownPhase)
    : mUp(inUp),
      mDown(inDown),
      mDepth(std::max<std::size_t>(CeilDivide(inNumTaps, inUp), 1)),
      mReach(CeilDivide(mDepth, inDown)),
      mPast(mReach * inDown),
      mChunk(ChunkIterations(inUp, inDown)),
      mPhase(inUp),
      mNewest(inUp),
      mOldest(inUp),
      mWindow(mPast + mChunk * inDown + kMostLanes),
      mOldPast(mPast),
      mNextPast(mPast)
{
    for (std::size_t j = 0; j < mUp; ++j) {
        // Place of the output in the row of inserted zeros, counted from an iteration back.
        const auto place = mUp * mDown + j * mDown + inDownPhase - inUpPhase;
        mPhase[j] = place % mUp;
        mNewest[j] = static_cast<std::ptrdiff_t>(place / mUp) - static_cast<std::ptrdiff_t>(mDown);
        mOldest[j] = mNewest[j] - static_cast<std::ptrdiff_t>(mDepth - 1);
    }
    if (HasStreams()) {
        // Holding values starts up to an iteration late.
        mStreamStride = RoundUp((mReach + mChunk + 1) * mUp + kStreamSlack);
        mStreams = AlignedArray<float>(mDown * mStreamStride);
        SpreadAcrossPhases(inTaps, inNumTaps);
    } else {
        SpreadByPhase(inTaps, inNumTaps);
    }
}

void MultiRateFilter::SpreadAcrossPhases(const float* inTaps, std::size_t inNumTaps)
{
    const auto columns = mUp == 1 ? 1 : mUp + kMostLanes;
    mRowStride = mUp == 1 ? 1 : RoundUp(columns);
    mRows = AlignedArray<float>(mDepth * mRowStride);
    for (std::size_t m = 0; m < mDepth; ++m) {
        for (std::size_t column = 0; column < columns; ++column) {
            const auto tap = mPhase[column % mUp] + m * mUp;
            mRows[m * mRowStride + column] = tap < inNumTaps ? inTaps[tap] : 0.0f;
        }
    }
}

void MultiRateFilter::SpreadByPhase(const float* inTaps, std::size_t inNumTaps)
{
    mRowStride = RoundUp(mDepth + kMostLanes);
    mRows = AlignedArray<float>(mUp * mRowStride);
    for (std::size_t j = 0; j < mUp; ++j) {
        for (std::size_t m = 0; m < mDepth; ++m) {
            const auto tap = mPhase[j] + m * mUp;
            mRows[j * mRowStride + mDepth - 1 - m] = tap < inNumTaps ? inTaps[tap] : 0.0f;
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
        std::copy_n(mOldPast.begin() + static_cast<std::ptrdiff_t>(known), mPast - known, window);
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
    } else {
        // The taps reach back by less than the first iteration, whose values would need inputs before the
        // window.
        DeinterleaveRow(mWindow.Get() + mNewest[0] + 1, iterations - 1, mDown, mStreams.Get() + 1,
                        mStreamStride);
    }
}

void MultiRateFilter::ComputeChunk(std::size_t inIterations, float* outDest)
{
    if (HasStreams()) {
        FillStreams(inIterations);
        const StreamTaps taps{mUp, mDown, mDepth, mRows.Get(), mRowStride};
        StreamRow(taps, mStreams.Get() + mReach * mUp, mStreamStride, inIterations * mUp, outDest);
    } else {
        const PhaseTaps taps{mUp, mDown, mDepth, mRows.Get(), mRowStride, mOldest.data()};
        PhaseRow(taps, mWindow.Get() + mPast, inIterations, outDest);
    }
}

} // namespace brisken::filter
