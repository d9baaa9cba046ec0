#pragma once

#include <complex>
#include <vector>

#include <tessaro/Export.h>

/// Filters given by poles and zeros in the z plane.
///
/// A complex array of order N holds `N + 1` numerator values, then `N + 1` denominator values, each half in
/// *ascending powers of z*: index k is the coefficient of `z^k`. That is the reverse of the real arrays.
///
/// Nothing is checked; NaN poles and zeros give NaN values. `[any thread]`. The functions that write the
/// caller's vectors may allocate, the others do not.
namespace tessaro {

/// The two roots each of a real second-order array, read as `c0 x^2 + c1 x + c2` for the zeros and
/// `c3 x^2 + c4 x + c5` for the poles: of a digital array `b0 b1 b2 a0 a1 a2` these are the zeros and poles.
/// Of a conjugate pair the root in the upper half plane (for a positive leading coefficient) comes first, of
/// two real roots the larger. A leading coefficient of 0 gives roots that are not finite.
TESSARO_EXPORT void ComputePolesAndZeros(const double* inCoefficients,
                                         std::vector<std::complex<double>>& outPoles,
                                         std::vector<std::complex<double>>& outZeros);

/// Expands both lists to polynomials, each the product of `(z - root)`. The order N is the length of the
/// longer list; the array has `2 N + 2` values. Two empty lists leave it untouched.
TESSARO_EXPORT void GeneralCoefficients(std::complex<double>* outCoefficients,
                                        const std::vector<std::complex<double>>& inPoles,
                                        const std::vector<std::complex<double>>& inZeros);

/// The second-order designs: the array of `GeneralCoefficients`, all six values of which are then multiplied
/// by one scale; numerator and denominator alike, so that the response stays that of poles and zeros. At most
/// two poles and two zeros, and two of one of them at least. The array has six values.
///
/// With `inNormalise` the scale is the inverse of the amplitude at 0 Hz; without, it is made of the sum S and
/// the product P of the poles, `((S (P + 1) - P) / 4) / (S P)`, or 1e12 where S or P is 0.
TESSARO_EXPORT void LowpassCoefficients(std::complex<double>* outCoefficients,
                                        const std::vector<std::complex<double>>& inPoles,
                                        const std::vector<std::complex<double>>& inZeros, bool inNormalise);

/// The inverse of the amplitude at half the sample rate, or `((S (P + 1) + P) / 4) / (S P)`, or 1e12.
TESSARO_EXPORT void HighpassCoefficients(std::complex<double>* outCoefficients,
                                         const std::vector<std::complex<double>>& inPoles,
                                         const std::vector<std::complex<double>>& inZeros, bool inNormalise);

/// The inverse of the amplitude at half the sample rate, or 1.
TESSARO_EXPORT void LowShelfCoefficients(std::complex<double>* outCoefficients,
                                         const std::vector<std::complex<double>>& inPoles,
                                         const std::vector<std::complex<double>>& inZeros, bool inNormalise);

/// The inverse of the amplitude at 0 Hz, or 1.
TESSARO_EXPORT void HighShelfCoefficients(std::complex<double>* outCoefficients,
                                          const std::vector<std::complex<double>>& inPoles,
                                          const std::vector<std::complex<double>>& inZeros, bool inNormalise);

/// The inverse of the geometric mean of the amplitudes at 0 Hz and half the sample rate, or the sum of the
/// poles over the sum of the zeros, or 1e12 where the zeros add up to 0.
TESSARO_EXPORT void PeakingCoefficients(std::complex<double>* outCoefficients,
                                        const std::vector<std::complex<double>>& inPoles,
                                        const std::vector<std::complex<double>>& inZeros, bool inNormalise);

/// Linear amplitude at the point `inPoint` of the z plane: the distances from the zeros over those from the
/// poles.
TESSARO_EXPORT double GetAmplitudeResponseAtPoint(std::complex<double> inPoint,
                                                  const std::vector<std::complex<double>>& inPoles,
                                                  const std::vector<std::complex<double>>& inZeros);

/// Phase in radians at the point `inPoint`: the angles from the zeros less those from the poles. Each angle
/// comes from an arc tangent of one argument, so that it is right in the right half plane only and off by pi
/// in the left; displays are built on it.
TESSARO_EXPORT double GetPhaseResponseAtPoint(std::complex<double> inPoint,
                                              const std::vector<std::complex<double>>& inPoles,
                                              const std::vector<std::complex<double>>& inZeros);

} // namespace tessaro
