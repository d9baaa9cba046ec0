#pragma once

#include <array>

/// The loops of the maximizer that go sample by sample.
namespace tessaro::dynamics {

/// Writes a run into a ring at a position and reads what is the oldest then: outRow[i] was written
/// `inLength` - 1 samples before inRow[i]. The rows may not overlap.
void PassThroughRing(float* ioRing, unsigned inLength, unsigned inPosition, unsigned inCount,
                     const float* inRow, float* outRow);

/// The smallest peak that counts. Peaks that are at least this keep what falls from them out of denormal
/// numbers.
constexpr float kLeastPeak = 1e-30f;

/// Goes up with the peaks at once and falls by `inDecay` a sample; `outLevels` may be `inPeaks`.
void HoldPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioLevel, float* outLevels);

/// The same for meters, which want no row: a falling level gets a trickle that keeps it out of denormal
/// numbers.
void HoldMeterPeaks(unsigned inCount, const float* inPeaks, float inDecay, float& ioLevel);

/// The last 200 targets of a gain, of which the least holds.
///
/// The window moves over stretches of its own length. Of the stretch before, the least from each place on are
/// found when it is full; of the present one, the least is kept as it comes.
struct HoldLine
{
    static constexpr unsigned kLength = 200;

    HoldLine() { Reset(); }
    void Reset();

    /// The present stretch up to `mFilled`, behind that the least of the one before from there on, and a 1
    std::array<float, kLength + 1> mTargets;
    unsigned mFilled;
    float mLeast; ///< of the present stretch
};

struct WallSpeeds
{
    float mPeakDecay;
    float mReleaseKept;
    float mReleaseStep;
};

struct WallState
{
    float mLevel; ///< held peak
    float mGain;
    HoldLine& mHoldLine;
};

/// Gain of a brick wall: peaks are held and fall, each has the target that takes it to the threshold and not
/// a rounding above, the gain never is above any target on the line, and it rises towards 1 by release.
void FollowWall(unsigned inCount, const WallSpeeds& inSpeeds, float inThreshold, WallState& ioState,
                const float* inPeaks, float* outGains);

struct SoftSpeeds
{
    float mAttackKept;
    float mAttackStep;
    float mReleaseKept;
    float mReleaseStep;
    float mSmootherStep;
};

/// Gain that falls towards targets by attack and rises towards 1 by release, and a smoother behind it. In
/// place.
void FollowSoft(unsigned inCount, const SoftSpeeds& inSpeeds, float& ioGain, float& ioSmoothed,
                float* ioTargets);

} // namespace tessaro::dynamics
