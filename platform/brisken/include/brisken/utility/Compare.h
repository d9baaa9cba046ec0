#pragma once

#include <brisken/Export.h>

/// Rows limited by other rows or by constants.
///
/// `inCount` is the length of each row in elements; 0 does nothing. Pointers need no alignment. A destination
/// may equal a source; rows may not overlap in any other way. Results are exact and the same on every target.
///
/// NaN: an element is replaced only if the comparison with its limit is true. So an element that is NaN
/// stays, and limits that are NaN limit nothing.
///
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// if (a[i] > io[i]) io[i] = a[i]
BRISKEN_EXPORT void MaxEvery_InPlace(unsigned inCount, const float* inA, float* io);
BRISKEN_EXPORT void MaxEvery_InPlace(unsigned inCount, const double* inA, double* io);

/// if (io[i] < level) io[i] = level
BRISKEN_EXPORT void Threshold_LT_InPlace(unsigned inCount, float* io, float inLevel);
BRISKEN_EXPORT void Threshold_LT_InPlace(unsigned inCount, double* io, double inLevel);

/// if (io[i] > level) io[i] = level
BRISKEN_EXPORT void Threshold_GT_InPlace(unsigned inCount, float* io, float inLevel);
BRISKEN_EXPORT void Threshold_GT_InPlace(unsigned inCount, double* io, double inLevel);

/// Clamps to the range: first what is below `inLow`, then what is above `inHigh`. If the range is upside
/// down, everything becomes `inHigh`.
BRISKEN_EXPORT void Trim(unsigned inCount, float* io, float inLow, float inHigh);
BRISKEN_EXPORT void Trim(unsigned inCount, double* io, double inLow, double inHigh);

} // namespace brisken::utility
