#pragma once

#include <brisken/Export.h>

/// Copies of rows, as they are, reversed, or with the bytes of each word reversed.
///
/// `inCount` is the length of the row in elements; 0 does nothing. Pointers need no alignment.
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = a[i]. The rows may not overlap, except that they may be one and the same.
BRISKEN_EXPORT void Copy(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void Copy(unsigned inCount, const double* inA, double* out);
BRISKEN_EXPORT void Copy(unsigned inCount, const unsigned char* inA, unsigned char* out);

/// out[i] = a[i], where the rows may overlap in any way.
BRISKEN_EXPORT void Move(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void Move(unsigned inCount, const double* inA, double* out);

/// out[i] = a[n - 1 - i]. The destination may equal the source; the rows may not overlap in any other way.
BRISKEN_EXPORT void Flip(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void Flip(unsigned inCount, const double* inA, double* out);

/// Reverses the order of the row's elements.
BRISKEN_EXPORT void Flip_InPlace(unsigned inCount, float* io);
BRISKEN_EXPORT void Flip_InPlace(unsigned inCount, double* io);

/// out[i] = a[i] with its four bytes in reverse order. The destination may equal the source; the rows may not
/// overlap in any other way.
BRISKEN_EXPORT void SwapBytes(unsigned inCount, const unsigned* inA, unsigned* out);

} // namespace brisken::utility
