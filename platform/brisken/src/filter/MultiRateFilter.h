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
    void SpreadTaps(const float* inTaps, std::size_t inNumTaps, std::size_t inUpPhase,
                    std::size_t inDownPhase);
    void ProcessForwards(const float* inSource, float* outDest, std::size_t inIterations);
    void ProcessBackwards(float* ioRow, std::size_t inIterations);
    void FillStreams(std::size_t inIterations);
    void ComputeChunk(std::size_t inIterations, float* outDest);

    std::size_t mUp;
    std::size_t mDown;
    /// Taps a phase.
    std::size_t mDepth;
    std::size_t mNumStreams;
    /// Iterations that the taps reach back.
    std::size_t mReach;
    /// Inputs of that many iterations.
    std::size_t mPast;
    /// Iterations that are computed at once.
    std::size_t mChunk;
    std::size_t mRowStride;
    AlignedArray<float> mRows;
    /// The newest input that each output of an iteration meets, counted from the iteration's first.
    std::vector<std::ptrdiff_t> mNewest;
    std::size_t mStreamStride;
    AlignedArray<float> mStreams;
    /// Past input, oldest first, and a chunk behind it.
    AlignedArray<float> mWindow;
    /// For a call that runs backwards: what precedes its row, and what will precede the next.
    std::vector<float> mOldPast;
    std::vector<float> mNextPast;
};

} // namespace brisken::filter
