#pragma once

/// The loops of the gain computers that go sample by sample, and the gain curves that do not.
namespace tessaro::dynamics {

/// A one-pole smoother's two factors. They add up to 1 exactly, so that a gain of 1 stays 1.
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

/// outGains[i] = (level[i] / threshold)^exponent from the threshold on, 1 below. `inHighest` is the highest
/// level: where it is below the threshold, or the exponent is 0, no power is computed.
void CurveAbove(unsigned inCount, const float* inLevels, float inHighest, float inThreshold,
                double inExponent, float* outGains);
/// The same below the threshold, 1 from it on, with the lowest level
void CurveBelow(unsigned inCount, const float* inLevels, float inLowest, float inThreshold, double inExponent,
                float* outGains);

/// Gain that falls towards targets and rises towards 1: `inHigh` smooths where the level is at or above the
/// threshold, `inLow` elsewhere. Returns the state behind the row. `outGains` may be `inTargets`.
float FollowTargets(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                    StageSmoothers inLow, StageSmoothers inHigh, float inState, float* outGains);

/// The same with one pair of smoothers
float FollowTargets(unsigned inCount, const float* inTargets, StageSmoothers inSmoothers, float inState,
                    float* outGains);

/// Gain of a gate: goes to the targets where the level is not above the threshold, by release, and to 1 where
/// it is, by attack. Below -600 dB it is 0.
float FollowGate(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                 StageSmoothers inSmoothers, float inState, float* outGains);

/// What a gate with hold keeps between samples
struct HeldGate
{
    float mGain = 1.0f;
    unsigned mHoldCounter = 0; ///< samples that the gain still stays
    bool mWasHeld = false;     ///< whether it has stayed for one; set only
};

/// Gain of a gate with hold: goes to 1 by attack where the level is above the threshold, stays for
/// `inHoldSamples` more, and goes to the targets by release. Below -600 dB it is 0.
void FollowGateWithHold(unsigned inCount, const float* inTargets, const float* inLevels, float inThreshold,
                        StageSmoothers inSmoothers, unsigned inHoldSamples, HeldGate& ioGate,
                        float* outGains);

/// One more smoothing of a row in place: state += (row[i] - state) * factor.
float Smooth(unsigned inCount, float* ioGains, float inFactor, float inState);

} // namespace tessaro::dynamics
