#pragma once

/// The C library's power, element by element.
namespace plain {

/// In the precision of float
void PowerFloat(unsigned inCount, const float* inA, double inExponent, float* out);
/// In double precision, rounded
void PowerDouble(unsigned inCount, const float* inA, double inExponent, float* out);

} // namespace plain
