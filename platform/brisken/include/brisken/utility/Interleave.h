#pragma once

#include <brisken/Export.h>

/// Between planar rows, one a channel, and interleaved frames.
///
/// `inCount` is the number of samples a channel. Either count may be 0, which does nothing. Planar rows and
/// the interleaved block may not overlap. Pointers need no alignment. All functions are [real-time] safe and
/// [any thread]. Nothing throws.
namespace brisken::utility {

/// out[i * channels + c] = rows[c][i]
BRISKEN_EXPORT void Interleave(unsigned inCount, unsigned inChannels, const float* const* inRows, float* out);

/// rows[c][i] = a[i * channels + c]
BRISKEN_EXPORT void Deinterleave(unsigned inCount, unsigned inChannels, const float* inA,
                                 float* const* outRows);

} // namespace brisken::utility
