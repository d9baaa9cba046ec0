#pragma once

#include <tessaro/Export.h>

namespace tessaro::utils {

/// Takes the jumps of whole turns out of a phase curve, in place.
///
/// `ioPhase` holds `inCount` phases in radians, as an arctangent gives them; what comes out goes from sample
/// to sample by half a turn at most, and so may leave -pi to pi. Turns once added or taken away stay in force
/// for the rest of the curve. Each sample is corrected by 15 turns at most: a longer jump is partly kept. The
/// curve is thought to start at 0, so that the first sample is brought near to 0 too. Half a turn counts as
/// slightly less than pi, so that a jump of pi goes up, whatever its sign and rounding.
///
/// A NaN stays where it is, and the sample behind it gets the turns so far and no more. `[real-time]`,
/// `[any thread]`
TESSARO_EXPORT void UnwrapPhase(unsigned inCount, float* ioPhase);

} // namespace tessaro::utils
