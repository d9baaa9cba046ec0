#pragma once

#include <cstddef>

namespace brisken::filter {

/// How far behind its last sample `FIRRow` may read: eight of the widest vectors.
inline constexpr std::size_t kFIRReadAhead = 8 * 16;

/// `outDest[n] = sum over k of inTaps[k] * inSource[n - k]` for `n` below `inCount`. `inSource` must be
/// readable from `inNumTaps - 1` values before it to `kFIRReadAhead` behind it and must not overlap
/// `outDest`. The order of summation is the same for each output, wherever it lies in the row.
void FIRRow(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
            float* outDest);

/// Sum of `inCount` products. Both rows are readable for `kFIRReadAhead` values behind their end; there,
/// `inTaps` is finite.
float FIRDot(const float* inSource, const float* inTaps, std::size_t inCount);

} // namespace brisken::filter
