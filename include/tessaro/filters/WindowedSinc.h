#pragma once

#include <tessaro/Export.h>

namespace tessaro {

/// What a sinc is weighed with: from a narrow transition with more beside it to a wide one with less.
enum class SincWindow
{
    kHann = 0,
    kHamming = 1,
    kBlackman = 2
};

/// Writes the `inNumTaps` taps of a low-pass. `inCutoff` is a fraction of half the sampling rate, 0 to 1.
///
/// The middle is index `(inNumTaps - 1) / 2`, rounded down, and taps of an odd number are symmetric about it.
/// Of an even number the sinc is a little narrower than the cutoff asks, and the last tap stands beyond the
/// edge of the window. Fewer than three taps have no window to speak of: each is the cutoff. Nothing for 0 or
/// less.
///
/// Method: a sinc cut off by a raised-cosine window, normalised by its cutoff and not by its sum.
/// [any thread]
TESSARO_EXPORT void MakeWindowedSinc(double inCutoff, SincWindow inWindow, float* outTaps, int inNumTaps);

} // namespace tessaro
