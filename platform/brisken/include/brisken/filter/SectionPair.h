#pragma once

#include <brisken/Export.h>

/// Two second-order sections in series over several rows at once, as frequency weightings are.
///
/// Each section is a direct form II, `w = x - a1 s1 - a2 s2; y = b0 w + b1 s1 + b2 s2; s2 = s1; s1 = w`, in
/// double precision, with two roundings to single precision: that of its state at every sample, after `w` has
/// gone into `y`, and that of its output, which is the second section's input. The products may be fused with
/// the sums that follow, where the machine has that.
///
/// All sections of all rows run side by side in the lanes of a vector, the second section some samples behind
/// the first, so that several rows take hardly more time than one.
namespace brisken::filter {

/// `H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2)`
struct SectionTaps
{
    double a1 = 0.0;
    double a2 = 0.0;
    double b0 = 0.0;
    double b1 = 0.0;
    double b2 = 0.0;
};

/// The past of one row: `s1`, `s2` of the first and of the second section, all 0 at the start
struct SectionPairState
{
    double past[4] = {};
};

/// Filters `inCount` samples of `inNumRows` rows by `inTaps[0]` and `inTaps[1]`. Each row has a state of its
/// own; any split of a stream into calls gives the same output to the last bit. An input row may be the
/// output row of the same index and may not overlap any other. A NaN or infinity stays in the state.
/// [real-time]
BRISKEN_EXPORT void RunSectionPair(unsigned inNumRows, unsigned inCount, const float* const* inInput,
                                   float* const* outOutput, const SectionTaps* inTaps,
                                   SectionPairState* ioStates);

} // namespace brisken::filter
