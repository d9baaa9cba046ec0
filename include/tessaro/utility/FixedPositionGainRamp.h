#pragma once

#include <cstddef>

#include <kestrin/FrameRate.h>
#include <kestrin/TickTime.h>
#include <tessaro/Export.h>
#include <tessaro/utility/GainRamp.h>

namespace tessaro {

class AudioBuffer;

/// A gain ramp that starts at a fixed place in the timeline, however the timeline is played: in blocks of any
/// size, from any start, after any seek. Before the ramp position the initial gain holds, from there on the
/// gain moves to the target at the speed of a `GainRamp`.
///
/// Each block says where it lies. A block that does not follow on the one before is a seek: the ramp is then
/// placed anew, as far on as the time since the ramp position tells.
///
/// Latency 0, no tail. Nothing allocates or throws: `[real-time]`. One thread at a time; a plain value.
class TESSARO_EXPORT FixedPositionGainRamp
{
public:
    static constexpr float kDefaultInitialGain = GainRamp::kDefaultInitialGain;
    static constexpr float kDefaultRampingSpeed = GainRamp::kDefaultRampingSpeed;
    static constexpr std::size_t kDefaultRampBufferSize = GainRamp::kDefaultRampBufferSize;
    static constexpr std::size_t kUnitTestRampBufferSize = GainRamp::kUnitTestRampBufferSize;

    /// 48000 Hz, no ramp position, both gains 1, the default speed.
    FixedPositionGainRamp();

    /// Gains are linear and snapped as by `GainRamp`; `inRampingSpeed` in seconds from gain 0 to 1.
    FixedPositionGainRamp(kestrin::FrameRate inRate, kestrin::TickTime inRampPosition, float inInitialGain,
                          float inTargetGain, float inRampingSpeed);

    /// Processes in place a block that starts at `inPosition`. The ramp starts on the sample in which its
    /// position lies.
    void Process(const kestrin::TickTime& inPosition, AudioBuffer& ioBuffer);

private:
    void ProcessRange(kestrin::TickTime inPosition, AudioBuffer& ioBuffer, unsigned inOffset,
                      unsigned inCount);
    void Seek(kestrin::TickTime inPosition);

    kestrin::FrameRate mFrameRate;
    kestrin::TickTime mRampPosition;
    float mInitialGain;
    float mTargetGain;
    float mRampingSpeed;
    GainRamp mRamp;
    kestrin::TickTime mExpectedPosition = kestrin::TickTime::NoTime();
};

} // namespace tessaro
