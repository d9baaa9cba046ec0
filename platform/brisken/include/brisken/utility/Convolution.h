#pragma once

#include <cstddef>

#include <brisken/Export.h>

/// Linear convolution of rows, and streams with zeros put between their samples.
///
/// All functions are [real-time] safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// Puts `inFactor - 1` zeros between samples: out, of n * factor samples, is 0 but for out[i * factor +
/// phase] = a[i]. `ioPhase` is the place of each input sample in its group of `inFactor` output samples; it
/// is carried from call to call, so that a stream cut in any way gives the same output as in one piece. As
/// every call ends with a whole group it keeps its value, but for one that is not below the factor, which is
/// taken modulo the factor. A null `ioPhase` counts as 0. A factor of 0 does nothing. The rows may not
/// overlap.
BRISKEN_EXPORT void UpSample(unsigned inCount, const float* inA, float* out, unsigned inFactor,
                             unsigned* ioPhase);
BRISKEN_EXPORT void UpSample(unsigned inCount, const double* inA, double* out, unsigned inFactor,
                             unsigned* ioPhase);

/// Size in bytes of the work buffer that `Convolve` needs for rows of these lengths; 0 if it needs none.
BRISKEN_EXPORT unsigned ConvolutionWorkBufferSize(unsigned inCountA, unsigned inCountB);

/// out[i] = sum over k of a[k] * b[i - k], for i in 0 to na + nb - 2: out holds na + nb - 1 elements. If
/// either row is empty, nothing is done. The sources may be the same row; `out` may not overlap them.
/// `ioWork` may be null where `ConvolutionWorkBufferSize` is 0.
///
/// Direct evaluation, in time proportional to na * nb; the longer row costs nothing but its length, so
/// filters of up to some hundred taps over rows of any length are at home here. The error of each element is
/// that of a dot product.
BRISKEN_EXPORT void Convolve(unsigned inCountA, const double* inA, unsigned inCountB, const double* inB,
                             double* out, unsigned char* ioWork);

} // namespace brisken::utility
