#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/dynamics/LimEnvelope.h>
#include <tessaro/frame/AudioProcessor.h>
#include <tessaro/frame/DataTail.h>

namespace tessaro {

/// A peak limiter with look-ahead whose release depends on the program: no sample passes the threshold, and
/// the gain returns slowly where the music is dense and fast after a single peak.
///
/// How it works: the level over the threshold, in dB, goes through a `LimEnvelope`, which reduces smoothly
/// and in time; the audio is delayed to match. What is left above the threshold, which is next to nothing
/// with all but the lowest behaviours, is clipped. Two things can be added:
///  - analog detection looks at the levels between the samples too, by oversampling nine times;
///  - the double envelope reduces transients faster than the rest: a transient is where linear prediction
///    fails or the level jumps against its mean (see `Excitation`).
///
/// Life cycle: `SetMode`, then `Process`; setters at any time between blocks, before `SetMode` too. The
/// threshold is 0 dB, the behaviour 0.5, the channels are linked, the double envelope is on and analog
/// detection off until they are set.
///
/// Latency is `GetLatency`, which hangs on the rate and on what is switched on only: 16 ms, with the double
/// envelope 43 ms, with analog detection 8 samples more.
///
/// Flags of `Process` skip channels: unlike elsewhere such a channel is not run as silence. It takes no part
/// in the detection, its rows are neither read nor written, zeros go into its delay, and what would have come
/// out of it is lost.
///
/// All but `SetMode` is [real-time], between blocks. Blocks may have any length: `GetMaxBlockSize` tells what
/// `SetMode` was given and bounds nothing. Any split of a stream into blocks gives the same output. Rows may
/// be the same. A sample that is NaN comes out as NaN, on time; it does not stay: levels that are no numbers
/// count as 0, and infinite ones as the largest number. One thread at a time.
class TESSARO_EXPORT IRCLimiter : public AudioProcessor
{
public:
    IRCLimiter();
    ~IRCLimiter() override;

    /// Channels, rate in Hz, largest block in frames. Starts anew with all settings. [control]
    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize) override;

    /// Limits one block.
    void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                 ombrel::utility::Flags<std::uint64_t> inSkippedChannels) override;

    /// Makes the limiter as after `SetMode`.
    void Reset() override;

    /// dB. The gain follows from the next frame to be detected on, the clip behind it at once: of what is
    /// still in the delay, a lower threshold clips what the gain has not come down for.
    void SetThreshold(float inDecibels);

    /// From 0, which clips, to 1.5 and above: look-ahead and release grow, and the release clings to dense
    /// music. Above 1.5 the look-ahead stays. Below 0 (and NaN) counts as 0. Clears the history of the
    /// reduction, not that of the audio, so that what is in the delay is clipped.
    void SetBehavior(float inBehavior);

    /// How far a channel follows the levels of the others, in percent. 100 reduces all channels alike, 0 each
    /// by its own level. Resets.
    void SetStereoLinking(float inPercent);

    /// Resets and changes the latency.
    void EnableAnalogDetection(bool inEnable);
    /// Resets and changes the latency.
    void EnableDoubleEnvelope(bool inEnable);
    [[nodiscard]] bool IsAnalogDetectionEnabled() const { return mHasAnalogDetection; }
    [[nodiscard]] bool IsDoubleEnvelopeEnabled() const { return mHasDoubleEnvelope; }

    /// Frames; 0 before `SetMode`.
    [[nodiscard]] int GetLatency() const { return static_cast<int>(mInput.GetTailSize()); }

    /// The largest reduction of a channel in the last block, in dB, from 0 on; 0 for a channel that was
    /// skipped or that does not exist.
    [[nodiscard]] float GetMeter(int inChannel) const;

    /// Does nothing: the level map is made while processing. Callers of older limiters call it.
    void BuildLevelMap() {}

private:
    struct Detectors;
    using Channels = ombrel::utility::Flags<std::uint64_t>;

    void InitInputDelay();
    void ApplyBehavior();
    void Append(const float* const* inInput, unsigned inOffset, unsigned inCount, Channels inSkipped);
    void ProcessRun(unsigned inOffset, unsigned inCount, float* const* outOutput, Channels inSkipped);
    void FindPeaks(unsigned inCount, Channels inSkipped);
    void MakeLevelMap(std::size_t inChannel, unsigned inCount, Channels inSkipped);
    float MakeGain(LimEnvelope& ioEnvelope, unsigned inCount, const float* inTransients);
    void ApplyGain(std::size_t inChannel, unsigned inCount, float inReduction, float* outRow);

    float mThreshold = 0.0f; ///< dB
    float mLinearThreshold = 1.0f;
    float mBehavior = 0.5f;
    float mLink = 1.0f;
    bool mIsLinked = true;
    bool mHasAnalogDetection = false;
    bool mHasDoubleEnvelope = true;

    DataTail mInput;
    unsigned mPeakPosition = 0;      ///< in the rows of the input, of what the level map is made from
    unsigned mTransientPosition = 0; ///< of what the transient curve is made from
    std::unique_ptr<Detectors> mDetectors;
    std::vector<LimEnvelope> mEnvelopes;
    std::vector<float> mMeters;
};

} // namespace tessaro
