#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <ombrel/utility/Flags.h>
#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/loudness/TruePeak.h>
#include <tessaro/utility/MultiChannelDelayBuffer.h>

namespace tessaro {

/// Peak limiter with look-ahead: no sample passes the ceiling, and the gain gets there without a corner.
///
/// Each channel has an envelope. Towards louder samples it climbs on the straight line that reaches the
/// steepest peak within the look-ahead exactly when that peak comes out; from a peak it falls exponentially,
/// by its release time. The gain is the ceiling over the envelope wherever the envelope is above the ceiling,
/// and 1 elsewhere. Computed in double precision, so that a peak comes out at the ceiling and not a bit
/// above.
///
/// Life cycle: construct, `SetChannels`, `SetSampleRate`, parameters, `Resume`; then `Process`, with
/// `SetParameter` between blocks. Parameters are only noted when they are set; the next `Process` applies
/// them. It also makes up for an initialization that is due, so that any order of calls is safe.
///
/// Parameters; switches are on from 0.5 up:
///
///     index  meaning                  unit  range         default
///     0      ceiling                  dB    -100 .. 0     -0.1
///     1      input gain               dB    -100 .. 50    0
///     2      look-ahead               ms    5 .. 20       7
///     3      release                  ms    40 .. 200     100
///     4      link channels                  -0.5 .. 1.49  1
///     5      release towards ceiling        -0.5 .. 1.49  1
///     6      true-peak detection            -0.5 .. 1.49  0
///
/// The input gain moves in a straight line over the block that follows its change; the other parameters
/// change at once. The release is the time in which the envelope falls to 15 %, -16.5 dB: of its way to the
/// ceiling or to the largest sample within the look-ahead, whichever is higher, or, with parameter 5 off, of
/// its whole height, as long as no sample within the look-ahead is higher. In that form it starts from 1 and
/// not from the ceiling. Linked, all channels get the gain of the channel with the highest envelope.
///
/// True-peak detection takes what lies between samples into account, as `TruePeakResampler` finds it. What
/// `TruePeak` then measures above the ceiling is below 0.01 dB, also for white noise. An interpolator with
/// more points and the whole band finds up to 0.4 dB more in loud music, and 2.2 dB in white noise.
///
/// Latency (`GetLatency`): 20 ms, whatever the look-ahead, and with true-peak detection the delay of the
/// detector. Tail: the same.
///
/// A NaN or infinity comes out as it went in, once, and moves no envelope; with true-peak detection nothing
/// between the samples near it does. One thread at a time; `IsLimiting` and `GetLeastGain` are plain reads.
/// `Process` is [real-time] once `Resume` has been called after construction, after each change of channels
/// or rate, and after `Deinitialize`; without it the first `Process` allocates. The output does not depend on
/// the split into blocks while the input gain rests. Not copied.
class TESSARO_EXPORT HardLimit
{
public:
    /// Bit n set: channel n, and each channel n + 64 and so on, is left out.
    using ChannelMask = ombrel::utility::Flags<std::uint64_t>;

    static constexpr int kNumParameters = 7;

    /// Two channels at 44100 Hz. `inWithOversampling`: whether true-peak detection can be switched on.
    /// [control]
    explicit HardLimit(bool inWithOversampling = false);
    HardLimit(const HardLimit&) = delete;
    HardLimit& operator=(const HardLimit&) = delete;
    ~HardLimit();

    /// Both make an initialization due. The rate in Hz, 100 or more. [configured], [real-time]
    void SetChannels(std::size_t inChannels);
    void SetSampleRate(int inSampleRate);

    /// Makes an initialization due: the next `Resume` or `Process` clears all that was heard. [configured],
    /// [real-time]
    void Deinitialize();
    /// Allocates what is needed, clears all that was heard, applies the parameters and ends the ramp of the
    /// input gain. [control]
    void Resume();
    /// Does nothing. [any thread], [real-time]
    void Suspend() {}

    /// Limits `inCount` samples of each channel. An output row may be the input row of its own channel.
    ///
    /// Channels of the mask are skipped: not read, not detected, and not written, so that rows of another
    /// output stay as they are. A channel that comes back begins with a delay line of zeros and the envelope
    /// that it had. [configured]
    void Process(const float* const* inInput, float* const* outOutput, int inCount, ChannelMask inMask = {});

