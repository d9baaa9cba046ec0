#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <kestrin/AudioChannelDescription.h>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>
#include <tessaro/frame/DataTail.h>

namespace tessaro::dynamics {

class RunningMean;

/// Compressor, limiter and gate of one band in one gain curve, the same for all channels, with a short
/// look-ahead.
///
/// Life cycle: construct with rate, layout and block size, set the parameters between blocks, process. A
/// change of rate, layout or block size keeps all parameters but the detection factor, drops the running
/// state and allocates.
///
///     parameter        compressor  limiter  gate
///     threshold        0 dB        0 dB     -120 dB
///     ratio            1           1        1
///     attack           10 ms       5 ms     10 ms
///     release          100 ms      100 ms   100 ms
///
/// and an output gain of 0 dB, RMS detection and auto smoothing on, auto make-up and the measurement of gain
/// reduction off. With these the audio passes unchanged, late by `GetSystemDelay`.
///
/// The level is the largest magnitude of all channels, which falls to 3 % in 50 ms, or with RMS detection the
/// root of the mean square of all channels, smoothed by an eighth of the shorter of the compressor's attack
/// and release; never below -100 dB. From the compressor's threshold on
/// a level rises by 1 / ratio dB for each dB. From the limiter's threshold on it rises by 1 / limiter ratio,
/// going on from where the compressor's curve is there; without compression it begins at unit gain. Below
/// the gate's threshold it falls by `ratio` dB for each dB. A level at a threshold counts as above it for
/// compressor and limiter, and as not above for the gate.
///
/// Attack is the time in which gain falls towards the curve; in release it rises towards 0 dB, whatever the
/// curve says, until it meets the curve. At levels from the limiter's threshold on its times count, whatever
/// its ratio, below it those of the compressor. For the gate release is the time of closing and attack that
/// of opening. Times are those of one-pole smoothers, in milliseconds *at half the sampling rate*: a step
/// gets to 63 % in half the time. 0 or less is an instant step. Auto smoothing smooths both gains once more,
/// by half the shorter of attack and release, those of the compressor and those of the gate.
///
/// Auto make-up multiplies by the root mean square of the inverse gain of the last 4 s, counting the time
/// before the start as 0: the output fades in over 4 s. A long closed gate makes it huge.
///
/// A channel whose bit is set in the mask (modulo 64) is skipped: it is not heard by the detectors, its
/// output row is left as it is, and only its delay goes on, so that its input row must be readable.
///
/// No parameter is checked; ranges are the caller's to keep. NaN in the input is passed on; with RMS
/// detection, and after an infinity, the level stays wrong until `Reset`. Nothing but the calls that size
/// memory allocates or throws. One thread at a time; the meters' read-and-clear calls belong to it too. Held
/// by `boost::intrusive_ptr`, not copied.
///
/// Source: the feed-forward compressor with smoothing of the linear gain, as in Zoelzer, "DAFX", chapter 4.
class TESSARO_EXPORT DynamicsBand : public ombrel::utility::RefCountedObject
{
public:
    using ChannelLayout = std::vector<kestrin::AudioChannelDescription>;
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    /// Thresholds in dB, none of them above the one before
    struct OrderedThresholds
    {
        float mLimiter = 0.0f;
        float mCompressor = 0.0f;
        float mGate = -120.0f;
    };

    /// Rate in Hz, largest number of samples in a block. Throws `std::bad_alloc`. [control]
    DynamicsBand(float inSampleRate, ChannelLayout inLayout, int inMaxBlockSize);
    DynamicsBand(const DynamicsBand&) = delete;
    DynamicsBand& operator=(const DynamicsBand&) = delete;
    ~DynamicsBand() override;

    /// `inCount` samples, at most the block size, of as many rows as the layout has channels. An output row
    /// may be its own input row, but overlap no other. [configured], [real-time]
    void Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                 ChannelMask inSkipped);
    void ProcessInPlace(unsigned inCount, float* const* ioChannels, ChannelMask inSkipped);

    /// Clears levels, gains, delay and meters. What the make-up has summed up is *not* forgotten: it stays as
    /// a surplus over the sum of the next 4 s and all later ones, unless NaN or infinity have been heard.
    /// [configured], [real-time]
    void Reset();

    /// Nothing happens if the new value equals the present one. Otherwise all is sized anew, factors are
    /// those of the rate again, the factor of detection included, and `Reset` follows. Throws
    /// `std::bad_alloc`. [control]
    void SetSampleRate(float inSampleRate);
    void SetMaxProcessingBlockSize(int inMaxBlockSize);
    void SetAudioChannelLayout(const ChannelLayout& inLayout);

    // All settings: [configured], [real-time]. Thresholds and gain in dB, times in ms, ratios are the dB of
    // level for a dB of output (compressor and limiter) or the dB of output for a dB of level (gate).

    void SetCompThreshold(float inThreshold);
    void SetCompRatio(float inRatio);
    void SetCompAttack(float inAttack);
    void SetCompRelease(float inRelease);
    [[nodiscard]] float GetCompThreshold() const { return mComp.mThreshold; }
    [[nodiscard]] float GetCompRatio() const { return mComp.mRatio; }
    [[nodiscard]] float GetCompAttack() const { return mComp.mAttack; }
    [[nodiscard]] float GetCompRelease() const { return mComp.mRelease; }

    void SetLimThreshold(float inThreshold);
    void SetLimRatio(float inRatio);
    void SetLimAttack(float inAttack);
    void SetLimRelease(float inRelease);
    [[nodiscard]] float GetLimThreshold() const { return mLim.mThreshold; }
    [[nodiscard]] float GetLimRatio() const { return mLim.mRatio; }
    [[nodiscard]] float GetLimAttack() const { return mLim.mAttack; }
    [[nodiscard]] float GetLimRelease() const { return mLim.mRelease; }

