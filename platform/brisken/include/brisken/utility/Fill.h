#pragma once

#include <brisken/Export.h>

/// Rows of one value.
///
/// `inCount` is the length of the row in elements; 0 does nothing. Pointers need no alignment.
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = 0
BRISKEN_EXPORT void Zero(unsigned inCount, float* out);
BRISKEN_EXPORT void Zero(unsigned inCount, double* out);
BRISKEN_EXPORT void Zero(unsigned inCount, unsigned int* out);
BRISKEN_EXPORT void Zero(unsigned inCount, unsigned char* out);

/// out[i] = value
BRISKEN_EXPORT void Set(unsigned inCount, float* out, float inValue);
BRISKEN_EXPORT void Set(unsigned inCount, double* out, double inValue);
BRISKEN_EXPORT void Set(unsigned inCount, unsigned int* out, unsigned int inValue);

} // namespace brisken::utility
