#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro {

class IRCLimiter;

namespace dynamics {
struct HoldLine;
class MaximizerHistogram;
} // namespace dynamics

/// Makes audio louder: limits what is above a threshold, with one gain for all channels, and lifts everything
/// by margin minus threshold, so that the threshold comes out at the margin. In place, in one of four modes:
///
///  - soft: peaks over the threshold are reduced to nearly the threshold, on the curve of a ratio of 20, with
///    a gain that goes there by attack and is smoothed once more. It may lag behind a peak.
///  - brickwall: no sample passes the threshold. The gain is held at the least that the samples in sight
///    need, and is there ahead of them.
///  - digital: an `IRCLimiter` without its double envelope, whose release follows the program.
///  - program: the same with the double envelope, which lets transients go by faster.
///
/// A mode beyond these passes audio untouched.
///
/// Peaks of soft and brickwall are held and fall to 3 % in 50 ms. Their gain comes back to 1 by release.
/// Times of attack and release count at half the sampling rate: a step gets to 63 % in half its time, and 0
/// or less is an instant step. Settings are made by ear to fit that.
///
/// Defaults: soft, threshold and margin 0 dB, attack 4 ms, release 500 ms, true-peak detection off.
///
/// Life cycle: construct, set, `Process`; setters at any time between blocks. No parameter is checked. What
/// changes mode or format clears all that was heard.
///
/// Latency is `GetSystemDelay`: 262 frames in soft and brickwall at any rate, that of the limiter in the
/// other modes. A bypassed maximizer passes audio undelayed, whatever it reports, and stands still: what it
/// has in its delays comes out when it goes on. There is no tail beside the delay.
///
/// A channel whose bit is set in the mask (modulo 64) is skipped: it is not detected and not written. In soft
/// and brickwall its delay keeps what it holds, and when the channel comes back that comes out first.
///
/// `Process`, the resets, the meters and the setters of plain values are [real-time], for blocks of any size;
/// any split of a stream into blocks gives the same output. A NaN in the input comes out as NaN, on time; an
/// infinity as it went in or, where the gain is 0, as NaN, but digital and program clip it to the margin. The
/// detectors take NaN for silence and infinity for the largest number. One thread at a time, the meters
/// included. Held by `boost::intrusive_ptr`, not copied.
class TESSARO_EXPORT MaximizerDSP : public ombrel::utility::RefCountedObject,
                                    private ombrel::utility::noncopyable
{
public:
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    /// What hosts store; any other value passes audio untouched.
    enum Mode : unsigned
    {
        kSoft = 0,
        kBrickwall = 1,
        kDigital = 2,
        kProgram = 3
    };

    static constexpr unsigned kHistogramSize = 128;

    /// Largest block in frames, rate in Hz, and whether there is a histogram of levels. [control]
    MaximizerDSP(int inMaxBlockSize, float inSampleRate, int inNumChannels, bool inWithHistogram);
    ~MaximizerDSP() override;

    /// Maximizes `inCount` samples of each row, in place. [configured], [real-time]
    void Process(unsigned inCount, float* const* ioData, ChannelMask inSkipped);
    /// Forgets all that was heard, the histogram too, and keeps settings. [configured], [real-time]
    void Reset();

    /// Nothing happens while a new value equals the present one; otherwise all is sized anew and reset. The
    /// speeds of attack and release stay as they are per sample, whatever the rate, until the next
    /// `SetAttack` and `SetRelease`: hosts set them again after a change of rate, or count on it. [control]
    void SetChannelCount(int inNumChannels);
    void SetMaxProcessingBlockSize(int inMaxBlockSize);
    void SetSampleRate(float inSampleRate);

    // Settings of plain values: [configured], [real-time].

    void SetBypass(bool inBypass);
    [[nodiscard]] bool GetBypass() const { return mIsBypassed; }
    [[nodiscard]] bool IsBypassed() const { return mIsBypassed; }
    /// dB: where limiting begins. The gain that brings the margin up moves with it.
    void SetThreshold(float inDecibels);
    [[nodiscard]] float GetThreshold() const { return mThreshold; }
    /// dB: where the threshold comes out
    void SetMargin(float inDecibels);
    [[nodiscard]] float GetMargin() const { return mMargin; }
    /// Kept for hosts that store it, and does nothing: the curve of the soft mode is that of 20.
    void SetRatio(float inRatio) { mRatio = inRatio; }
    [[nodiscard]] float GetRatio() const { return mRatio; }
    /// ms; of the soft mode
    void SetAttack(float inMillis);
    [[nodiscard]] float GetAttack() const { return mAttack; }
    /// ms; of soft and brickwall
    void SetRelease(float inMillis);
    [[nodiscard]] float GetRelease() const { return mRelease; }

    /// Resets. [control]
    void SetMode(Mode inMode);
    [[nodiscard]] Mode GetMode() const { return mMode; }
    /// Whether digital and program find peaks between samples too; resets their limiter and changes their
    /// latency. Soft and brickwall go on untouched. [control]
    void SetPreventIntersampleClips(bool inPrevent);

    /// Frames. [any thread]
    [[nodiscard]] unsigned GetSystemDelay() const { return mSystemDelay; }

    // Meters: [configured], [real-time].

    /// The lowest gain since the last call, linear and without make-up, from 1 down; 1 whatever happens in
    /// soft, which does not measure. In digital and program it is that of the first channel. Returns whether
    /// anything was measured since the last call.
    bool GetGainReduction(float& outGain);
    /// The histogram is fed while the meter is visible; off at first.
    void SetMeterVisible(bool inVisible) { mIsMeterVisible = inVisible; }
    [[nodiscard]] bool IsMeterVisible() const { return mIsMeterVisible; }
    /// How many of the last 44100 frames, at any rate, had their peak in each step of 1 dB: from index 0,
    /// which is all above -1 dB, down to index 127, which is -127 dB and below; a level of exactly -n dB
    /// counts as below it, at index n. Null without histogram. Of the input, in brickwall, digital and
    /// program.
    [[nodiscard]] const unsigned* GetHistogram() const;
    /// Whether the histogram has changed since the last call
    bool IsHistogramNewData();
    void ResetHistogram();

private:
    void ProcessSoft(unsigned inCount, float* const* ioData, ChannelMask inSkipped);
    void ProcessBrickwall(unsigned inCount, float* const* ioData, ChannelMask inSkipped);
    void ProcessDigital(unsigned inCount, float* const* ioData, ChannelMask inSkipped);
    void ProcessMeters(unsigned inCount, const float* const* inData, ChannelMask inSkipped);

    void DelayInput(unsigned inOffset, unsigned inCount, const float* const* inData, ChannelMask inSkipped);
    void DelayOutput(unsigned inOffset, unsigned inCount, const float* inGains, float* const* outData,
                     ChannelMask inSkipped);
    void FindPeaks(unsigned inOffset, unsigned inCount, const float* const* inRows, ChannelMask inSkipped);
    void FeedHistogram(unsigned inCount);
    void UpdateHistogram(float inPeak);
    void NoteGain(float inGain);

    void UpdateMakeupGain();
    void UpdateAttackFactors(float inMillis, float& outKept, float& outStep) const;
    void UpdateReleaseFactors(float inMillis, float& outKept, float& outStep) const;
    void RecomputeSystemDelay();
    void UpdateAudioConfig();

    bool mIsBypassed = false;
    Mode mMode = kSoft;
    unsigned mSystemDelay = 0;
    bool mIsMeterVisible = false;
    int mMaxBlockSize;
    float mSampleRate;
    int mNumChannels;

    float mThreshold = 0.0f; ///< dB
    float mMargin = 0.0f;    ///< dB
    float mRatio = 20.0f;
    float mAttack = 4.0f;    ///< ms
    float mRelease = 500.0f; ///< ms

    float mLinearThreshold = 1.0f;
    float mMakeup = 1.0f;
    float mAttackKept = 0.0f;
    float mAttackStep = 1.0f;
    float mReleaseKept = 0.0f;
    float mReleaseStep = 1.0f;
    float mPeakDecay = 0.0f;
    float mSmootherStep = 1.0f;

    float mPeak = 0.0f;
    float mGain = 1.0f;
    float mSmoothedGain = 1.0f;
    float mLeastGain = 1.0f;
    bool mHasNewGainReduction = true;

    std::vector<float> mInputDelay;  ///< a ring for each channel
    std::vector<float> mOutputDelay; ///< a ring for each channel
    unsigned mInputPosition = 0;
    unsigned mOutputPosition = 0;
    std::vector<float> mScratch; ///< a run of each channel, behind the input delay
    std::vector<const float*> mScratchRows;
    std::vector<float> mPeaks; ///< of a run
    std::vector<float> mGains; ///< of a run
    std::unique_ptr<dynamics::HoldLine> mHoldLine;
    std::unique_ptr<dynamics::MaximizerHistogram> mHistogram;
    boost::intrusive_ptr<IRCLimiter> mLimiter;
};

} // namespace tessaro
