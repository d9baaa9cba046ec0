#pragma once

#include <brisken/Export.h>

/// Sums, norms and extremes of rows.
///
/// `inCount` is the length of each row in elements; what a function gives for 0 stands with it. Pointers need
/// no alignment. All functions are [real-time] safe and [any thread]. Nothing throws.
///
/// Sums are taken in many partial sums side by side, in the precision of the row, so that the order of
/// additions, and with it the last bits, depends on the active target. The error is below that of the plain
/// loop for all but the shortest rows.
///
/// Extremes are exact and the same on every target. NaN in them: the comparison of the plain loop, which
/// begins with the first element and takes over what compares greater (or less), holds everywhere. So NaN in
/// the first element stays, whatever follows, and NaN further on is passed over. Which of two zeros of
/// different sign is returned is not fixed.
namespace brisken::utility {

/// Sum of a[i]; 0 for an empty row
BRISKEN_EXPORT float Sum(unsigned inCount, const float* inA);
BRISKEN_EXPORT double Sum(unsigned inCount, const double* inA);

/// Sum of a[i] * b[i]; 0 for empty rows. The rows may be the same.
BRISKEN_EXPORT float DotProduct(unsigned inCount, const float* inA, const float* inB);
BRISKEN_EXPORT double DotProduct(unsigned inCount, const double* inA, const double* inB);

/// Sum of a[i]^2, squared and added in double precision: the energy of a row. 0 for an empty row
BRISKEN_EXPORT double SumOfSquares(unsigned inCount, const float* inA);

/// Square root of the sum of a[i]^2; 0 for an empty row. Squares that leave the range of the type are not
/// guarded against.
BRISKEN_EXPORT float NormL2(unsigned inCount, const float* inA);
BRISKEN_EXPORT double NormL2(unsigned inCount, const double* inA);

/// Greatest |a[i]|; 0 for an empty row. NaN is passed over wherever it stands. The row comes before the count
/// here.
BRISKEN_EXPORT float MaxAbs(const float* inA, unsigned inCount);
BRISKEN_EXPORT double MaxAbs(const double* inA, unsigned inCount);

/// Smallest a[i]; 0 for an empty row
BRISKEN_EXPORT float Min(unsigned inCount, const float* inA);
BRISKEN_EXPORT double Min(unsigned inCount, const double* inA);

/// Greatest a[i]; 0 for an empty row
BRISKEN_EXPORT float Max(unsigned inCount, const float* inA);
BRISKEN_EXPORT double Max(unsigned inCount, const double* inA);

/// Both in one pass. An empty row leaves the results as they are.
BRISKEN_EXPORT void MinMax(unsigned inCount, const float* inA, float& outMin, float& outMax);
BRISKEN_EXPORT void MinMax(unsigned inCount, const double* inA, double& outMin, double& outMax);

/// Index of the first element that equals the maximum. The maximum itself goes to `outMaxOrNull` unless that
/// is null. An empty row gives 0 and leaves the maximum as it is.
BRISKEN_EXPORT unsigned MaxIndex(unsigned inCount, const float* inA, float* outMaxOrNull);
BRISKEN_EXPORT unsigned MaxIndex(unsigned inCount, const double* inA, double* outMaxOrNull);

/// The extremes and the index of the first element that equals each. An empty row leaves the results as they
/// are.
BRISKEN_EXPORT void MinMaxIndex(unsigned inCount, const float* inA, float& outMin, float& outMax,
                                unsigned& outMinIndex, unsigned& outMaxIndex);
BRISKEN_EXPORT void MinMaxIndex(unsigned inCount, const double* inA, double& outMin, double& outMax,
                                unsigned& outMinIndex, unsigned& outMaxIndex);

/// Standard deviation of a sample: the root of the sum of squared distances from the mean, over n - 1. Two
/// passes, so that a large mean does not swamp it. 0 for rows of no or one element.
BRISKEN_EXPORT void StandardDeviation(unsigned inCount, const float* inA, float& outDeviation);
BRISKEN_EXPORT void StandardDeviation(unsigned inCount, const double* inA, double& outDeviation);

/// True if all bytes are the same; also for empty rows. The count is in bytes.
BRISKEN_EXPORT bool Equal(unsigned inCount, const unsigned char* inA, const unsigned char* inB);

} // namespace brisken::utility
