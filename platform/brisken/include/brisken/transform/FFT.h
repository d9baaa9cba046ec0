#pragma once

#include <complex>

#include <brisken/Export.h>

/// Fourier transforms of power-of-two length, real and complex, single and double precision.
///
/// A state holds the tables of one length and is made by `FFTInit` into a pointer that the caller keeps:
///
///     brisken::FFTState_Float* state = nullptr;
///     brisken::transform::FFTInit(&state, 10);                   // length 1024
///     unsigned bytes = 0;
///     brisken::transform::FFTGetBufSize(state, &bytes);
///     std::vector<unsigned char> work(bytes);
///     brisken::transform::FFTFwd(samples, spectrum, state, work.data());   // 1026 floats of spectrum
///     brisken::transform::FFTFree(state);
///
/// Definitions, with N = 2^order:
/// - Forward: `X[k] = sum over n of x[n] * exp(-2 pi i k n / N)`, not scaled.
/// - Inverse: `x[n] = sum over k of X[k] * exp(+2 pi i k n / N) / N`, so that the inverse of the forward is
/// the input.
/// - Spectra of real signals hold the bins 0 to N/2 as pairs (re, im): N + 2 numbers. The imaginary parts of
///   the bins 0 and N/2, the first and the last one, are stored as 0 by the forward transform and not looked
///   at by the inverse. At order 0 both are the one bin there is: a single pair, and the third number is left
///   alone.
///
/// Pointers need no alignment, that of the work buffer included. Input and output may be the same memory, for
/// deinterleaved parts also crosswise (`outRe == im`); apart from that they may not overlap.
///
/// Threads: a state never changes after `FFTInit`, so that several threads may transform with one state, each
/// with a work buffer of its own. The transforms neither allocate, lock nor throw [real-time]; `FFTInit` and
/// `FFTFree` do allocate and free [control]. States stay usable when the instruction set is changed
/// (`SetActiveTarget`).
///
/// Error: with eps the distance from 1 to the next number of the type, the root mean square of the error
/// stays below `0.5 * eps * (1 + order)` times the root mean square of the result, forward and inverse.
///
/// Method: Cooley and Tukey's factorisation into a matrix whose columns and rows are transformed by Stockham
/// passes of radix 4, 8 and 16, a vector of neighbouring columns or rows at a time; real signals go through
/// the complex transform of half the length.
namespace brisken {

struct FFTState_Float;                        ///< real, single precision
struct FFTState_Double;                       ///< real, double precision
struct FFTState_Complex_Double_Interleaved;   ///< std::complex<double>
struct FFTState_Complex_Float_Deinterleaved;  ///< separate rows of real and imaginary parts
struct FFTState_Complex_Double_Deinterleaved; ///< separate rows of real and imaginary parts

namespace transform {

/// The highest order that `FFTInit` takes.
inline constexpr unsigned kMaxFFTOrder = 26;

/// Makes the state for length 2^inOrder and stores it in *outState. Throws std::length_error when the order
/// is above `kMaxFFTOrder` and std::bad_alloc when memory is short; *outState is null then. [control]
BRISKEN_EXPORT void FFTInit(FFTState_Float** outState, unsigned inOrder);
BRISKEN_EXPORT void FFTInit(FFTState_Double** outState, unsigned inOrder);
BRISKEN_EXPORT void FFTInit(FFTState_Complex_Double_Interleaved** outState, unsigned inOrder);
BRISKEN_EXPORT void FFTInit(FFTState_Complex_Float_Deinterleaved** outState, unsigned inOrder);
BRISKEN_EXPORT void FFTInit(FFTState_Complex_Double_Deinterleaved** outState, unsigned inOrder);

/// Stores in *outBytes how large the work buffer of each transform with this state must be. It may be 0 for
/// short transforms; the buffer may be null then. [any thread]
BRISKEN_EXPORT void FFTGetBufSize(const FFTState_Float* inState, unsigned* outBytes);
BRISKEN_EXPORT void FFTGetBufSize(const FFTState_Double* inState, unsigned* outBytes);
BRISKEN_EXPORT void FFTGetBufSize(const FFTState_Complex_Double_Interleaved* inState, unsigned* outBytes);
BRISKEN_EXPORT void FFTGetBufSize(const FFTState_Complex_Float_Deinterleaved* inState, unsigned* outBytes);
BRISKEN_EXPORT void FFTGetBufSize(const FFTState_Complex_Double_Deinterleaved* inState, unsigned* outBytes);

/// N samples to N/2 + 1 bins (N + 2 numbers). [real-time]
BRISKEN_EXPORT void FFTFwd(const float* inSamples, float* outSpectrum, const FFTState_Float* inState,
                           unsigned char* ioWork);
BRISKEN_EXPORT void FFTFwd(const double* inSamples, double* outSpectrum, const FFTState_Double* inState,
                           unsigned char* ioWork);

/// N/2 + 1 bins (N + 2 numbers) to N samples; nothing is written behind these. [real-time]
BRISKEN_EXPORT void FFTInv(const float* inSpectrum, float* outSamples, const FFTState_Float* inState,
                           unsigned char* ioWork);
BRISKEN_EXPORT void FFTInv(const double* inSpectrum, double* outSamples, const FFTState_Double* inState,
                           unsigned char* ioWork);

/// N complex numbers to N complex numbers. [real-time]
BRISKEN_EXPORT void FFTFwd(const std::complex<double>* inSamples, std::complex<double>* outSpectrum,
                           const FFTState_Complex_Double_Interleaved* inState, unsigned char* ioWork);
BRISKEN_EXPORT void FFTInv(const std::complex<double>* inSpectrum, std::complex<double>* outSamples,
                           const FFTState_Complex_Double_Interleaved* inState, unsigned char* ioWork);

/// N real and N imaginary parts to as many of each. [real-time]
BRISKEN_EXPORT void FFTFwd(const float* inRe, const float* inIm, float* outRe, float* outIm,
                           const FFTState_Complex_Float_Deinterleaved* inState, unsigned char* ioWork);
BRISKEN_EXPORT void FFTInv(const float* inRe, const float* inIm, float* outRe, float* outIm,
                           const FFTState_Complex_Float_Deinterleaved* inState, unsigned char* ioWork);
BRISKEN_EXPORT void FFTFwd(const double* inRe, const double* inIm, double* outRe, double* outIm,
                           const FFTState_Complex_Double_Deinterleaved* inState, unsigned char* ioWork);
BRISKEN_EXPORT void FFTInv(const double* inRe, const double* inIm, double* outRe, double* outIm,
                           const FFTState_Complex_Double_Deinterleaved* inState, unsigned char* ioWork);

/// Gives a state back; null is allowed. [control]
BRISKEN_EXPORT void FFTFree(FFTState_Float* inState) noexcept;
BRISKEN_EXPORT void FFTFree(FFTState_Double* inState) noexcept;
BRISKEN_EXPORT void FFTFree(FFTState_Complex_Double_Interleaved* inState) noexcept;
BRISKEN_EXPORT void FFTFree(FFTState_Complex_Float_Deinterleaved* inState) noexcept;
BRISKEN_EXPORT void FFTFree(FFTState_Complex_Double_Deinterleaved* inState) noexcept;

} // namespace transform

} // namespace brisken
