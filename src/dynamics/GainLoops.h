#pragma once

/// The loops of the gain computers that go sample by sample, and the gain curves that do not.
namespace tessaro::dynamics {

/// A one-pole smoother's two factors: state = state * kept + value * step, which is a product less in the way
/// of the next sample than state += (value - state) * step. They add up to 1 exactly, so that a gain of 1
/// stays 1.
struct OnePole
{
    explicit OnePole(float inKept) : mKept(inKept), mStep(1.0f - inKept) {}

    float mKept;
    float mStep;
};

/// Smoothers of one stage of dynamics
struct StageSmoothers
{
    OnePole mAttack;
    OnePole mRelease;
};

/// A gain, and what the smoother behind it makes of it
struct GainState
{
    float mGain = 1.0f;
    float mSmoothed = 1.0f;
};

/// outGains[i] = (level[i] / threshold)^exponent from the threshold on, 1 below. `inHighest` is the highest
/// level: where it is below the threshold, or the exponent is 0, no power is computed.
void CurveAbove(unsigned inCount, const float* inLevels, float inHighest, float inThreshold,
                double inExponent, float* outGains);
/// The same below the threshold, 1 from it on, with the lowest level
void CurveBelow(unsigned inCount, const float* inLevels, float inLowest, float inThreshold, double inExponent,
                float* outGains);

/// Gain that falls towards targets and rises towards 1: `inHigh` smooths where the level is at or above the
/// threshold, `inLow` elsewhere. With a smoother the row is what that makes of it. `outGains` may be
/// `inTargets`.
void FollowTargets(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                   StageSmoothers inLow, StageSmoothers inHigh, const OnePole* inSmootherOrNull,
                   GainState& ioState, float* outGains);
/// The same with one pair of smoothers
void FollowTargets(unsigned inCount, const float* inTargets, StageSmoothers inSmoothers,
                   const OnePole* inSmootherOrNull, GainState& ioState, float* outGains);

/// Gain of a gate: goes to the targets where the level is not above the threshold, by release, and to 1 where
/// it is, by attack. Below -400 dB gains are 0. `outGains` may be `inTargets`.
void FollowGate(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                StageSmoothers inSmoothers, const OnePole* inSmootherOrNull, GainState& ioState,
                float* outGains);

/// What a gate with hold keeps between samples
struct HeldGate
{
    float mGain = 1.0f;
    unsigned mHoldCounter = 0; ///< samples that the gain still stays
    bool mWasHeld = false;     ///< whether it has stayed for one; set only
};

/// Gain of a gate with hold: goes to 1 by attack where the level is above the threshold, stays for
/// `inHoldSamples` more, and goes to the targets by release. Below -400 dB it is 0. `outGains` may be
/// `inTargets`.
void FollowGateWithHold(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                        StageSmoothers inSmoothers, unsigned inHoldSamples, HeldGate& ioGate,
                        float* outGains);

/// Gain on its way to one target. Below -400 dB it is 0. Returns the last.
float ApproachTarget(unsigned inCount, float inTarget, OnePole inSmoother, float inGain, float* outGains);

} // namespace tessaro::dynamics
