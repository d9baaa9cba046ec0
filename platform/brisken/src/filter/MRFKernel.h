#pragma once

#include <cstddef>

namespace brisken::filter {

/// Values behind the end of a row that the kernels below may read or write: the widest vector.
inline constexpr std::size_t kMRFSlack = 16;

/// Taps of a multi-rate filter, spread for vectors that run across phases.
///
/// Output `j` meets input `i(j) - m` with tap `m` of its phase, and `i(j - up)` is `i(j) - down`. With the
/// streams `s_b[j] = x[i(j) - b]` for `b` below `down`, tap `m = a * down + b` therefore meets `s_b[j - a *
/// up]`: plain rows which are read in order, whatever the ratio.
struct MRFTaps
{
    std::size_t mUp;
    std::size_t mDown;
    /// Taps a phase.
    std::size_t mDepth;
    /// `mDepth` rows, `mRowStride` apart: row `m` has tap `m` of phases 0, 1, ... and begins anew behind the
    /// last phase, for `kMRFSlack` values.
    const float* mRows;
    std::size_t mRowStride;
};

/// Outputs 0 to `inCount - 1`. `inStreams` is value 0 of the first stream; the others follow `inStride`
/// apart.
void MRFRow(const MRFTaps& inTaps, const float* inStreams, std::size_t inStride, std::size_t inCount,
            float* outDest);

/// Each of `inCount` values `inFactor` times. Writes up to `kMRFSlack` values behind the end.
void HoldRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outDest);

/// `outRows[r * inStride + n] = inSource[n * inFactor + inFactor - 1 - r]` for each of `inFactor` rows.
void DeinterleaveRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outRows,
                     std::size_t inStride);

} // namespace brisken::filter
