#include <tessaro/utility/GainTransition.h>

#include <algorithm>

#include <tessaro/utility/Gain.h>

namespace tessaro {

GainTransition::GainTransition(unsigned inMaxEvents)
{
    mEvents.reserve(inMaxEvents);
}

GainTransition::~GainTransition() = default;
GainTransition::GainTransition(GainTransition&& ioOther) noexcept = default;
GainTransition& GainTransition::operator=(GainTransition&& ioOther) noexcept = default;

bool GainTransition::RampTo(std::int64_t inStart, std::int64_t inLength, float inGain)
{
    if (mEvents.size() == mEvents.capacity()) {
        return false;
    }
    if (inGain == (mEvents.empty() ? mCurrentGain : mEvents.back().mTargetGain)) {
        return true;
    }
    const auto earliest = mEvents.empty() ? 0 : mEvents.back().mStart;
    mEvents.push_back({inGain, std::max(inStart, earliest), std::max<std::int64_t>(inLength, 0)});
    return true;
}

bool GainTransition::JumpTo(std::int64_t inStart, float inGain)
{
    return RampTo(inStart, 0, inGain);
}

void GainTransition::Process(float* const* ioChannels, std::size_t inNumChannels, std::int64_t inNumSamples)
{
    std::int64_t position = 0;
    std::size_t finished = 0;
    while (finished < mEvents.size() && mEvents[finished].mStart < inNumSamples) {
        auto& event = mEvents[finished];
        ApplyGain(ioChannels, inNumChannels, position, event.mStart - position, mCurrentGain);

        const auto stretch = FitRamp(finished, inNumSamples);
        if (event.mLength != 0) {
            ApplyGainWithRamping(ioChannels, inNumChannels, event.mStart, stretch.mLength, mCurrentGain,
                                 stretch.mEndGain);
        }
        mCurrentGain = stretch.mEndGain;
        position = event.mStart + stretch.mLength;
        if (stretch.mIsUnfinished) {
            event.mStart += stretch.mLength;
            event.mLength -= stretch.mLength;
            break;
        }
        ++finished;
    }
    ApplyGain(ioChannels, inNumChannels, position, inNumSamples - position, mCurrentGain);
    StartNextBlock(finished, inNumSamples);
}

/// A ramp ends early where the next event starts, and is put off at the end of the block.
GainTransition::Stretch GainTransition::FitRamp(std::size_t inEvent, std::int64_t inNumSamples) const
{
    const auto& ramp = mEvents[inEvent];
    Stretch stretch{ramp.mLength, ramp.mTargetGain, false};
    if (inEvent + 1 < mEvents.size()) {
        const auto untilNext = mEvents[inEvent + 1].mStart - ramp.mStart;
        if (ramp.mLength > untilNext) {
            stretch = {untilNext, GainWithin(ramp, untilNext), false};
        }
    }
    const auto untilEnd = inNumSamples - ramp.mStart;
    if (stretch.mLength > untilEnd) {
        stretch = {untilEnd, GainWithin(ramp, untilEnd), true};
    }
    return stretch;
}

float GainTransition::GainWithin(const Event& inRamp, std::int64_t inSamples) const
{
    const float step = (inRamp.mTargetGain - mCurrentGain) / static_cast<float>(inRamp.mLength);
    return mCurrentGain + step * static_cast<float>(inSamples);
}

void GainTransition::StartNextBlock(std::size_t inFinishedEvents, std::int64_t inNumSamples)
{
    mEvents.erase(mEvents.begin(), mEvents.begin() + static_cast<std::ptrdiff_t>(inFinishedEvents));
    for (auto& event : mEvents) {
        event.mStart -= inNumSamples;
    }
}

} // namespace tessaro
