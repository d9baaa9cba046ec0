#pragma once

#include <cstddef>
#include <vector>

#include "filter/AlignedArray.h"
#include "filter/MRFKernel.h"

namespace brisken::filter {

/// The state of a multi-rate filter, which cuts rows into chunks and spreads each over the streams of its
/// kernel.
class MultiRateFilter
{
public:
    /// Factors are at least 1, phases below their factor.
    MultiRateFilter(std::size_t inUp, std::size_t inDown, const float* inTaps, std::size_t inNumTaps,
                    std::size_t inUpPhase, std::size_t inDownPhase);

    /// The most recent sample first; null means zeros, as do missing values.
    void SetDelayLine(const float* inDelayLine, std::size_t inSize);

    void Process(const float* inSource, float* outDest, std::size_t inIterations);

private:
    void SpreadAcrossPhases(const float* inTaps, std::size_t inNumTaps);
    void SpreadByPhase(const float* inTaps, std::size_t inNumTaps);
    bool HasStreams() const { return mUp == 1 || mDown == 1; }
    void ProcessForwards(const float* inSource, float* outDest, std::size_t inIterations);
    void ProcessBackwards(float* ioRow, std::size_t inIterations);
    void FillStreams(std::size_t inIterations);
    void ComputeChunk(std::size_t inIterations, float* outDest);

    std::size_t mUp;
    std::size_t mDown;
    /// Taps a phase.
    std::size_t mDepth;
    /// Iterations that the taps reach back.
    std::size_t mReach;
    /// Inputs of that many iterations.
    std::size_t mPast;
    /// Iterations that are computed at once.
    std::size_t mChunk;
    /// Phase of each output of an iteration, and the newest and oldest input that it meets, counted from the
    /// iteration's first.
    std::vector<std::size_t> mPhase;
    std::vector<std::ptrdiff_t> mNewest;
    std::vector<std::ptrdiff_t> mOldest;
    std::size_t mRowStride = 0;
    AlignedArray<float> mRows;
    std::size_t mStreamStride = 0;
    AlignedArray<float> mStreams;
    /// Past input, oldest first, and a chunk behind it.
    AlignedArray<float> mWindow;
    /// For a call that runs backwards: what precedes its row, and what will precede the next.
    std::vector<float> mOldPast;
    std::vector<float> mNextPast;
};

} // namespace brisken::filter
