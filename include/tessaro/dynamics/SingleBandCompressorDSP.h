#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <kestrin/AudioChannelDescription.h>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro::dynamics {

class RunningMean;

/// Peak compressor with one gain for all channels and a short look-ahead.
///
/// Life cycle: construct with rate and layout, set the parameters between blocks, process blocks of any
/// length. A change of rate or layout keeps the parameters, drops the running state and allocates.
///
/// Defaults: threshold 0 dB, ratio 1, attack 10 ms, release 100 ms, output gain 0 dB, no make-up. With these
/// the audio passes unchanged, late by `GetLatency`.
///
/// The level is the largest magnitude of all channels, which falls to 3 % in 50 ms. From the threshold on it
/// rises by 1 / ratio dB for each dB. The gain falls towards that curve by attack; it rises towards 0 dB,
/// whatever the curve says, by release until it meets the curve; and it is then smoothed once more by half
/// the shorter of the two. Times are those of one-pole smoothers, in milliseconds *at half the sampling
/// rate*: a step gets to 63 % in half the time. 0 or less is an instant step.
///
/// Auto make-up raises the output by the mean of the gain reduction in dB over the last 2 s, counting the
/// time before the start as no reduction. This is another measure than that of `DynamicsBand`.
///
/// A channel whose bit is set in the mask (modulo 64) is skipped: it is not read, its output is zeros and
/// its delay stands still, so that up to 1 ms from before comes out when it is heard again.
///
/// No parameter is checked; ranges are the caller's to keep. NaN in the input is passed on and not heard by
/// the detector; an infinity mutes until `Reset`. Nothing but the calls that size memory allocates or throws.
/// One thread at a time; the meters' read-and-clear calls belong to it too. Held by `boost::intrusive_ptr`,
/// not copied.
///
/// Source: the feed-forward compressor with smoothing of the linear gain, as in Zoelzer, "DAFX", chapter 4.
class TESSARO_EXPORT SingleBandCompressorDSP : public ombrel::utility::RefCountedObject
{
public:
    using ChannelLayout = std::vector<kestrin::AudioChannelDescription>;
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    /// Rate in Hz. Throws `std::bad_alloc`. [control]
    SingleBandCompressorDSP(float inSampleRate, ChannelLayout inLayout);
    SingleBandCompressorDSP(const SingleBandCompressorDSP&) = delete;
    SingleBandCompressorDSP& operator=(const SingleBandCompressorDSP&) = delete;
    ~SingleBandCompressorDSP() override;

    /// `inCount` samples of as many rows as the layout has channels. An output row may be its own input row,
    /// but overlap no other. [configured], [real-time]
    void Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                 ChannelMask inSkipped);

    /// Clears level, gain, make-up, delay and meters. [configured], [real-time]
    void Reset();

    /// Nothing happens if the new value equals the present one; otherwise all is sized anew and `Reset`
    /// follows. Throws `std::bad_alloc`. [control]
    void SetSampleRate(float inSampleRate);
    void SetAudioChannelLayout(const ChannelLayout& inLayout);

    // All settings: [configured], [real-time].

    /// dB; a level at the threshold counts as above it
    void SetThreshold(float inThreshold);
    [[nodiscard]] float GetThreshold() const { return mThreshold; }
    /// dB of level for a dB of output; 1 is no compression
    void SetRatio(float inRatio);
    [[nodiscard]] float GetRatio() const { return mRatio; }
    /// ms
    void SetAttack(float inAttack);
    [[nodiscard]] float GetAttack() const { return mAttack; }
    void SetRelease(float inRelease);
    [[nodiscard]] float GetRelease() const { return mRelease; }
    /// dB
    void SetOutputGain(float inGain);
    [[nodiscard]] float GetOutputGain() const { return mOutputGain; }
    void SetAutoMakeupGain(bool inOn) { mAutoMakeupGain = inOn; }
    [[nodiscard]] bool GetAutoMakeupGain() const { return mAutoMakeupGain; }

    /// The lowest gain since the last call, linear, without output gain and make-up; 1 if nothing was
    /// processed. [configured], [real-time]
    [[nodiscard]] float GetGainReduction();
    /// Peak magnitude of each channel since the last call, linear, if the vector has as many elements as
    /// there are channels; otherwise nothing happens. Sets the peaks to 0. [configured], [real-time]
    void GetLevels(std::vector<float>& outLevels);

    /// Samples by which the output is late: 1 ms less one sample. [configured], [real-time]
    [[nodiscard]] int GetLatency() const;

private:
    /// What a delay needs to go on, and room for a run behind it
    using DelayRow = std::vector<float>;

    void Rebuild();
    void UpdateTimes();
    void ProcessRun(unsigned inOffset, unsigned inCount, const float* const* inInput, float* const* outOutput,
                    ChannelMask inSkipped);
    void ComputeCurve(unsigned inCount, float* ioPeaks, float* outCurve);
    void ApplyMakeup(unsigned inCount, const float* inGains, float* ioCurve);

    float mSampleRate;
    ChannelLayout mLayout;
    float mThreshold = 0.0f;
    float mRatio = 1.0f;
    float mAttack = 10.0f;
    float mRelease = 100.0f;
    float mOutputGain = 0.0f;
    bool mAutoMakeupGain = false;

    float mFactorDetection = 0.0f;
    float mLinearThreshold = 1.0f;
    double mExponent = 0.0; ///< of level / threshold
    float mAttackKept = 0.0f;
    float mReleaseKept = 0.0f;
    float mSmoothingKept = 0.0f;
    float mLinearOutputGain = 1.0f;

    float mPeak = 0.0f;
    float mGain = 1.0f;
    float mSmoothedGain = 1.0f;
    float mLowestGain = 1.0f;
    std::vector<float> mLevels; ///< peak of each channel
    std::vector<DelayRow> mDelays;
    std::unique_ptr<RunningMean> mMakeup; ///< of the reduction in dB
};

} // namespace tessaro::dynamics
