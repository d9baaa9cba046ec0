#pragma once

namespace tessaro {

/// What one step of the limits needs of each bin; all rows have one value a bin.
struct BinRows
{
    const float* mMagnitudes;
    /// How far the reference moves in each step
    const float* mReferenceSteps;
    float* mReference;
    float* mGains;
};

/// Moves each gain toward the one that brings its bin down to `inLimit` times the reference, or toward 1
/// where the bin is below that; then moves the reference.
void LimitBins(unsigned inCount, float inLimit, const BinRows& ioRows);

} // namespace tessaro
