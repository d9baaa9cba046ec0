#pragma once

#include <brisken/Export.h>

/// Squares, roots, magnitudes and logarithms of rows.
///
/// `inCount` is the length of each row in elements; 0 does nothing. Pointers need no alignment. A destination
/// may equal a source; rows may not overlap in any other way. All functions are [real-time] safe and [any
/// thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = a[i]^2
BRISKEN_EXPORT void Sqr(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void Sqr(unsigned inCount, const double* inA, double* out);

/// io[i] = square root of io[i], correctly rounded; NaN below 0
BRISKEN_EXPORT void Sqrt_InPlace(unsigned inCount, float* io);
BRISKEN_EXPORT void Sqrt_InPlace(unsigned inCount, double* io);

/// out[i] = |a[i]|
BRISKEN_EXPORT void Abs(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void Abs(unsigned inCount, const double* inA, double* out);

/// io[i] = |io[i]|
BRISKEN_EXPORT void Abs_InPlace(unsigned inCount, float* io);
BRISKEN_EXPORT void Abs_InPlace(unsigned inCount, double* io);

/// out[i] = natural logarithm of a[i], for all of the type, denormal numbers included. The error is at most 2
/// units in the last place. 0 of either sign gives minus infinity, anything below 0 gives NaN, infinity and
/// NaN give themselves.
BRISKEN_EXPORT void Ln(unsigned inCount, const double* inA, double* out);

} // namespace brisken::utility
