#pragma once

#include <tessaro/Export.h>

/// Responses of cascades of digital sections, and the all-pass cascade that follows a delay curve.
///
/// A section array holds, for each section, `inOrder + 1` numerator and then `inOrder + 1` denominator values
/// in powers of `z^-1`; sections follow each other at a distance of `2 * (inOrder + 1)` values. Angles are in
/// radians a sample, pi being half the sample rate. No state, no allocation. `[any thread]`, `[real-time]`
/// throughout.
namespace tessaro {

/// Linear magnitude at the angle `inRadians`; 1 without a section.
TESSARO_EXPORT double GetMagnitudeResponse(double inRadians, const double* inSections, int inOrder,
                                           int inSectionCount);

/// Phase in radians, each section's between -pi and pi; 0 without a section.
TESSARO_EXPORT double GetPhaseResponse(double inRadians, const double* inSections, int inOrder,
                                       int inSectionCount);

/// Group delay in samples, from a phase difference over 0.0001 radians; 0 without a section. Each response is
/// taken with a floor of 1e-6 beside energy and products, which bends the figure where a section is near 0,
/// and with it a delay of a few samples there. NaN where the second response vanishes or a part is NaN.
TESSARO_EXPORT double GetGroupDelay(double inRadians, const double* inSections, int inOrder,
                                    int inSectionCount);

/// Places `inSectionCount` second-order all-pass sections so that their group delay follows the curve
/// `inDelays`, in samples at `inPointCount` points, at least 2, evenly spaced from 0 Hz to half the sample
/// rate. A constant is added to the curve so that its whole matches the number of sections, each of which
/// turns the phase by 2 pi up to half the sample rate.
///
/// Each section gets the stretch of the curve that makes up its share, and a pole in the middle of that, the
/// nearer the unit circle the narrower it is. Writes six values a section, `r^2, -2 r cos, 1, 1, -2 r cos,
/// r^2`. A section past the end of the curve has a pole on the unit circle. Method: J. Abel and J. Smith,
/// "Robust Design of Very High-Order Allpass Dispersion Filters", DAFx 2006.
TESSARO_EXPORT void DesignAllpassIIR(const double* inDelays, int inPointCount, int inSectionCount,
                                     double* outSections);

} // namespace tessaro
