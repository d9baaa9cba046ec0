#pragma once

#include <string>
#include <string_view>

#include <kestrin/Export.h>
#include <kestrin/TickTime.h>
#include <kestrin/TimeDisplay.h>

/// Times as hours, minutes, seconds and frames, in numbers and as text, in the manner of SMPTE ST 12-1.
///
/// The display decides the rate and the counting. `inRate` counts only with a display that has no rate of its
/// own: frames are then counted without dropping, the rounded frames a second making a second, so that a
/// sample rate gives samples. Where neither is a rate there is nothing to count: digits are 0, text is empty,
/// and text has no time.
///
/// A time within a frame belongs to that frame, rounded down for negative times too. Hours are not wrapped
/// at 24. `inFlags` is kept for callers that store it with a display; no flag is defined and the value has no
/// effect.
namespace kestrin {

/// Digits of the frame that runs at `inTime`. A negative time gives the digits of its distance from 0 in
/// whole frames; the sign is that of the frame number. `outDropFrame` is true for the drop-frame displays.
/// [any thread], [real-time]
KESTRIN_EXPORT void TimeToHMSF(int& outHours, int& outMinutes, int& outSeconds, int& outFrames,
                               bool& outDropFrame, TickTime inTime, FrameRate inRate, TimeDisplay inDisplay);

/// The text of `TimeToHMSF`, as 01:02:03:04, or 01;02;03;04 with a drop-frame display, or 01:02:03.456 with
/// `kMilliseconds`; a minus sign leads before time 0. Hours, minutes and seconds have at least two digits,
/// the last field has as many as its largest number needs and at least two. Empty for `TickTime::NoTime`.
/// UTF-16. [any thread]
KESTRIN_EXPORT std::u16string TimeToTimecode(TickTime inTime, FrameRate inRate, TimeDisplay inDisplay,
                                             unsigned inFlags);

/// The same text in UTF-8. [any thread]
KESTRIN_EXPORT std::string TimeToTimecodeUTF8(TickTime inTime, FrameRate inRate, TimeDisplay inDisplay,
                                              unsigned inFlags);

/// The time at which the frame named by `inText` begins.
///
/// The text is an optional minus sign, then hours, minutes, seconds and frames, each between ":" or ";".
/// Which of the two stands makes no difference: the display alone says whether frames are dropped. The last
/// field may instead follow "." or ",", and then has all its digits. Leading zeros may be missing otherwise;
/// hours have up to five digits. A number that drop-frame counting leaves out means the first frame of its
/// minute.
///
/// Anything else is malformed and gives `TickTime::NoTime`: other characters, blanks included, missing or
/// further fields, minutes or seconds above 59, a frame number that the rate does not have. [any thread],
/// [real-time]
KESTRIN_EXPORT TickTime TimecodeToTime(std::string_view inText, FrameRate inRate, TimeDisplay inDisplay,
                                       unsigned inFlags);

/// The same from UTF-16 and from wide text. [any thread], [real-time]
KESTRIN_EXPORT TickTime TimecodeToTime(std::u16string_view inText, FrameRate inRate, TimeDisplay inDisplay,
                                       unsigned inFlags);
KESTRIN_EXPORT TickTime TimecodeToTime(std::wstring_view inText, FrameRate inRate, TimeDisplay inDisplay,
                                       unsigned inFlags);

} // namespace kestrin
