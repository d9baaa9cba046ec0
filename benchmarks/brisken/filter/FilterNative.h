#pragma once

#include <cstddef>

/// The plain loops that the filters are compared with, compiled for the machine at hand.
namespace brisken::native {

/// Tap by tap over the whole row, the order that the compiler can vectorise. `inSource` has `inNumTaps - 1`
/// values of past before it.
void FIR(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
         float* outDest);

/// Sections one after the other over the row, in direct form II transposed; six taps and two state values a
/// section.
void BiquadCascade(double* ioData, std::size_t inCount, const double* inTaps, std::size_t inNumSections,
                   double* ioState);

/// Interpolation: each phase's own taps only. `inSource` has `inNumTaps / inFactor` values of past before it.
void Interpolate(const float* inSource, std::size_t inCount, std::size_t inFactor, const float* inTaps,
                 std::size_t inNumTaps, float* outDest);

/// Decimation: only the outputs that are kept. `inSource` has `inNumTaps - 1` values of past before it.
void Decimate(const float* inSource, std::size_t inOutputs, std::size_t inFactor, const float* inTaps,
              std::size_t inNumTaps, float* outDest);

} // namespace brisken::native
