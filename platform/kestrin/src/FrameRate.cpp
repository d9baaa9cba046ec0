#include <kestrin/FrameRate.h>

#include <algorithm>
#include <cmath>

namespace kestrin {

namespace {

constexpr std::int32_t kMostSeconds = 36000000;
static_assert(kMostSeconds < FrameRate::kInvalidTicks / kTicksPerSecond);

/// Both above 0.
FrameRate RateOfNearestLength(std::int64_t inTicks, std::int32_t inFrames)
{
    const auto quotient = inTicks / inFrames;
    const auto remainder = inTicks % inFrames;
    const auto nearest = remainder >= inFrames - remainder ? quotient + 1 : quotient;
    return FrameRate(std::max<std::int64_t>(nearest, 1));
}

} // namespace

FrameRate FrameRate::FromFramesPerSecond(double inFramesPerSecond)
{
    const auto ticks = std::round(static_cast<double>(kTicksPerSecond) / inFramesPerSecond);
    // False for NaN, and for rates so slow that the length of a frame leaves the range.
    const auto isRate = inFramesPerSecond > 0.0 && ticks < static_cast<double>(kInvalidTicks);
    return isRate ? FrameRate(std::max<std::int64_t>(static_cast<std::int64_t>(ticks), 1)) : FrameRate();
}

FrameRate FrameRate::FromRatio(std::int32_t inFrames, std::int32_t inSeconds)
{
    const auto isRate = inFrames > 0 && inSeconds > 0 && inSeconds <= kMostSeconds;
    return isRate ? RateOfNearestLength(kTicksPerSecond * inSeconds, inFrames) : FrameRate();
}

FrameRate FrameRate::operator*(int inFactor) const
{
    if (!IsValid()) {
        return *this;
    }
    return inFactor > 0 ? RateOfNearestLength(mTicksPerFrame, inFactor) : FrameRate();
}

} // namespace kestrin
