#pragma once

#include <brisken/Export.h>

/// Powers, exponentials and logarithms of float rows, fast enough for each sample of a gain curve.
///
/// `inCount` is the length of each row in elements; 0 does nothing. Pointers need no alignment. A destination
/// may equal the source; rows may not overlap in any other way. All functions are [real-time] safe and [any
/// thread]. Nothing throws.
///
/// Computed in double precision: the error is at most 0.52 units in the last place of the result, denormal
/// results included, for arguments and exponents of any size. Arguments for which the power or logarithm is a
/// special case - 0, negative, infinite, NaN - and results beyond the range of float give what `std::pow`,
/// `std::exp` and `std::log` give, at their speed.
///
/// Method: log2 as a series in (m - 1) / (m + 1) of the mantissa m between the roots of 1/2 and 2, 2^f as a
/// polynomial for f within 1/2 of 0; both polynomials interpolate at Chebyshev points.
namespace brisken::utility {

/// out[i] = a[i] to the power of the exponent. 1 gives exactly 1.
BRISKEN_EXPORT void Power(unsigned inCount, const float* inA, double inExponent, float* out);

/// out[i] = e to the power of a[i]
BRISKEN_EXPORT void Exp(unsigned inCount, const float* inA, float* out);

/// out[i] = natural logarithm of a[i]
BRISKEN_EXPORT void Ln(unsigned inCount, const float* inA, float* out);

} // namespace brisken::utility
