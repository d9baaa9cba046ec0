#pragma once

#include <tessaro/Export.h>

/// Analog second-order prototypes and their way to a digital filter.
///
/// An analog array holds `c0 .. c5` for `H(s) = (c0 + c1 s + c2 s^2) / (c3 + c4 s + c5 s^2)`, in ascending
/// powers of `s`, or `c0 .. c3` for `(c0 + c1 s) / (c2 + c3 s)`. Frequencies are in Hz, gains in dB. Nothing
/// is checked; a NaN argument gives NaN coefficients. No state, no allocation. `[any thread]`, `[real-time]`
/// throughout.
namespace tessaro {

TESSARO_EXPORT void AnalogLowpassCoefficients(double* outCoefficients, double inCutoff, double inQ);

TESSARO_EXPORT void AnalogHighpassCoefficients(double* outCoefficients, double inCutoff, double inQ);

/// A peak or dip of `inGain` at the centre.
TESSARO_EXPORT void AnalogPeakingEQCoefficients(double* outCoefficients, double inCenter, double inGain,
                                                double inQ);

/// A shelf whose plateau lies at *twice* `inGain`, as that of the digital `LowShelfCoefficients` does. The
/// amplitude is computed in single precision.
TESSARO_EXPORT void AnalogLowShelfCoefficients(double* outCoefficients, double inCorner, double inGain,
                                               double inSlope);

/// As `AnalogLowShelfCoefficients`, for the upper side.
TESSARO_EXPORT void AnalogHighShelfCoefficients(double* outCoefficients, double inCorner, double inGain,
                                                double inSlope);

/// Makes a digital array, `b0 b1 (b2) a0 a1 (a2)` with `a0` 1, of an analog one of order 1 or 2; any other
/// order writes nothing. The response is met exactly at `inPrewarp` Hz if that is above 0, and at 0 Hz in any
/// case. The two arrays may be the same.
TESSARO_EXPORT void BilinearTransform(double* outCoefficients, const double* inAnalog, int inOrder,
                                      double inSampleRate, double inPrewarp);

/// Linear magnitude of a second-order analog array at `inFrequency` Hz.
TESSARO_EXPORT double EvaluateAnalogMagnitudeResponse(const double* inAnalog, double inFrequency);

} // namespace tessaro