    void SetGateThreshold(float inThreshold);
    void SetGateRatio(float inRatio);
    void SetGateAttack(float inAttack);
    void SetGateRelease(float inRelease);
    [[nodiscard]] float GetGateThreshold() const { return mGate.mThreshold; }
    [[nodiscard]] float GetGateRatio() const { return mGate.mRatio; }
    [[nodiscard]] float GetGateAttack() const { return mGate.mAttack; }
    [[nodiscard]] float GetGateRelease() const { return mGate.mRelease; }

    /// For a display that keeps the three in order: each as it was set last, but that a threshold which was
    /// raised since has pushed up those that belong above it, and one which was lowered has pushed down those
    /// below. Processing goes by the thresholds as they were set.
    [[nodiscard]] OrderedThresholds GetOrderedThresholds() const { return mOrdered; }

    void SetOutputGain(float inGain);
    [[nodiscard]] float GetOutputGain() const { return mOutputGain; }
    void SetAutoMakeupGain(bool inOn) { mAutoMakeupGain = inOn; }
    [[nodiscard]] bool GetAutoMakeupGain() const { return mAutoMakeupGain; }
    void SetAutoSmoothing(bool inOn) { mAutoSmoothing = inOn; }
    [[nodiscard]] bool GetAutoSmoothing() const { return mAutoSmoothing; }
    void SetRMSDetection(bool inOn) { mRMSDetection = inOn; }
    [[nodiscard]] bool GetRMSDetection() const { return mRMSDetection; }
    /// Whether gain reduction is measured
    void SetGainReductionEnabled(bool inOn) { mGainReductionEnabled = inOn; }
    [[nodiscard]] bool GetGainReductionEnabled() const { return mGainReductionEnabled; }
    /// What the peak detector keeps of its level in a sample without a higher peak, 0 to 1
    void SetFactorDetection(float inFactor) { mFactorDetection = inFactor; }
    [[nodiscard]] float GetFactorDetection() const { return mFactorDetection; }

    /// The lowest gain of compressor and limiter since the last call times the lowest gain of the gate,
    /// linear, without output gain and make-up; 1 if nothing was measured. [configured], [real-time]
    [[nodiscard]] float GetGainReduction();
    /// Peak magnitude of each channel in the last block that it was heard in, linear, if the vector has as
    /// many elements as there are channels; otherwise nothing happens. Sets the peaks to 0. [configured],
    /// [real-time]
    void GetLevels(std::vector<float>& outLevels);

    /// Samples by which the output is late: 1 ms less one sample. [any thread], [real-time]
    [[nodiscard]] int GetSystemDelay() const { return GetSystemDelay(mSampleRate); }
    [[nodiscard]] static int GetSystemDelay(float inSampleRate);

private:
    struct Stage
    {
        float mThreshold;
        float mRatio;
        float mAttack;
        float mRelease;
        float mLinearThreshold = 1.0f;
        double mExponent = 0.0;   ///< of level / threshold
        float mAttackKept = 0.0f; ///< of a smoother's state, in a sample
        float mReleaseKept = 0.0f;
    };

    void Rebuild();
    void UpdateThreshold(Stage& ioStage, float inThreshold);
    void UpdateMaxCompressorGain();
    void UpdateTimes(Stage& ioStage);
    void Detect(unsigned inCount, const float* const* inInput, ChannelMask inSkipped);
    void ComputeCurve(unsigned inCount, const float* inPeaks, const float* inMeanSquares, float* outCurve);
    void ComputeTargets(unsigned inCount, const float* inLevels, float* outTargets) const;
    void FollowTargets(unsigned inCount, const float* inLevels, float* ioGains);
    void ApplyGate(unsigned inCount, const float* inLevels, float* ioGains);
    void ApplyMakeup(unsigned inCount, const float* inGains, float* ioCurve);
    void Apply(unsigned inCount, const float* const* inInput, float* const* outOutput, ChannelMask inSkipped);

    float mSampleRate;
    ChannelLayout mLayout;
    int mMaxBlockSize;

    Stage mComp = {0.0f, 1.0f, 10.0f, 100.0f};
    Stage mLim = {0.0f, 1.0f, 5.0f, 100.0f};
    Stage mGate = {-120.0f, 1.0f, 10.0f, 100.0f};
    OrderedThresholds mOrdered;
    float mOutputGain = 0.0f;
    bool mAutoMakeupGain = false;
    bool mAutoSmoothing = true;
    bool mRMSDetection = true;
    bool mGainReductionEnabled = false;
    float mFactorDetection = 0.0f;

    float mLinearOutputGain = 1.0f;
    float mMaxCompressorGain = 1.0f;
    float mSmoothingKept = 0.0f;
    float mGateSmoothingKept = 0.0f;
    float mRMSKept = 0.0f;

    float mPeak = 0.0f;
    float mMeanSquare = 0.0f;
    float mGain = 1.0f;
    float mSmoothedGain = 1.0f;
    float mGateGain = 1.0f;
    float mSmoothedGateGain = 1.0f;
    float mLowestGain = 1.0f;
    float mLowestGateGain = 1.0f;
    std::vector<float> mLevels; ///< peak of each channel

    std::vector<float> mPeaks;        ///< largest magnitude of all channels, sample by sample
    std::vector<float> mSumOfSquares; ///< of all channels, then the mean
    std::vector<float> mCurve;
    std::unique_ptr<RunningMean> mMakeup; ///< of the squared inverse gain
    DataTail mDelay;
};

} // namespace tessaro::dynamics
