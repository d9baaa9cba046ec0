#pragma once

#include <cstdint>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <ombrel/utility/Flags.h>
#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro {

class LookAheadStreamer;
class SimpleIRCLimiter;

/// Limits with one soft gain for all channels, and lifts everything by margin minus threshold, so that the
/// threshold comes out at the margin. The limiter is a `SimpleIRCLimiter`; its behavior is set as a character
/// from 0, which clips, to 10.
///
/// Defaults: threshold and margin 0 dB, character 4, true-peak detection off.
///
/// Life cycle: construct, set, `Process`; setters at any time between blocks. No parameter is checked.
///
/// Latency is `GetSystemDelay`, that of the look-ahead: 742 frames at 48 kHz, whatever the settings. There is
/// no tail beside it.
///
/// A channel whose bit is set in the mask (modulo 64) is skipped: its row is not written. What it still has
/// within the look-ahead is heard by the detector, but never comes out.
///
/// `Process`, `Reset` and the setters but those of the format are [real-time], for blocks up to the maximum;
/// a larger one makes the limiter grow. The first block after a reset also takes in the look-ahead, and costs
/// as much as one that is longer by it. Any split of a stream into blocks gives the same output. A NaN or
/// infinity in the input is not heard and comes out as it is, times the gain. One thread at a time. Held by
/// `boost::intrusive_ptr`, not copied.
class TESSARO_EXPORT TubeLimiter : public ombrel::utility::RefCountedObject,
                                   private ombrel::utility::noncopyable
{
public:
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    /// Largest block in frames, rate in Hz. [control]
    TubeLimiter(int inMaxBlockSize, float inSampleRate, int inNumChannels);
    ~TubeLimiter() override;

    /// Limits `inCount` samples of each channel in place: output rows are the input rows.
    ///
    /// With separate rows nothing is limited. The make-up goes by the input rows, so that what comes out is
    /// the input times the make-up, undelayed: callers rely on it. [configured]
    void Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                 ChannelMask inSkipped);
    /// Forgets what was heard, and keeps settings. [configured], [real-time]
    void Reset();

    /// Nothing happens while a new value equals the present one; otherwise all is sized anew and reset.
    /// [control]
    void SetChannelCount(int inNumChannels);
    void SetMaxProcessingBlockSize(int inMaxBlockSize);
    void SetSampleRate(float inSampleRate);

    // Settings: [configured], [real-time].

    /// dB: what the limiter lets through
    void SetThreshold(float inDecibels);
    [[nodiscard]] float GetThreshold() const { return mThreshold; }
    /// dB: where the threshold comes out
    void SetMargin(float inDecibels);
    [[nodiscard]] float GetMargin() const { return mMargin; }
    /// 0 to about 10: from clipping over fast and clean, at 2, to releases that cling to dense music. Forgets
    /// what was heard and lets go of the gain.
    void SetCharacter(float inCharacter);
    [[nodiscard]] float GetCharacter() const { return mCharacter; }
    /// Whether peaks between samples count; a change forgets what was heard.
    void SetPreventIntersampleClips(bool inPrevent);
    [[nodiscard]] bool GetPreventIntersampleClips() const { return mPreventsIntersampleClips; }

    /// Frames. [any thread]
    [[nodiscard]] int GetSystemDelay() const;
    /// The largest reduction in the last block, in dB, 0 or more. [configured], [real-time]
    [[nodiscard]] float GetReduction() const;

private:
    void UpdateAudioConfig();
    void UpdateMakeupGain();

    int mMaxBlockSize;
    float mSampleRate;
    int mNumChannels;
    float mThreshold = 0.0f; ///< dB
    float mMargin = 0.0f;    ///< dB
    float mCharacter = 4.0f;
    bool mPreventsIntersampleClips = false;
    float mMakeup = 1.0f;
    boost::intrusive_ptr<SimpleIRCLimiter> mLimiter;
    boost::intrusive_ptr<LookAheadStreamer> mStreamer;
    std::vector<float*> mRows; ///< where the streamer writes
    std::vector<float> mSpare; ///< for what is left of skipped channels
};

} // namespace tessaro
