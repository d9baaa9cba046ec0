#include "dynamics/MaximizerKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include <brisken/utility/Copy.h>

namespace tessaro::dynamics {

namespace {

/// What falling levels of meters get
constexpr float kTrickle = 1e-10f;
/// A smoothed gain this close is there.
constexpr float kSmoothedEnough = 1e-9f;

/// The next number below, of one above 0; of denormal ones too, which the targets of huge peaks are
float JustBelow(float inNumber)
{
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(inNumber) - 1);
}

/// Calls `inCopy(ringPosition, rowPosition, count)` for the one or two pieces of a stretch of a ring.
template <typename Copy>
void ForPieces(unsigned inLength, unsigned inStart, unsigned inCount, Copy inCopy)
{
    const unsigned start = inStart % inLength;
    const unsigned first = std::min(inCount, inLength - start);
    inCopy(start, 0u, first);
    inCopy(0u, first, inCount - first);
}

} // namespace

void PassThroughRing(float* ioRing, unsigned inLength, unsigned inPosition, unsigned inCount,
                     const float* inRow, float* outRow)
{
    using brisken::utility::Copy;
    const unsigned delay = inLength - 1;
    const unsigned held = std::min(inCount, delay);
    ForPieces(inLength, inPosition + 1, held, [&](unsigned inRing, unsigned inPlace, unsigned inSamples) {
        Copy(inSamples, ioRing + inRing, outRow + inPlace);
    });
    Copy(inCount - held, inRow, outRow + held);
    const unsigned kept = std::min(inCount, inLength);
    const unsigned gone = inCount - kept;
    ForPieces(inLength, inPosition + gone, kept, [&](unsigned inRing, unsigned inPlace, unsigned inSamples) {
        Copy(inSamples, inRow + gone + inPlace, ioRing + inRing);
    });
}

void HoldPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioLevel, float* outLevels)
{
    float level = ioLevel;
    for (unsigned i = 0; i < inCount; ++i) {
        level = std::max(level * inDecay, inPeaks[i]);
        outLevels[i] = level;
    }
    ioLevel = level;
}

void HoldMeterPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioLevel)
{
    float level = ioLevel;
    for (unsigned i = 0; i < inCount; ++i) {
        const float fallen = std::max(level * inDecay, inPeaks[i]);
        const float fed = fallen > 0.0f ? fallen + kTrickle : fallen;
        level = inPeaks[i] >= level ? inPeaks[i] : fed;
    }
    ioLevel = level;
}

void HoldLine::Reset()
{
    mTargets.fill(1.0f);
    mFilled = 0;
    mLeast = 1.0f;
}

namespace {

/// Gain that brings a level down to the threshold, or 1 if that is not above it; rounded so that gain * level
/// is never above the threshold.
float WallTarget(float inLevel, float inThreshold)
{
    const float nearest = inThreshold / inLevel;
    const float target = nearest * inLevel > inThreshold ? JustBelow(nearest) : nearest;
    return inLevel >= inThreshold ? target : 1.0f;
}

void FinishStretch(HoldLine& ioLine)
{
    float least = 1.0f;
    for (unsigned i = HoldLine::kLength; i != 0; --i) {
        least = std::min(least, ioLine.mTargets[i - 1]);
        ioLine.mTargets[i - 1] = least;
    }
    ioLine.mFilled = 0;
    ioLine.mLeast = 1.0f;
}

} // namespace

// The gain needs no speed to fall by: once it is above the target it is at the target.
void FollowWall(unsigned inCount, const WallSpeeds& inSpeeds, float inThreshold, WallState& ioState,
                const float* inPeaks, float* outGains)
{
    HoldLine& hold = ioState.mHoldLine;
    float level = ioState.mLevel;
    float gain = ioState.mGain;
    for (unsigned done = 0; done < inCount;) {
        const unsigned end = done + std::min(inCount - done, HoldLine::kLength - hold.mFilled);
        float* line = hold.mTargets.data() + hold.mFilled;
        hold.mFilled += end - done;
        float least = hold.mLeast;
        for (; done < end; ++done, ++line) {
            level = std::max(level * inSpeeds.mPeakDecay, inPeaks[done]);
            const float target = WallTarget(level, inThreshold);
            least = std::min(least, target);
            line[0] = target;
            const float risen = gain * inSpeeds.mReleaseKept + inSpeeds.mReleaseStep;
            gain = std::min(std::min(least, line[1]), risen);
            outGains[done] = gain;
        }
        hold.mLeast = least;
        if (hold.mFilled == HoldLine::kLength) {
            FinishStretch(hold);
        }
    }
    ioState.mLevel = level;
    ioState.mGain = gain;
}

void FollowSoft(unsigned inCount, const SoftSpeeds& inSpeeds, float& ioGain, float& ioSmoothed,
                float* ioTargets)
{
    float gain = ioGain;
    float smoothed = ioSmoothed;
    for (unsigned i = 0; i < inCount; ++i) {
        const float target = ioTargets[i];
        const float fallen = gain * inSpeeds.mAttackKept + target * inSpeeds.mAttackStep;
        const float risen = gain * inSpeeds.mReleaseKept + inSpeeds.mReleaseStep;
        gain = gain > target ? fallen : risen;
        const float difference = gain - smoothed;
        const float closer = smoothed + difference * inSpeeds.mSmootherStep;
        smoothed = std::abs(difference) > kSmoothedEnough ? closer : gain;
        ioTargets[i] = smoothed;
    }
    ioGain = gain;
    ioSmoothed = smoothed;
}

} // namespace tessaro::dynamics
