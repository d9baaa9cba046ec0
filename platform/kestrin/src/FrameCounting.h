#pragma once

#include <cstdint>

#include <kestrin/TimeDisplay.h>

namespace kestrin::details {

/// How a display numbers frames.
struct FrameCounting
{
    FrameRate mRate;
    /// Frame numbers in a second; 0 where there is nothing to count.
    std::int32_t mNominal = 0;
    /// Numbers left out at the start of each minute that ten does not divide.
    std::int32_t mDropped = 0;
};

FrameCounting GetFrameCounting(TimeDisplay inDisplay, FrameRate inRate);

} // namespace kestrin::details
