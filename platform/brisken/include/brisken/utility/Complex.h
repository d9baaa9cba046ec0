#pragma once

#include <complex>

#include <brisken/Export.h>

/// Complex rows, interleaved as std::complex or apart as two rows.
///
/// `inCount` counts complex values; 0 does nothing. Pointers need no alignment. A destination may begin where
/// a source begins, whatever their element types; rows may not overlap in any other way.
///
/// Products, magnitudes and powers are those of the textbook form in the precision of the row: intermediate
/// squares that leave the range of the type are not guarded against, and products with infinity are not
/// repaired. The error of each part of a product is at most 2 epsilon of the product of the magnitudes, that
/// of a magnitude or power at most 2 epsilon of itself.
///
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i] = a[i] * b[i]
BRISKEN_EXPORT void Mul(unsigned inCount, const std::complex<float>* inA, const std::complex<float>* inB,
                        std::complex<float>* outProduct);

/// io[i] = io[i] * a[i]
BRISKEN_EXPORT void Mul_InPlace(unsigned inCount, const std::complex<float>* inA,
                                std::complex<float>* ioProduct);

/// out[i] = sqrt(re[i]^2 + im[i]^2)
BRISKEN_EXPORT void Magnitude(unsigned inCount, const float* inReal, const float* inImaginary, float* out);
BRISKEN_EXPORT void Magnitude(unsigned inCount, const double* inReal, const double* inImaginary, double* out);
BRISKEN_EXPORT void Magnitude(unsigned inCount, const std::complex<float>* inA, float* out);

/// out[i] = re^2 + im^2 of a[i]
BRISKEN_EXPORT void PowerSpectr(unsigned inCount, const std::complex<float>* inA, float* out);

/// Magnitude as above, and phase = atan2(im[i], re[i]): radians in -pi to pi, with an error of at most 4
/// epsilon of itself. Signed zeros and infinities give the angles that atan2 gives; NaN in either part gives
/// NaN.
BRISKEN_EXPORT void CartToPolar(unsigned inCount, const float* inReal, const float* inImaginary,
                                float* outMagnitude, float* outPhase);

/// out[i] = magnitude[i] * (cos(phase[i]), sin(phase[i])). The phase is in radians and may be any number;
/// each part's error is at most 1.5 epsilon of the magnitude. Phases beyond 8192 either way take the slow
/// path of the C library. A phase that is infinite or NaN gives NaN.
BRISKEN_EXPORT void PolarToCart(unsigned inCount, const float* inMagnitude, const float* inPhase,
                                std::complex<float>* out);

/// The same, to interleaved real and imaginary parts: out holds 2 n floats.
BRISKEN_EXPORT void PolarToCart(unsigned inCount, const float* inMagnitude, const float* inPhase, float* out);

} // namespace brisken::utility
