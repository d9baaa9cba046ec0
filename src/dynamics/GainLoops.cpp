#include "dynamics/GainLoops.h"

#include <algorithm>

#include <brisken/utility/Arithmetic.h>
#include <brisken/utility/Compare.h>
#include <brisken/utility/Copy.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Power.h>

namespace tessaro::dynamics {

namespace {

/// Gains of a gate below this are given out as 0.
constexpr float kClosed = 1e-20f;
/// What closing gates keep getting, so that they never reach denormal numbers
constexpr float kTrickle = 1e-30f;

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
    brisken::utility::Trim(inCount, outGains, kTrickle, 1.0f); // 0 would be a special case, and slow
    brisken::utility::Power(inCount, outGains, inExponent, outGains);
}

namespace {

struct OnePair
{
    StageSmoothers operator()(unsigned) const { return mSmoothers; }

    StageSmoothers mSmoothers;
};

struct PairByLevel
{
    StageSmoothers operator()(unsigned inPlace) const
    {
        return mLevels[inPlace] >= mThreshold ? mHigh : mLow;
    }

    const float* mLevels;
    float mThreshold;
    StageSmoothers mLow;
    StageSmoothers mHigh;
};

// Both smoothers in one loop, for the second keeps up with the first at no cost.

template <bool kSmooth, typename Smoothers>
void FollowTargetsBy(const Smoothers& inSmoothersAt, unsigned inCount, const float* inTargets,
                     OnePole inSmoother, GainState& ioState, float* outGains)
{
    auto [gain, smoothed] = ioState;
    for (unsigned i = 0; i < inCount; ++i) {
        const auto smoothers = inSmoothersAt(i);
        const float target = inTargets[i];
        const float fallen = gain * smoothers.mAttack.mKept + target * smoothers.mAttack.mStep;
        const float risen = gain * smoothers.mRelease.mKept + smoothers.mRelease.mStep;
        gain = gain > target ? fallen : risen;
        if constexpr (kSmooth) {
            smoothed = smoothed * inSmoother.mKept + gain * inSmoother.mStep;
        }
        outGains[i] = kSmooth ? smoothed : gain;
    }
    ioState = {gain, smoothed};
}

template <typename Smoothers>
void FollowTargetsBy(const Smoothers& inSmoothersAt, unsigned inCount, const float* inTargets,
                     const OnePole* inSmootherOrNull, GainState& ioState, float* outGains)
{
    if (inSmootherOrNull != nullptr) {
        FollowTargetsBy<true>(inSmoothersAt, inCount, inTargets, *inSmootherOrNull, ioState, outGains);
    } else {
        FollowTargetsBy<false>(inSmoothersAt, inCount, inTargets, OnePole(0.0f), ioState, outGains);
    }
}

float StepTowards(float inTarget, const OnePole& inSmoother)
{
    return std::max(inTarget * inSmoother.mStep, kTrickle);
}

float NoneIfClosed(float inGain)
{
    return inGain < kClosed ? 0.0f : inGain;
}

} // namespace

void FollowTargets(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                   StageSmoothers inLow, StageSmoothers inHigh, const OnePole* inSmootherOrNull,
                   GainState& ioState, float* outGains)
{
    FollowTargetsBy(PairByLevel{inLevels, inThreshold, inLow, inHigh}, inCount, inTargets, inSmootherOrNull,
                    ioState, outGains);
}

void FollowTargets(unsigned inCount, const float* inTargets, StageSmoothers inSmoothers,
                   const OnePole* inSmootherOrNull, GainState& ioState, float* outGains)
{
    FollowTargetsBy(OnePair{inSmoothers}, inCount, inTargets, inSmootherOrNull, ioState, outGains);
}

void FollowGate(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                StageSmoothers inSmoothers, const OnePole* inSmootherOrNull, GainState& ioState,
                float* outGains)
{
    const bool isSmoothed = inSmootherOrNull != nullptr;
    const OnePole smoother = isSmoothed ? *inSmootherOrNull : OnePole(0.0f);
    auto [gain, smoothed] = ioState;
    for (unsigned i = 0; i < inCount; ++i) {
        const float closing =
            gain * inSmoothers.mRelease.mKept + StepTowards(inTargets[i], inSmoothers.mRelease);
        const float opening = gain * inSmoothers.mAttack.mKept + inSmoothers.mAttack.mStep;
        gain = inLevels[i] > inThreshold ? opening : closing;
        smoothed = smoothed * smoother.mKept + gain * smoother.mStep;
        outGains[i] = NoneIfClosed(smoothed);
    }
    ioState = {gain, isSmoothed ? smoothed : ioState.mSmoothed};
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
            gate.mGain =
                gate.mGain * inSmoothers.mRelease.mKept + StepTowards(inTargets[i], inSmoothers.mRelease);
        }
        outGains[i] = NoneIfClosed(gate.mGain);
    }
    ioGate = gate;
}

float ApproachTarget(unsigned inCount, float inTarget, OnePole inSmoother, float inGain, float* outGains)
{
    const float step = StepTowards(inTarget, inSmoother);
    float gain = inGain;
    for (unsigned i = 0; i < inCount; ++i) {
        gain = gain * inSmoother.mKept + step;
        outGains[i] = NoneIfClosed(gain);
    }
    return gain;
}

} // namespace tessaro::dynamics
