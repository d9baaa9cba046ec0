#pragma once

#include <compare>
#include <cstdint>
#include <limits>

#include <kestrin/Export.h>

namespace kestrin {

/// The clock of media time. It is divided evenly by all usual sample rates and by all film and video rates,
/// those slowed by 1000/1001 included, so that the length of a sample or of a video frame is a whole number
/// of ticks.
inline constexpr std::int64_t kTicksPerSecond = 254016000000;

/// A rate of video frames or audio samples, held as the length of one frame in ticks: 5292000 is 48000 Hz,
/// 8475667200 is 29.97 frames a second.
///
/// Two values are no rate: 0, and the largest 64-bit value, a rate of 0 Hz, which a rate holds that was never
/// set. Negative lengths are no rate either. Whatever converts by a value that is no rate answers 0.
///
/// A plain 64-bit value: trivially copied, nothing throws, `[any thread]` and `[real-time]` throughout.
class FrameRate
{
public:
    /// The length of a frame in an invalid rate, that is, in one that was never set.
    static constexpr std::int64_t kInvalidTicks = std::numeric_limits<std::int64_t>::max();

    /// Invalid.
    constexpr FrameRate() = default;

    /// A rate whose frames last `inTicksPerFrame` ticks. Any value is taken and kept as it is.
    constexpr explicit FrameRate(std::int64_t inTicksPerFrame) : mTicksPerFrame(inTicksPerFrame) {}

    /// `inFramesPerSecond` rounded to whole ticks a frame: exact for the usual sample rates and whole frame
    /// rates. The slowed video rates are exact only through `FromRatio`, as 29.97 is not 30000/1001. Values
    /// that are not above 0, and NaN, give the invalid rate; infinity and all above the tick clock give one
    /// tick a frame.
    KESTRIN_EXPORT static FrameRate FromFramesPerSecond(double inFramesPerSecond);

    /// `inFrames` frames in `inSeconds` seconds, as 30000 in 1001 for 29.97, rounded to whole ticks a frame
    /// and to at least one. Invalid unless both are above 0 and the seconds at most 36 million, about the
    /// range of a `TickTime`.
    KESTRIN_EXPORT static FrameRate FromRatio(std::int32_t inFrames, std::int32_t inSeconds);

    constexpr std::int64_t GetTicksPerFrame() const { return mTicksPerFrame; }

    /// Frames a second; 0 for what is no rate.
    constexpr double GetFramesPerSecond() const
    {
        return IsValid() ? static_cast<double>(kTicksPerSecond) / static_cast<double>(mTicksPerFrame) : 0.0;
    }

    /// True for a length above 0 other than the invalid one.
    constexpr bool IsValid() const { return mTicksPerFrame > 0 && mTicksPerFrame != kInvalidTicks; }

    /// The rate that is `inFactor` times as fast: its frames are `inFactor` times as short, rounded to the
    /// nearest tick and at least one. 29.97 frames a second times 80 is the rate of the bits in a timecode
    /// signal. What is no rate stays as it is; a factor that is not above 0 gives the invalid rate.
    KESTRIN_EXPORT FrameRate operator*(int inFactor) const;

    /// Order by the length of a frame, so that a slower rate compares greater.
    friend constexpr auto operator<=>(const FrameRate&, const FrameRate&) = default;

private:
    std::int64_t mTicksPerFrame = kInvalidTicks;
};

} // namespace kestrin
