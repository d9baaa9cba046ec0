#include "dynamics/LevelFollowers.h"

#include <algorithm>
#include <cmath>

#include <brisken/utility/Compare.h>
#include <brisken/utility/Elementary.h>
#include <brisken/utility/Reductions.h>

namespace tessaro::dynamics {

namespace {

constexpr float kSilentPeak = 1e-15f;
/// Keeps the mean square of silence out of denormal numbers and is far below the lowest level's.
constexpr float kMeanSquareOffset = 1e-30f;
constexpr unsigned kRun = 256;

} // namespace

void FollowPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioPeak, float* outLevels)
{
    float state = ioPeak;
    for (unsigned i = 0; i < inCount; ++i) {
        const float peak = inPeaks[i];
        const float fallen = state < kSilentPeak ? 0.0f : state * inDecay;
        state = peak > state ? peak : fallen;
        outLevels[i] = std::max(kLowestLevel, state);
    }
    ioPeak = state;
}

void FollowMeanSquares(unsigned inCount, const float* inMeanSquares, float inKept, float inLowest,
                       float& ioMeanSquare, float* outLevels)
{
    const float step = 1.0f - inKept;
    float state = ioMeanSquare;
    for (unsigned i = 0; i < inCount; ++i) {
        state = state * inKept + (inMeanSquares[i] * step + kMeanSquareOffset);
        outLevels[i] = std::max(inLowest, std::sqrt(state));
    }
    ioMeanSquare = state;
}

float FoldMagnitudes(unsigned inCount, const float* inRow, float* ioPeaks)
{
    float magnitudes[kRun];
    float largest = 0.0f;
    for (unsigned begin = 0; begin < inCount; begin += kRun) {
        const unsigned count = std::min(kRun, inCount - begin);
        brisken::utility::Abs(count, inRow + begin, magnitudes);
        brisken::utility::MaxEvery_InPlace(count, magnitudes, ioPeaks + begin);
        largest = std::max(largest, brisken::utility::MaxAbs(magnitudes, count));
    }
    return largest;
}

} // namespace tessaro::dynamics
