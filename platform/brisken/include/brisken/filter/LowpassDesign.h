#pragma once

#include <brisken/Export.h>

namespace brisken::utility {

/// Window shapes of the FIR design. All are symmetric: the first weight equals the last.
enum class DSPWindowType : int
{
    kBlackman = 3 ///< 0.42 - 0.5 cos(2 pi n / (N - 1)) + 0.08 cos(4 pi n / (N - 1)), with ends of 0
};

} // namespace brisken::utility

namespace brisken::filter {

/// Bytes of work memory that a design of `inNumTaps` taps may use. [any thread]
BRISKEN_EXPORT unsigned FIRGetWorkBufferSize(unsigned inNumTaps);

/// Designs a linear-phase low-pass by the window method: the impulse response of the ideal low-pass about the
/// middle of the taps, `2 f sinc(2 f (n - (N - 1) / 2))`, times the window. The taps are symmetric to the
/// last bit and delay by `(inNumTaps - 1) / 2` samples.
///
/// `inCutoff` is the frequency of half amplitude as a fraction of the sampling rate, from 0 to 0.5; values
/// outside count as the nearer end. With `inNormalize` the taps are scaled to a sum of 1, unity gain at 0 Hz;
/// taps that are all 0 stay so. `outTaps` takes `inNumTaps` values. `ioWork` is `FIRGetWorkBufferSize` bytes
/// of any alignment, or null. [any thread]
BRISKEN_EXPORT void GenerateLowpassFIRCoefficients(double inCutoff, unsigned inNumTaps, double* outTaps,
                                                   utility::DSPWindowType inWindow, bool inNormalize,
                                                   unsigned char* ioWork);

} // namespace brisken::filter
