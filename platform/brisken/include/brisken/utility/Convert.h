#pragma once

#include <brisken/Export.h>

/// Rows in another number type.
///
/// `inCount` is the length of each row in elements; 0 does nothing. Pointers need no alignment. The
/// destination may begin where the source begins; the rows may not overlap in any other way. All functions
/// are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = a[i] rounded to the nearest float; infinity beyond its range
BRISKEN_EXPORT void Convert(unsigned inCount, const double* inA, float* out);

/// out[i] = a[i], exactly
BRISKEN_EXPORT void Convert(unsigned inCount, const float* inA, double* out);

/// out[i] = a[i] * 2^-scale, for any scale: exactly, or rounded once where the result is a denormal number,
/// 0 or infinity. A scale of 15 brings 16-bit samples to full scale 1.
BRISKEN_EXPORT void Convert(unsigned inCount, const short* inA, float* out, int inScale);

} // namespace brisken::utility
