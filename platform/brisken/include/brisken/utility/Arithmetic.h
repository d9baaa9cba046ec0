#pragma once

#include <brisken/Export.h>

/// Sums, differences, products and quotients of rows.
///
/// `inCount` is the length of each row in elements; 0 does nothing. Pointers need no alignment; rows that
/// begin at a multiple of 64 bytes are fastest. A destination may equal a source; rows may not overlap in any
/// other way. NaN, infinity and denormal numbers behave as in the plain loop. Sums, differences, products and
/// quotients are rounded once, exactly as in the plain loop; in a multiply-add the product may stay
/// unrounded.
///
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = a[i] + b[i]
BRISKEN_EXPORT void Add(unsigned inCount, const float* inA, const float* inB, float* outSum);
BRISKEN_EXPORT void Add(unsigned inCount, const double* inA, const double* inB, double* outSum);

/// io[i] = io[i] + a[i]
BRISKEN_EXPORT void Add_InPlace(unsigned inCount, const float* inA, float* ioSum);
BRISKEN_EXPORT void Add_InPlace(unsigned inCount, const double* inA, double* ioSum);

/// out[i] = b[i] - a[i]: the second source minus the first. Callers rely on this order.
BRISKEN_EXPORT void Sub(unsigned inCount, const float* inA, const float* inB, float* outDifference);
BRISKEN_EXPORT void Sub(unsigned inCount, const double* inA, const double* inB, double* outDifference);

/// io[i] = io[i] - a[i]
BRISKEN_EXPORT void Sub_InPlace(unsigned inCount, const float* inA, float* ioDifference);
BRISKEN_EXPORT void Sub_InPlace(unsigned inCount, const double* inA, double* ioDifference);

/// out[i] = a[i] + constant. The constant stands between source and destination.
BRISKEN_EXPORT void AddConstant(unsigned inCount, const float* inA, float inConstant, float* outSum);
BRISKEN_EXPORT void AddConstant(unsigned inCount, const double* inA, double inConstant, double* outSum);

/// io[i] = io[i] + constant
BRISKEN_EXPORT void AddConstant_InPlace(unsigned inCount, float* ioSum, float inConstant);
BRISKEN_EXPORT void AddConstant_InPlace(unsigned inCount, double* ioSum, double inConstant);

/// out[i] = a[i] - constant. The constant stands between source and destination.
BRISKEN_EXPORT void SubConstant(unsigned inCount, const float* inA, float inConstant, float* outDifference);
BRISKEN_EXPORT void SubConstant(unsigned inCount, const double* inA, double inConstant,
                                double* outDifference);

/// out[i] = a[i] * b[i]. For complex rows see Complex.h.
BRISKEN_EXPORT void Mul(unsigned inCount, const float* inA, const float* inB, float* outProduct);
BRISKEN_EXPORT void Mul(unsigned inCount, const double* inA, const double* inB, double* outProduct);

/// io[i] = io[i] * a[i]
BRISKEN_EXPORT void Mul_InPlace(unsigned inCount, const float* inA, float* ioProduct);
BRISKEN_EXPORT void Mul_InPlace(unsigned inCount, const double* inA, double* ioProduct);

/// out[i] = a[i] * constant
BRISKEN_EXPORT void MulConstant(unsigned inCount, const float* inA, float* outProduct, float inConstant);
BRISKEN_EXPORT void MulConstant(unsigned inCount, const double* inA, double* outProduct, double inConstant);

/// io[i] = io[i] * constant
BRISKEN_EXPORT void MulConstant_InPlace(unsigned inCount, float* ioProduct, float inConstant);
BRISKEN_EXPORT void MulConstant_InPlace(unsigned inCount, double* ioProduct, double inConstant);

/// io[i] = io[i] / a[i]; division by 0 gives infinity or NaN
BRISKEN_EXPORT void Div_InPlace(unsigned inCount, const float* inA, float* ioQuotient);
BRISKEN_EXPORT void Div_InPlace(unsigned inCount, const double* inA, double* ioQuotient);

/// io[i] = io[i] / constant, a true division: not a product with the reciprocal
BRISKEN_EXPORT void DivConstant_InPlace(unsigned inCount, float* ioQuotient, float inConstant);
BRISKEN_EXPORT void DivConstant_InPlace(unsigned inCount, double* ioQuotient, double inConstant);

/// io[i] = io[i] + a[i] * b[i]
BRISKEN_EXPORT void AddProduct(unsigned inCount, const float* inA, const float* inB, float* ioSum);
BRISKEN_EXPORT void AddProduct(unsigned inCount, const double* inA, const double* inB, double* ioSum);

/// io[i] = io[i] + a[i] * constant
BRISKEN_EXPORT void AddConstantProduct(unsigned inCount, const float* inA, float* ioSum, float inConstant);
BRISKEN_EXPORT void AddConstantProduct(unsigned inCount, const double* inA, double* ioSum, double inConstant);

} // namespace brisken::utility
