#pragma once

#include <tessaro/Export.h>

/// The windows of short-time Fourier analysis, as a table that a processor computes when it is configured.
namespace tessaro {

/// What `GetFFTWindow` is asked for: one type, ORed with one shape and with any options.
namespace fftwindow {

// Types, in the low byte. A rise goes from the edge to the peak, which is 1 (for a width of 1).
inline constexpr unsigned kTriangular = 0x00;
inline constexpr unsigned kHann = 0x01;           ///< raised cosine
inline constexpr unsigned kHamming = 0x02;        ///< raised cosine on a pedestal of 0.08
inline constexpr unsigned kBlackman = 0x03;       ///< three cosine terms, 0.42, 0.5, 0.08
inline constexpr unsigned kWelch = 0x04;          ///< parabola
inline constexpr unsigned kBlackmanHarris = 0x05; ///< four cosine terms, side lobes at -92 dB
inline constexpr unsigned kKaiser140 = 0x06;      ///< Kaiser for 140 dB
inline constexpr unsigned kKaiser180 = 0x07;      ///< Kaiser for 180 dB
inline constexpr unsigned kKaiser = 0x08;         ///< Kaiser for the attenuation given
inline constexpr unsigned kTypeMask = 0xFF;

// Shapes. Without one the window is all zeros.
inline constexpr unsigned kFull = 0x100;    ///< rise and fall, with the peak at index length / 2
inline constexpr unsigned kFalling = 0x200; ///< the fall alone: starts at the peak; goes before kFull
inline constexpr unsigned kRising = 0x400;  ///< the rise alone: the peak would be at index length

// Options.
inline constexpr unsigned kReciprocal = 0x800; ///< leaves 1 / value in the output; a 0 stays 0
inline constexpr unsigned kDoubles = 0x1000;   ///< the output is an array of double, not of float
inline constexpr unsigned kMultiply = 0x4000;  ///< multiplies the output by the window

/// Set by callers without effect. The bits stay reserved.
inline constexpr unsigned kReserved = 0x2000 | 0x8000;

} // namespace fftwindow

/// Computes a window of `inLength` values into `outWindow`, an array of float or, with `kDoubles`, of double.
///
/// The windows are periodic: a full one has 0 at index 0 and is symmetric around index `inLength / 2`, so
/// that it needs a further 0 at `inLength` to look symmetric from both ends. Hamming, Blackman-Harris and the
/// Kaiser types do not begin at 0 by themselves; they have a 0 at index 0 in front of their edge. A half
/// window is the half of one of twice the length: the rising one stops one step before the peak, the falling
/// one begins with it. (The windows of `AudioProcessor` are symmetric, and are not interchangeable with
/// these.)
///
/// `inWidth` above 0 is the fraction of the length that the window takes, usually 1. A narrower one has zeros
/// at its ends (a half at its outer end) and is higher by `1 / inWidth`, so that its sum stays; a wider one
/// loses its ends. A width that leaves no even number of values gives zeros.
///
/// `inAttenuation` in dB is used by `kKaiser` alone; callers that have none pass 140. At 21 and below the
/// window is the rectangle (with its 0 in front).
///
/// Lengths below 4 follow the same rules, with edge and peak in one where there is no room for both: the
/// value is the peak then. A length of 0 or below writes nothing. Any other type than those above gives
/// zeros. With `kMultiply | kReciprocal` the reciprocal is that of the product.
///
/// Returns false, with the output untouched, when memory for the work is short. A null output returns true.
/// Nothing throws. `[control]`, `[any thread]`
///
/// Method: the textbook formulas, computed in double; Kaiser's shape from its attenuation by his own
/// formula, with 20 terms of the series of the modified Bessel function, which keeps the error of a value
/// below 1e-8 up to 140 dB and below 5e-6 at 180 dB.
TESSARO_EXPORT bool GetFFTWindow(void* outWindow, int inLength, double inWidth, unsigned inFlags,
                                 double inAttenuation);

} // namespace tessaro
