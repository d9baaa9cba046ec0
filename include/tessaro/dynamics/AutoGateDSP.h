#pragma once

#include <cstdint>
#include <vector>

#include <kestrin/AudioChannelDescription.h>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>
#include <tessaro/dynamics/AutoGateState.h>
#include <tessaro/frame/DataTail.h>

namespace tessaro::dynamics {

/// Gate with hold and a look-ahead of 10 ms, one gain for all channels; or, in block mode, a downward
/// expander that goes towards one target per block.
///
/// Life cycle: construct with rate, layout, block size and mode, set the parameters between blocks, process.
/// Setting the rate or the block size, or another layout, keeps the parameters, drops the running state and
/// allocates.
///
/// Defaults: threshold 0 dB, attack 1 ms, release 10 ms, hold 1 ms, ratio 100, RMS detection.
///
/// The level is the largest magnitude of all channels, or with RMS detection the root of their mean square,
/// smoothed by a one-pole of 1/8 ms. Above the threshold the gain goes to 1 by attack. When the level is no
/// longer above it, the gain stays for the hold time and then goes by release to where the curve is: `ratio`
/// dB of output for a dB of level. A level at the threshold is on the curve's end at 0 dB, and not above it.
/// Times of attack and release are those of one-pole smoothers, in milliseconds *at half the sampling rate*:
/// a step gets to 63 % in half the time. 0 or less is an instant step. Below -160 dB the gate is to
/// close altogether.
///
/// The first block after construction or `Reset` decides how the gate starts: fully open if the block's
/// largest level (without the smoothing) is above the threshold, closed otherwise. By this the split of a
/// stream into blocks shows.
///
/// In block mode there is no hold, and the gain goes, sample by sample, towards 1 if the block's largest
/// level is not below the threshold, and otherwise towards the curve's gain for it by release. On the way to
/// 1 the step of each sample is what the attack's smoother *keeps*: a long attack is a quick one, and only
/// attacks that are short against a sample are slow. Scripts depend on it. An attack of 0 or less is at once.
///
/// A channel whose bit is set in the mask (modulo 64) is skipped: it is not heard by the detector and its
/// output is zeros, or left as it is where output and input are the same row. Its delay goes on, so that its
/// input row must be readable.
///
/// No parameter is checked; ranges are the caller's to keep. NaN and infinity in the input are passed on; the
/// smoothed level stays wrong until `Reset`. Nothing but the calls that size memory allocates or throws. One
/// thread at a time; the meter's read-and-clear call belongs to it too. Not copied.
class TESSARO_EXPORT AutoGateDSP : public ombrel::utility::RefCountedObject
{
public:
    using ChannelLayout = std::vector<kestrin::AudioChannelDescription>;
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    /// Rate in Hz, largest number of samples in a block. The mode stays. Throws `std::bad_alloc`. [control]
    AutoGateDSP(float inSampleRate, ChannelLayout inLayout, int inMaxBlockSize, bool inIsBlockMode);
    AutoGateDSP(const AutoGateDSP&) = delete;
    AutoGateDSP& operator=(const AutoGateDSP&) = delete;
    ~AutoGateDSP() override;

    /// `inCount` samples, at most the block size, of as many rows as the layout has channels. An output row
    /// may be its own input row, but overlap no other. An empty block changes nothing. [configured],
    /// [real-time]
    void Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                 ChannelMask inSkipped);

    /// Opens the gate, clears level, running hold, delay, meter and state, and lets the next block decide how
    /// the gate starts. [configured], [real-time]
    void Reset();

    /// All is sized anew and `Reset` follows, also if the value is the present one; but the present layout
    /// changes nothing. Throws `std::bad_alloc`. [control]
    void SetSampleRate(float inSampleRate);
    void SetMaxProcessingBlockSize(int inMaxBlockSize);
    void SetAudioChannelLayout(const ChannelLayout& inLayout);

    // All settings: [configured], [real-time].

    /// dB
    void SetThreshold(float inThreshold);
    [[nodiscard]] float GetThreshold() const { return mThreshold; }
    /// ms
    void SetAttack(float inAttack);
    [[nodiscard]] float GetAttack() const { return mAttack; }
    void SetRelease(float inRelease);
    [[nodiscard]] float GetRelease() const { return mRelease; }
    /// ms, in whole samples less one; counts from the next level above the threshold on
    void SetHold(float inHold);
    [[nodiscard]] float GetHold() const { return mHold; }
    /// dB of output for a dB of level below the threshold; 1 is no gate
    void SetRatio(float inRatio) { mRatio = inRatio; }
    [[nodiscard]] float GetRatio() const { return mRatio; }
    void SetRMSDetection(bool inOn);
    [[nodiscard]] bool GetRMSDetection() const { return mRMSDetection; }

    /// Switches the meter that `GetGainReduction` reads; off at first. [configured], [real-time]
    void EnableGainReductionMeasurement(bool inOn) { mMeasuresGainReduction = inOn; }
    /// The lowest gain since the last call, linear; 1 if nothing was measured. [configured], [real-time]
    [[nodiscard]] float GetGainReduction();
    /// After the last block. [configured], [real-time]
    [[nodiscard]] AutoGateState GetState() const { return mState; }

    /// Samples by which the output is late: 10 ms less one sample. [configured], [real-time]
    [[nodiscard]] int GetLatency() const;

private:
    void Rebuild();
    void Detect(unsigned inCount, const float* const* inInput, ChannelMask inSkipped);
    void ComputeCurve(unsigned inCount);
    void FollowBlock(unsigned inCount, float inHighest);
    void FollowLevels(unsigned inCount, const float* inSignal, float* outCurve);
    float Apply(unsigned inCount, const float* const* inInput, float* const* outOutput,
                ChannelMask inSkipped);

    float mSampleRate;
    ChannelLayout mLayout;
    int mMaxBlockSize;
    bool mIsBlockMode;

    float mThreshold = 0.0f;
    float mAttack = 1.0f;
    float mRelease = 10.0f;
    float mHold = 1.0f;
    float mRatio = 100.0f;
    bool mRMSDetection = true;
    bool mMeasuresGainReduction = false;

    float mLinearThreshold = 1.0f;
    float mAttackKept = 0.0f;
    float mReleaseKept = 0.0f;
    float mRMSKept = 0.0f;
    unsigned mHoldSamples = 0;

    AutoGateState mState = AutoGateState::kNone;
    bool mHasSeenBlock = false;
    unsigned mHoldCounter = 0; ///< samples that the gain still stays
    bool mWasHeld = false;     ///< whether it has stayed in this block
    float mGain = 1.0f;
    float mMeanSquare = 0.0f;
    float mLowestGain = 1.0f;

    std::vector<float> mSignal; ///< what the detector hears
    std::vector<float> mCurve;
    DataTail mDelay;
};

} // namespace tessaro::dynamics
