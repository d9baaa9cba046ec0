#pragma once

#include <memory>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/frame/AudioProcessor.h>
#include <tessaro/frame/DataTail1D.h>
#include <tessaro/resample/ResampleInt.h>

namespace tessaro {

class SimpleIRCCurve;

/// Look-ahead limiter whose release follows the program, with one gain for all channels: the cheap one of the
/// two of its kind.
///
/// By how many dB the loudest channel is above the threshold is a curve. Each of its points is held to both
/// sides as far as the final smoothing reaches; where the curve is busy, a long release holds the gain down,
/// where it is steady the gain comes back at once; and a raised cosine smooths the whole. So no sample passes
/// the threshold, but for a rounding of a few 1e-6 of it. The behavior goes from 0, which clips, through a
/// width that grows up to 0.3, to longer and longer releases from there on.
///
/// Life cycle: that of `AudioProcessor`, with the setters at any time between blocks. It needs samples behind
/// the block: `GetLookAhead`, 14 ms, twice the smoothing's reach at the sampling rate (0.5 to 1.3 ms) and 6
/// samples, in all 742 at 48000 Hz, whatever the settings. There is no other delay: `GetSystemDelay` is 0.
///
/// A channel that is flagged silent must be so throughout the look-ahead. It is neither heard nor written: in
/// place its samples stay, other output rows stay as they are.
///
/// `Process` is [real-time] for blocks of any size, and any split of a stream gives the same output. Its
/// first call after `Reset` also takes in the look-ahead, and costs as much as a block that is longer by so
/// much. A NaN or infinity is not heard, hides nothing in other channels, and comes out as it is, times the
/// gain.
class TESSARO_EXPORT SimpleIRCLimiter : public AudioProcessor
{
public:
    /// Threshold -3 dB, behavior 0.5, no analog detection
    SimpleIRCLimiter();
    ~SimpleIRCLimiter() override;

    /// Allocates all that is needed, and resets. [control]
    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize) override;

    /// Limits a block, and reads as many samples behind it as the look-ahead. Output rows may be the input
    /// rows. [real-time]
    void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                 ombrel::utility::Flags<std::uint64_t> inSilentChannels) override;

    /// Forgets what was heard. [configured], [real-time]
    void Reset() override;

    /// Notes the block size; what was heard stays. [configured], [real-time]
    void ChangeBufferSize(int inMaxBlockSize) override;

    /// dB. Holds for samples that come into sight from now on. [real-time]
    void SetThreshold(float inDecibels);

    /// 0 to about 1.5; less than 0 and NaN count as 0. Forgets what was heard, and with that lets go of the
    /// gain: not for automation. [configured], [real-time]
    void SetBehavior(float inBehavior);

    /// Whether peaks between samples count, found at five times the rate. A peak that `TruePeak` measures
    /// then stays within 0.1 dB of the threshold for music, 0.3 dB for a tone at a quarter of the rate
    /// and 1.2 dB for white noise. A change forgets what was heard. [configured], [real-time]
    void EnableAnalogDetection(bool inEnabled);

    /// The largest reduction in the last block, in dB, 0 or more. [configured], [real-time]
    [[nodiscard]] float GetReduction() const { return mReduction; }

private:
    using SilenceFlags = ombrel::utility::Flags<std::uint64_t>;

    void TakeIn(const float* const* inInput, int inOffset, unsigned inCount, SilenceFlags inSilentChannels);
    void BuildOverMap(const float* const* inInput, int inOffset, unsigned inCount,
                      SilenceFlags inSilentChannels);
    void TakeLevels(const float* const* inInput, int inOffset, unsigned inCount,
                    SilenceFlags inSilentChannels);
    void TakeAnalogLevels(const float* const* inInput, int inOffset, unsigned inCount,
                          SilenceFlags inSilentChannels);
    void ApplyEnv(const float* const* inInput, float* const* outOutput, int inOffset, unsigned inCount,
                  SilenceFlags inSilentChannels);

    bool mAnalogDetection = false;
    float mThreshold = -3.0f; ///< dB
    float mLinearThreshold;
    float mBehavior = 0.5f;
    bool mIsFirstBlock = true;
    float mReduction = 0.0f;

    DataTail1D mLevels;           ///< largest magnitudes of the channels, as late as the analog ones
    std::vector<float> mEnvelope; ///< of a piece: level, level above the threshold, reduction, gain
    std::vector<float> mScratch;
    ResampleInt mUpsampler;
    AudioBuffer mUpsampled;
    std::vector<const float*> mRows;
    std::vector<float> mZeros;
    std::vector<float> mAnalogLevels; ///< largest of the channels at the higher rate
    float mLastAnalogLevel = 0.0f;
    std::unique_ptr<SimpleIRCCurve> mCurve;
};

} // namespace tessaro
