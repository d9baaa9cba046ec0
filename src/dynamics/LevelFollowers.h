#pragma once

/// Detectors of the gain computers: the loops that cannot run along time in vectors.
namespace tessaro::dynamics {

/// No level is taken to be lower: -100 dB.
constexpr float kLowestLevel = 1e-5f;

/// Level of a row of peaks: goes up with them at once and falls by `inDecay` a sample. What has fallen below
/// 1e-15 counts as 0, long before denormal numbers. `outLevels` may be `inPeaks`.
void FollowPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioPeak, float* outLevels);

/// Root of the mean square, smoothed by a one-pole that keeps `inKept` of its state in a sample, or
/// `inLowest` if that is more. `outLevels` may be `inMeanSquares`. NaN that has got into the state stays
/// there, and counts as the lowest level.
void FollowMeanSquares(unsigned inCount, const float* inMeanSquares, float inKept, float inLowest,
                       float& ioMeanSquare, float* outLevels);

/// ioPeaks[i] = the larger of it and |row[i]|, which NaN is not. Returns the largest |row[i]|.
float FoldMagnitudes(unsigned inCount, const float* inRow, float* ioPeaks);

} // namespace tessaro::dynamics
