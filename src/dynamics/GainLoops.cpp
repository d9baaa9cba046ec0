#include "dynamics/GainLoops.h"

#include <brisken/utility/Arithmetic.h>
#include <brisken/utility/Compare.h>
#include <brisken/utility/Copy.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Power.h>

namespace tessaro::dynamics {

namespace {

/// Keeps a closed gate out of denormal numbers.
constexpr float kClosed = 1e-30f;

} // namespace

void CurveAbove(unsigned inCount, const float* inLevels, float inHighest, float inThreshold,
                double inExponent, float* outGains)
{
    if (inExponent == 0.0 || !(inHighest >= inThreshold)) {
        brisken::utility::Set(inCount, outGains, 1.0f);
        return;
    }
    brisken::utility::Copy(inCount, inLevels, outGains);
    brisken::utility::DivConstant_InPlace(inCount, outGains, inThreshold);
    brisken::utility::Threshold_LT_InPlace(inCount, outGains, 1.0f);
    brisken::utility::Power(inCount, outGains, inExponent, outGains);
}

void CurveBelow(unsigned inCount, const float* inLevels, float inLowest, float inThreshold, double inExponent,
                float* outGains)
{
    if (inExponent == 0.0 || !(inLowest < inThreshold)) {
        brisken::utility::Set(inCount, outGains, 1.0f);
        return;
    }
    brisken::utility::Copy(inCount, inLevels, outGains);
    brisken::utility::DivConstant_InPlace(inCount, outGains, inThreshold);
    brisken::utility::Trim(inCount, outGains, kClosed, 1.0f); // 0 would be a special case, and slow
    brisken::utility::Power(inCount, outGains, inExponent, outGains);
}

float FollowTargets(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                    StageSmoothers inLow, StageSmoothers inHigh, float inState, float* outGains)
{
    float gain = inState;
    for (unsigned i = 0; i < inCount; ++i) {
        const bool isHigh = inLevels[i] >= inThreshold;
        const float target = inTargets[i];
        const float attackStep = isHigh ? inHigh.mAttack.mStep : inLow.mAttack.mStep;
        const float releaseKept = isHigh ? inHigh.mRelease.mKept : inLow.mRelease.mKept;
        const float releaseStep = isHigh ? inHigh.mRelease.mStep : inLow.mRelease.mStep;
        const float fallen = gain + (target - gain) * attackStep;
        const float risen = gain * releaseKept + releaseStep;
        gain = gain > target ? fallen : risen;
        outGains[i] = gain;
    }
    return gain;
}

float FollowTargets(unsigned inCount, const float* inTargets, StageSmoothers inSmoothers, float inState,
                    float* outGains)
{
    float gain = inState;
    for (unsigned i = 0; i < inCount; ++i) {
        const float target = inTargets[i];
        const float fallen = gain + (target - gain) * inSmoothers.mAttack.mStep;
        const float risen = gain * inSmoothers.mRelease.mKept + inSmoothers.mRelease.mStep;
        gain = gain > target ? fallen : risen;
        outGains[i] = gain;
    }
    return gain;
}

float FollowGate(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                 StageSmoothers inSmoothers, float inState, float* outGains)
{
    float gain = inState;
    for (unsigned i = 0; i < inCount; ++i) {
        const float closing = gain + (inTargets[i] - gain) * inSmoothers.mRelease.mStep;
        const float opening = gain * inSmoothers.mAttack.mKept + inSmoothers.mAttack.mStep;
        gain = inLevels[i] > inThreshold ? opening : closing;
        gain = gain < kClosed ? 0.0f : gain;
        outGains[i] = gain;
    }
    return gain;
}

void FollowGateWithHold(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                        StageSmoothers inSmoothers, unsigned inHoldSamples, HeldGate& ioGate, float* outGains)
{
    HeldGate gate = ioGate;
    for (unsigned i = 0; i < inCount; ++i) {
        if (inLevels[i] > inThreshold) {
            gate.mGain = gate.mGain * inSmoothers.mAttack.mKept + inSmoothers.mAttack.mStep;
            gate.mHoldCounter = inHoldSamples;
        } else if (gate.mHoldCounter != 0) {
            gate.mWasHeld = true;
            --gate.mHoldCounter;
        } else {
            const float closing = gate.mGain + (inTargets[i] - gate.mGain) * inSmoothers.mRelease.mStep;
            gate.mGain = closing < kClosed ? 0.0f : closing;
        }
        outGains[i] = gate.mGain;
    }
    ioGate = gate;
}

float Smooth(unsigned inCount, float* ioGains, float inFactor, float inState)
{
    float state = inState;
    for (unsigned i = 0; i < inCount; ++i) {
        state = (ioGains[i] - state) * inFactor + state;
        state = state < kClosed ? 0.0f : state;
        ioGains[i] = state;
    }
    return state;
}

} // namespace tessaro::dynamics