    /// Whether the gain went below 0.9999 in the last block. [configured], [real-time]
    [[nodiscard]] bool IsLimiting() const { return mIsLimiting; }
    /// The lowest gain of the last block, linear and without the input gain. [configured], [real-time]
    [[nodiscard]] float GetLeastGain() const { return static_cast<float>(mLeastGain); }
    /// How late the output is, in samples. Follows the rate and parameter 6 at once. [configured],
    /// [real-time]
    [[nodiscard]] int GetLatency() const;

    /// Notes a parameter; an index that does not exist is ignored. A value outside of its range, NaN
    /// included, becomes the *middle* of the range. Switches are stored as 0 or 1. Parameter 6 stays 0 on an
    /// object without oversampling; elsewhere, 6 on sets 5 on as well. [configured], [real-time]
    void SetParameter(int inIndex, float inValue);
    /// 0 for an index that does not exist. [configured], [real-time]
    [[nodiscard]] float GetParameter(int inIndex) const;
    /// Changes the range of parameter 3, the release; its value stays. Any other index is ignored: only the
    /// release may have another range. [configured], [real-time]
    void SetBounds(int inIndex, float inMinimum, float inMaximum);
    /// An index that does not exist leaves the outputs as they are. [configured], [real-time]
    void GetBounds(int inIndex, float& outMinimum, float& outMaximum) const;

private:
    using Values = std::array<float, kNumParameters>;
    struct Channel;
    /// The arguments of `Process`
    struct Block
    {
        const float* const* mInput;
        float* const* mOutput;
        unsigned mCount;
        ChannelMask mMask;
    };

    [[nodiscard]] bool IsOn(std::size_t inIndex) const { return mValues[inIndex] >= 0.5f; }
    [[nodiscard]] double GetLinear(std::size_t inIndex) const;
    [[nodiscard]] unsigned GetDelaySize() const;
    [[nodiscard]] unsigned GetCompensation() const;

    void SetDefaultParameters();
    void Initialize();
    void CatchUp();
    void ApplyParameters();
    [[nodiscard]] double GetInitialEnvelope() const;
    void StartTruePeak(std::size_t inChannel);
    void FollowMask(ChannelMask inMask);

    void ProcessChunk(const Block& inBlock, unsigned inStart, unsigned inCount, bool inIsOversampled);
    void ProcessPiece(const Block& inBlock, unsigned inStart, unsigned inCount, bool inIsOversampled,
                      unsigned inStartInChunk);
    void MakeInputGains(const Block& inBlock, unsigned inStart, unsigned inCount);
    void TakeInput(std::size_t inChannel, const float* inInput, unsigned inCount);
    void TakeTruePeaks(std::size_t inChannel, unsigned inStartInChunk, unsigned inCount);
    void HoldBack(std::size_t inChannel, unsigned inCount);
    [[nodiscard]] double MakeGains(ChannelMask inMask, unsigned inCount);
    void WriteOutput(std::size_t inChannel, float* outOutput, unsigned inCount);

    bool mWithOversampling;
    bool mNeedsInitialize = true;
    bool mParametersChanged = true;
    bool mIsLimiting = false;
    std::size_t mChannelCount = 2;
    int mSampleRate = 44100;
    Values mValues{};
    Values mMinima{};
    Values mMaxima{};

    unsigned mDelaySize = 0; ///< length of the delay rings, in samples
    unsigned mWritePosition = 0;
    unsigned mLookAhead = 0; ///< samples
    bool mIsTruePeak = false;
    double mTargetGain = 1.0; ///< of the input, linear
    double mCurrentGain = 1.0;
    double mCeiling = 1.0; ///< linear
    double mLeastGain = 1.0;
    ChannelMask mLastMask;

    std::vector<std::unique_ptr<Channel>> mChannels;
    AudioBuffer mMagnitudes;            ///< delay rings of what the envelopes look at
    AudioBuffer mSignals;               ///< delay rings of the signal
    AudioBuffer mOversampled;           ///< a chunk of each channel
    MultiChannelDelayBuffer mAlignment; ///< holds the signal back until the detector has seen it
    AudioBuffer mPiece;                 ///< signals on their way into the rings
    std::vector<float> mArriving;       ///< magnitudes of one channel on their way into the ring
    std::vector<float> mInputGains;
};

} // namespace tessaro
