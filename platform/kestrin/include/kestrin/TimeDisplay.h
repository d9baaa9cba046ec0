#pragma once

#include <compare>
#include <cstdint>

#include <kestrin/Export.h>
#include <kestrin/FrameRate.h>

namespace kestrin {

/// The ways in which a time is shown as text. The numbers are stored in projects and sent between processes.
///
/// Drop-frame counting leaves out frame numbers, never frames: numbers 0 and 1 (0 to 3 at 59.94) at the start
/// of each minute that ten does not divide, so that the count keeps within two frames (four) of the clock
/// over a day.
enum class TimeDisplayType : std::int32_t
{
    k24 = 100,           ///< 24 frames a second
    k25 = 101,           ///< 25
    k2997Drop = 102,     ///< 30000/1001, drop-frame
    k2997NonDrop = 103,  ///< 30000/1001, every number used: falls behind the clock by 3.6 seconds an hour
    k30 = 104,           ///< 30
    k50 = 105,           ///< 50, the double rate of 101
    k5994Drop = 106,     ///< 60000/1001, drop-frame, the double rate of 102
    k5994NonDrop = 107,  ///< 60000/1001, every number used, the double rate of 103
    k60 = 108,           ///< 60, the double rate of 104
    k23976 = 110,        ///< 24000/1001, every number used
    kMilliseconds = 201, ///< clock time to the millisecond, for audio: 00:01:02.345
    kInvalid = 999       ///< not set
};

/// The choice of a `TimeDisplayType`, built from its number as stored; any number is kept, whether or not it
/// is known.
///
/// A plain value; nothing throws, `[any thread]` and `[real-time]` throughout.
class TimeDisplay
{
public:
    /// Not set: 999.
    constexpr TimeDisplay() = default;
    constexpr TimeDisplay(TimeDisplayType inType) : mType(inType) {}
    constexpr explicit TimeDisplay(std::int32_t inNumber) : mType(static_cast<TimeDisplayType>(inNumber)) {}

    constexpr TimeDisplayType GetType() const { return mType; }
    constexpr std::int32_t GetNumber() const { return static_cast<std::int32_t>(mType); }

    /// True for the two drop-frame displays.
    constexpr bool IsDropFrame() const
    {
        return mType == TimeDisplayType::k2997Drop || mType == TimeDisplayType::k5994Drop;
    }

    friend constexpr bool operator==(const TimeDisplay&, const TimeDisplay&) = default;

private:
    TimeDisplayType mType = TimeDisplayType::kInvalid;
};

/// The rate at which `inDisplay` counts its last field, a thousand a second for `kMilliseconds`; `inRate`,
/// the rate of the media at hand, for a display that has no rate of its own: one that is not set or not
/// known. [any thread]
KESTRIN_EXPORT FrameRate GetFrameRateForTimeDisplay(TimeDisplay inDisplay, FrameRate inRate);

} // namespace kestrin
