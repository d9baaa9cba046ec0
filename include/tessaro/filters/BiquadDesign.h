#pragma once

#include <tessaro/Export.h>

/// Coefficients of first- and second-order digital filters.
///
/// Arrays belong to the caller and are written from their first value on:
/// - second order: `b0 b1 b2 a0 a1 a2`, six values, `a0` being 1:
///   `H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2)`;
/// - first order: `b0 b1 a0 a1`, four values, `a0` being 1;
/// - order N: `N + 1` numerator values, then `N + 1` denominator values.
///
/// Frequencies and sample rates are in Hz, gains in dB. The second-order designs are those of R.
/// Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter coefficients"; the running sections
/// of `FilterSection` have formulas of their own. Nothing is checked beyond what is stated; a NaN argument
/// gives NaN coefficients. No state, no allocation. `[any thread]`, `[real-time]` throughout.
namespace tessaro {

/// Second-order low-pass. Above half the sample rate the identity: everything passes.
TESSARO_EXPORT void LowpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff,
                                        double inQ);

/// Second-order high-pass. Above half the sample rate all coefficients but `a0` are 0: nothing passes. It is
/// the only design here that mutes there.
TESSARO_EXPORT void HighpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff,
                                         double inQ);

/// Second-order band-pass with a peak gain of 0 dB. Above half the sample rate the identity.
TESSARO_EXPORT void BandpassCoefficients(double* outCoefficients, double inSampleRate, double inCenter,
                                         double inQ);

/// First-order low-pass with four coefficients. Above half the sample rate everything passes, at 0 Hz and
/// below nothing does. `inPrewarp` changes the cutoff by far less than its name lets expect, since the sample
/// rate enters the formula twice. The flag must be a `bool`: a number selects the second-order overload.
TESSARO_EXPORT void LowpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff,
                                        bool inPrewarp);

/// First-order high-pass with four coefficients. Above half the sample rate nothing passes, at 0 Hz and below
/// everything does. The flag is that of the first-order low-pass.
TESSARO_EXPORT void HighpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff,
                                         bool inPrewarp);

/// Second-order peak or dip of `inGain` at the centre. Above half the sample rate the identity.
TESSARO_EXPORT void PeakingEQCoefficients(double* outCoefficients, double inSampleRate, double inCenter,
                                          double inGain, double inQ);

/// Second-order shelf, whose plateau lies at *twice* `inGain`: the amplitude is taken from the whole gain
/// where the formula has half of it. Settings depend on that. `inSlope` 1 is the steepest slope without
/// overshoot. Above half the sample rate the identity.
TESSARO_EXPORT void LowShelfCoefficients(double* outCoefficients, double inSampleRate, double inCorner,
                                         double inGain, double inSlope);

/// As `LowShelfCoefficients`, with its doubled gain, for the upper side.
TESSARO_EXPORT void HighShelfCoefficients(double* outCoefficients, double inSampleRate, double inCorner,
                                          double inGain, double inSlope);

/// Second-order removal of the mean: two zeros at 0 Hz, two poles at a radius in proportion to the sample
/// rate, 0.995 at 44100 Hz. The poles leave the unit circle at 44100 / 0.995 Hz, 44321 Hz, and the filter is
/// unusable from there on.
TESSARO_EXPORT void DCBlockingCoefficients(double* outCoefficients, double inSampleRate);

/// `2 * inOrder + 2` values that pass everything. Order 0 and below leaves the array untouched.
TESSARO_EXPORT void IdentityCoefficients(double* outCoefficients, int inOrder);

/// The shelf slope with the bandwidth of the quality `inQ`, limited to 0 .. 1.
TESSARO_EXPORT double MapQToShelfSlope(double inQ, double inGain);

/// The quality with the bandwidth of the shelf slope `inSlope`.
TESSARO_EXPORT double MapShelfSlopeToQ(double inSlope, double inGain);

} // namespace tessaro
