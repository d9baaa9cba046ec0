#pragma once

#include <cstddef>
#include <cstdint>

#include <brisken/Export.h>

/// Dot products of rows of a table with windows of a signal: the inner loop of interpolators, whose every
/// output has taps and a place of its own.
namespace brisken::filter {

/// One output: `mCount` taps from `inTable[mTaps]` on meet the samples from `inSource[mSource]` on.
struct TapWindow
{
    std::size_t mTaps;
    std::ptrdiff_t mSource;
    std::size_t mCount;
};

/// Values behind the end of each window that must be readable, in the table and in the source. They do not
/// count, whatever stands there in the source; in the table they are finite.
inline constexpr std::size_t kTapWindowSlack = 15;

/// `outDest[i]` is the sum of the products of window `i`, 0 for one without taps. `outDest` must not overlap
/// what is read. Sums are taken in single precision in an order that depends on the active target and the
/// number of taps only, so any split of the windows into calls gives the same. [real-time], [any thread]
BRISKEN_EXPORT void DotWindows(const float* inTable, const float* inSource, const TapWindow* inWindows,
                               unsigned inNumWindows, float* outDest);

/// Splits `inCount` positions, `inStart + (inFirst + n) * inStep`, into the whole number below and the
/// nearest of `inPhases` places behind it, from 0 to `inPhases`, that number included. Both rows are written
/// up to the next multiple of 8. Positions lie within +-2^52. [real-time], [any thread]
BRISKEN_EXPORT void SplitPositions(double inStart, double inStep, unsigned inFirst, unsigned inCount,
                                   unsigned inPhases, double* outWhole, std::int32_t* outPhase);

} // namespace brisken::filter
