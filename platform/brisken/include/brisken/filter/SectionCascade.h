#pragma once

#include <brisken/Export.h>
#include <brisken/filter/SectionPair.h>

/// Second-order sections in series, in direct form I:
///
/// `y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1 y[n-1] - a2 y[n-2]`
///
/// in double precision. The products may be fused with the sums that follow, where the machine has that.
///
/// The sections run side by side in the lanes of a vector, each two samples behind the one before it, and two
/// rows side by side with them. Nothing else changes: every sample goes through the recursion as it stands,
/// so that any split of a stream into calls gives the same output to the last bit. No latency: the pipeline
/// is filled and emptied within each call, which costs twice as many steps as there are sections.
///
/// Nothing allocates. A NaN or infinity stays in the memory. [real-time]
namespace brisken::filter {

/// Past input and output of one section of one row, all 0 at the start
struct SectionMemory
{
    double x1 = 0.0;
    double x2 = 0.0;
    double y1 = 0.0;
    double y2 = 0.0;
};

/// Filters `inCount` samples of `inNumRows` rows in place, each by `inNumSections` sections. Taps and
/// memories lie row by row, section by section, `inNumRows * inNumSections` of each. The rows must not
/// overlap. Without sections the rows stay as they are.
BRISKEN_EXPORT void RunSectionCascade(unsigned inNumRows, unsigned inCount, double* const* ioRows,
                                      unsigned inNumSections, const SectionTaps* inTaps,
                                      SectionMemory* ioMemories);

/// Filters `inCount` samples, `inStride` values apart from each other, in place. What one section hands to
/// the next is rounded to single precision; its own recursion goes on from the unrounded output.
BRISKEN_EXPORT void RunRoundedSectionCascade(unsigned inCount, float* ioRow, unsigned inStride,
                                             unsigned inNumSections, const SectionTaps* inTaps,
                                             SectionMemory* ioMemories);

} // namespace brisken::filter
