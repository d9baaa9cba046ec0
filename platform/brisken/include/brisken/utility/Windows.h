#pragma once

#include <brisken/Export.h>

/// Rows times the symmetric windows of their length.
///
/// The window of length n is symmetric: its element i equals its element n - 1 - i, exactly, and it reaches
/// its edge value at 0 and n - 1. A window of length 1 is 1. With x = i / (n - 1) below. Weights are computed
/// in double, whatever the type of the row, with an error of at most 4 epsilon of double, and as many
/// more as the shape factor says in the Kaiser window, as 16 times alpha's magnitude in a Blackman window
/// whose alpha is not in 0 to 0.25.
///
/// `inCount` is the length of the row and of the window; 0 does nothing. Pointers need no alignment. The
/// destination may equal the source; the rows may not overlap in any other way. All functions are [real-time]
/// safe and [any thread]. Nothing throws.
namespace brisken::utility {

/// Triangle from 0 at the edges: out[i] = a[i] * (1 - |2 x - 1|)
BRISKEN_EXPORT void WindowBartlett(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void WindowBartlett(unsigned inCount, const double* inA, double* out);

/// out[i] = a[i] * (0.5 - 0.5 cos(2 pi x))
BRISKEN_EXPORT void WindowHann(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void WindowHann(unsigned inCount, const double* inA, double* out);

/// out[i] = a[i] * (0.54 - 0.46 cos(2 pi x))
BRISKEN_EXPORT void WindowHamming(unsigned inCount, const float* inA, float* out);
BRISKEN_EXPORT void WindowHamming(unsigned inCount, const double* inA, double* out);

/// out[i] = a[i] * ((1 - alpha) / 2 - 0.5 cos(2 pi x) + alpha / 2 cos(4 pi x)). An alpha of 0.16 is the usual
/// window of this name; 0 is the Hann window.
BRISKEN_EXPORT void WindowBlackman(unsigned inCount, const float* inA, float* out, float inAlpha);
BRISKEN_EXPORT void WindowBlackman(unsigned inCount, const double* inA, double* out, double inAlpha);

/// out[i] = a[i] * I0(alpha sqrt(1 - (2 x - 1)^2)) / I0(alpha), where I0 is the modified Bessel function of
/// order 0 and alpha the shape factor that is often called beta: 0 is the rectangle, larger values trade a
/// wider main lobe for lower side lobes. Its sign does not count, and magnitudes above 700 count as 700.
BRISKEN_EXPORT void WindowKaiser(unsigned inCount, const float* inA, float* out, float inAlpha);
BRISKEN_EXPORT void WindowKaiser(unsigned inCount, const double* inA, double* out, double inAlpha);

} // namespace brisken::utility
