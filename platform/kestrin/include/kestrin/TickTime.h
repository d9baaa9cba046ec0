#pragma once

#include <algorithm>
#include <compare>
#include <cstdint>
#include <limits>

#include <kestrin/Export.h>
#include <kestrin/FrameRate.h>

namespace kestrin {

/// A time or a duration: a signed count of ticks, of which `kTicksPerSecond` make a second. Negative times
/// lie before the start of the timeline. The range is about plus and minus 420 days.
///
/// Arithmetic stops at the ends of the range instead of wrapping around. The value of minus 400000 seconds
/// stands for "no time" wherever a time may be missing; arithmetic does not treat it specially.
///
/// A plain 64-bit value: trivially copied, nothing throws, `[any thread]` and `[real-time]` throughout.
class TickTime
{
public:
    static constexpr std::int64_t kNoTimeTicks = -101606400000000000;

    /// Time 0.
    constexpr TickTime() = default;

    constexpr explicit TickTime(std::int64_t inTicks) : mTicks(inTicks) {}

    /// The time at which frame `inFrame` begins, frame 0 beginning at time 0; as a duration, that of
    /// `inFrame` frames. Time 0 when `inRate` is no rate.
    constexpr TickTime(std::int64_t inFrame, FrameRate inRate)
        : mTicks(inRate.IsValid() ? Multiply(inFrame, inRate.GetTicksPerFrame()) : 0)
    {
    }

    /// The value that stands for no time.
    static constexpr TickTime NoTime() { return TickTime(kNoTimeTicks); }
    constexpr bool IsNoTime() const { return mTicks == kNoTimeTicks; }

    constexpr std::int64_t GetTicks() const { return mTicks; }

    /// Number of the frame that runs at this time, from its first tick up to but not including that of the
    /// next: rounded down for negative times too, so that frame numbers move evenly across 0 and moving a
    /// time by whole frames moves its frame number by as many. A frame's own time always gives back its
    /// number. 0 when `inRate` is no rate.
    constexpr std::int64_t ToFrame64(FrameRate inRate) const
    {
        if (!inRate.IsValid()) {
            return 0;
        }
        const auto frame = mTicks / inRate.GetTicksPerFrame();
        return mTicks % inRate.GetTicksPerFrame() < 0 ? frame - 1 : frame;
    }

    /// `ToFrame64`, clamped to the range of 32 bits, which at 48000 Hz ends after twelve hours.
    constexpr std::int32_t ToFrame32(FrameRate inRate) const
    {
        constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
        constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
        return static_cast<std::int32_t>(std::clamp(ToFrame64(inRate), least, most));
    }

    /// In seconds, rounded to double.
    constexpr double ToSeconds() const
    {
        return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond);
    }

    constexpr TickTime& operator+=(TickTime inOther)
    {
        mTicks = Add(mTicks, inOther.mTicks);
        return *this;
    }
    constexpr TickTime& operator-=(TickTime inOther)
    {
        mTicks = Subtract(mTicks, inOther.mTicks);
        return *this;
    }
    friend constexpr TickTime operator+(TickTime inLeft, TickTime inRight) { return inLeft += inRight; }
    friend constexpr TickTime operator-(TickTime inLeft, TickTime inRight) { return inLeft -= inRight; }
    constexpr TickTime operator-() const { return TickTime() -= *this; }

    /// The time scaled by `inFactor`, to the nearest tick, halves away from 0. Exact to the tick within the
    /// precision of long double. A NaN gives time 0.
    KESTRIN_EXPORT TickTime operator*(double inFactor) const;

    friend constexpr auto operator<=>(const TickTime&, const TickTime&) = default;

private:
    using Limits = std::numeric_limits<std::int64_t>;

    static constexpr std::int64_t Add(std::int64_t inA, std::int64_t inB)
    {
        if (inB > 0) {
            return inA > Limits::max() - inB ? Limits::max() : inA + inB;
        }
        return inA < Limits::min() - inB ? Limits::min() : inA + inB;
    }

    static constexpr std::int64_t Subtract(std::int64_t inA, std::int64_t inB)
    {
        if (inB > 0) {
            return inA < Limits::min() + inB ? Limits::min() : inA - inB;
        }
        return inA > Limits::max() + inB ? Limits::max() : inA - inB;
    }

    /// `inB` above 0.
    static constexpr std::int64_t Multiply(std::int64_t inA, std::int64_t inB)
    {
        if (inA > Limits::max() / inB) {
            return Limits::max();
        }
        return inA < Limits::min() / inB ? Limits::min() : inA * inB;
    }

    std::int64_t mTicks = 0;
};

} // namespace kestrin
