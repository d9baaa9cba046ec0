#pragma once

#include <cstddef>
#include <cstdint>

#include <kestrin/FrameRate.h>
#include <tessaro/Export.h>

namespace tessaro {

class AudioBuffer;

/// A gain that follows its target without clicks, and knows about silence.
///
/// Set a target between blocks, then process blocks: the gain moves toward the target at a fixed speed in
/// gain per second, so that a short way takes a short time. The first sample of a ramp is already one step on
/// its way, the target is met exactly. At unity and on silent buffers nothing is multiplied; a silent buffer
/// still moves the ramp on in time.
///
/// Gains are linear, from 0 upward. Each gain given is snapped: below 1e-6, NaN and negative gains included,
/// it becomes exactly 0; within 1e-6 of 1 exactly 1.
///
/// Latency 0, no tail. Any block size; all channels get the same ramp; the output does not depend on how a
/// stream is split into blocks (`AdvanceWithoutProcessing` rounds otherwise than the ramp). Nothing allocates
/// or throws: `[real-time]` throughout. One thread at a time; a plain value, freely copied.
class TESSARO_EXPORT GainRamp
{
public:
    static constexpr float kDefaultInitialGain = 1.0f;
    /// Seconds that the whole way from 0 to 1 takes.
    static constexpr float kDefaultRampingSpeed = 0.005f;
    /// Floats of ramp that `Process` makes at a time, on the stack.
    static constexpr std::size_t kDefaultRampBufferSize = 8192;
    static constexpr std::size_t kUnitTestRampBufferSize = 4;

    enum ProcessResult
    {
        kNonSilent = 0,
        kSilent = 1, ///< the gain was 0 throughout, and the samples are zeros now
    };

    /// 48000 Hz, gain 1, the default speed.
    GainRamp();

    /// `inSampleRate` in Hz, `inRampingSpeed` in seconds from gain 0 to 1. If either is not above 0, every
    /// ramp is a jump on its first sample.
    explicit GainRamp(float inSampleRate, float inInitialGain = kDefaultInitialGain,
                      float inRampingSpeed = kDefaultRampingSpeed);
    explicit GainRamp(const kestrin::FrameRate& inRate, float inInitialGain = kDefaultInitialGain,
                      float inRampingSpeed = kDefaultRampingSpeed);

    /// Starts a ramp from the current gain. Nothing happens if this is the target already, so a ramp in
    /// progress is not disturbed.
    void SetTargetGain(float inGain);

    /// Moves a ramp on by `inSamples` samples.
    void AdvanceWithoutProcessing(std::size_t inSamples);

    /// True when the gain rests at exactly 0, so that the next block will be silent.
    [[nodiscard]] bool HasConstantGainZero() const;

    /// Processes in place. A block in which a ramp reaches 0 is not silent yet, the next one is. `N` bounds
    /// the stack buffer and does not change the result; the two sizes above exist.
    template <std::size_t N = kDefaultRampBufferSize>
    ProcessResult Process(float* const* ioChannels, std::size_t inNumChannels, int inNumSamples);

    /// Processes from source to destination, without a stack buffer. The rows may be the same as a whole, or
    /// distinct: a destination row may not be the source row of another channel.
    ProcessResult Process(const float* const* inSource, float* const* outDest, std::size_t inNumChannels,
                          int inNumSamples);

    /// Processes in place; marks the buffer silent when the result is. A silent buffer only lets time pass,
    /// and the memory of a channel that is flagged silent is neither read nor written.
    void Process(AudioBuffer& ioBuffer);

    /// Processes one channel in place, and marks it silent or not. A channel that does not exist counts as
    /// silent.
    void Process(AudioBuffer& ioBuffer, std::size_t inChannel);

    /// Processes one channel into another, of the same buffer or not, and marks that silent or not. The
    /// shorter use size counts.
    void Process(const AudioBuffer& inSource, std::size_t inSourceChannel, AudioBuffer& ioDest,
                 std::size_t inDestChannel);

private:
    friend class FixedPositionGainRamp;

    enum class State
    {
        kUnity = 0,
        kConstant = 1,
        kRamping = 2
    };

    void CreateRamp(float* outRamp, std::size_t inCount);
    void EndRampOnTarget();
    /// Channels whose bit is set are left alone.
    template <std::size_t N>
    ProcessResult ProcessRange(float* const* ioChannels, std::size_t inNumChannels, std::size_t inOffset,
                               std::size_t inCount, std::uint64_t inSilentChannels = 0);
    ProcessResult ProcessRows(const float* const* inSource, float* const* outDest, std::size_t inNumChannels,
                              unsigned inCount);
    void ProcessRange(AudioBuffer& ioBuffer, unsigned inOffset, unsigned inCount);

    State mState;
    float mCurrentGain;
    float mTargetGain;
    float mStep; ///< per sample, signed by the direction of the ramp
};

} // namespace tessaro
