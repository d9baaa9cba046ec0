#include <tessaro/utility/FixedPositionGainRamp.h>

#include <algorithm>
#include <cstdint>

#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

using kestrin::FrameRate;
using kestrin::TickTime;

namespace {

constexpr FrameRate kDefaultRate{5292000}; // 48000 Hz

} // namespace

FixedPositionGainRamp::FixedPositionGainRamp()
    : FixedPositionGainRamp(kDefaultRate, TickTime::NoTime(), kDefaultInitialGain, kDefaultInitialGain,
                            kDefaultRampingSpeed)
{
}

FixedPositionGainRamp::FixedPositionGainRamp(FrameRate inRate, TickTime inRampPosition, float inInitialGain,
                                             float inTargetGain, float inRampingSpeed)
    : mFrameRate(inRate),
      mRampPosition(inRampPosition),
      mInitialGain(inInitialGain),
      mTargetGain(inTargetGain),
      mRampingSpeed(inRampingSpeed),
      mRamp(inRate, inInitialGain, inRampingSpeed)
{
}

void FixedPositionGainRamp::Process(const TickTime& inPosition, AudioBuffer& ioBuffer)
{
    ProcessRange(inPosition, ioBuffer, 0, ioBuffer.GetBufferSize());
}

void FixedPositionGainRamp::ProcessRange(TickTime inPosition, AudioBuffer& ioBuffer, unsigned inOffset,
                                         unsigned inCount)
{
    if (inPosition != mExpectedPosition) {
        Seek(inPosition);
    }
    const TickTime length(inCount, mFrameRate);
    if (inPosition < mRampPosition && mRampPosition < inPosition + length) {
        const auto before =
            std::min(inCount, static_cast<unsigned>((mRampPosition - inPosition).ToFrame64(mFrameRate)));
        ProcessRange(inPosition, ioBuffer, inOffset, before);
        ProcessRange(mRampPosition, ioBuffer, inOffset + before, inCount - before);
    } else {
        if (inPosition == mRampPosition) {
            mRamp.SetTargetGain(mTargetGain);
        }
        mRamp.ProcessRange(ioBuffer, inOffset, inCount);
    }
    // Both halves of a split block have added their lengths already, so that the block behind it arrives as a
    // seek. That is settled behaviour, and leads to the same ramp.
    mExpectedPosition += length;
}

void FixedPositionGainRamp::Seek(TickTime inPosition)
{
    mRamp = GainRamp(mFrameRate, mInitialGain, mRampingSpeed);
    if (mRampPosition < inPosition) {
        mRamp.SetTargetGain(mTargetGain);
        const auto frames = (inPosition - mRampPosition).ToFrame32(mFrameRate);
        mRamp.AdvanceWithoutProcessing(static_cast<std::size_t>(frames));
    }
    mExpectedPosition = inPosition;
}

} // namespace tessaro
