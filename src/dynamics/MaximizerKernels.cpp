#include "dynamics/MaximizerKernels.h"

#include <algorithm>
#include <cmath>

#include <brisken/utility/Copy.h>

namespace tessaro::dynamics {

namespace {

/// What falling levels of meters get
constexpr float kTrickle = 1e-10f;
/// From a gain to the next one below
constexpr float kHairBelow = 1.0f - 0x1p-24f;
/// A smoothed gain this close is there.
constexpr float kSmoothedEnough = 1e-9f;

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

void ToWallTargets(unsigned inCount, float inThreshold, float* ioLevels)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const float level = ioLevels[i];
        const float nearest = inThreshold / level;
        const float target = nearest * level > inThreshold ? nearest * kHairBelow : nearest;
        ioLevels[i] = level >= inThreshold ? target : 1.0f;
    }
}

void HoldLine::Reset()
{
    mTargets.fill(1.0f);
    mFilled = 0;
    mLeast = 1.0f;
}

namespace {

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
void FollowWall(unsigned inCount, float inReleaseKept, float inReleaseStep, HoldLine& ioLine, float& ioGain,
                float* ioTargets)
{
    float gain = ioGain;
    for (unsigned done = 0; done < inCount;) {
        const unsigned count = std::min(inCount - done, HoldLine::kLength - ioLine.mFilled);
        float* const targets = ioTargets + done;
        float* const line = ioLine.mTargets.data() + ioLine.mFilled;
        float least = ioLine.mLeast;
        for (unsigned i = 0; i < count; ++i) {
            const float target = targets[i];
            least = std::min(least, target);
            line[i] = target;
            gain = std::min(std::min(least, line[i + 1]), gain * inReleaseKept + inReleaseStep);
            targets[i] = gain;
        }
        ioLine.mLeast = least;
        ioLine.mFilled += count;
        if (ioLine.mFilled == HoldLine::kLength) {
            FinishStretch(ioLine);
        }
        done += count;
    }
    ioGain = gain;
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
