#pragma once

namespace tessaro::dynamics {

/// What a gate is doing, for a display. The numbers are what displays store.
enum class AutoGateState
{
    kNone = 0,   ///< no block yet
    kOpen = 1,   ///< what comes out is above the threshold
    kClosed = 2, ///< it is not
    kHold = 3    ///< nor is it, but the gate is being held open
};

} // namespace tessaro::dynamics
