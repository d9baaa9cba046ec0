#pragma once

#include <cstddef>

namespace brisken::filter {

/// Lanes of the widest vector.
inline constexpr std::size_t kMostLanes = 16;

/// Values behind the end of a stream that the kernels below may read or write: eight of the widest vectors.
inline constexpr std::size_t kStreamSlack = 8 * kMostLanes;

/// Taps of a filter that changes the rate up or down by a whole factor, for vectors of outputs that run
/// across phases.
///
/// Output `j` meets input `i(j) - m` with tap `m` of its phase, and `i(j - up)` is `i(j) - down`. With the
/// streams `s_b[j] = x[i(j) - b]` for `b` below `down`, tap `m = a * down + b` therefore meets `s_b[j - a *
/// up]`: plain rows which are read in order.
struct StreamTaps
{
    std::size_t mUp;
    std::size_t mDown;
    /// Taps a phase.
    std::size_t mDepth;
    /// `mDepth` aligned rows, `mRowStride` apart: row `m` has tap `m` of phases 0, 1, ... and begins anew
    /// behind the last phase, for `kMostLanes` values. With a single phase the rows are single values, 1
    /// apart.
    const float* mRows;
    std::size_t mRowStride;
};

/// Outputs 0 to `inCount - 1`, a multiple of `mUp`. `inStreams` is value 0 of the first stream; the others
/// follow `inStride` apart.
void StreamRow(const StreamTaps& inTaps, const float* inStreams, std::size_t inStride, std::size_t inCount,
               float* outDest);

/// Each of `inCount` values `inFactor` times. Writes less than `kMostLanes` values behind the end.
void HoldRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outDest);

/// `outRows[r * inStride + n] = inSource[n * inFactor + inFactor - 1 - r]` for each of `inFactor` rows.
void DeinterleaveRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outRows,
                     std::size_t inStride);

/// Taps of a filter with any ratio, for one output after the other.
struct PhaseTaps
{
    std::size_t mUp;
    std::size_t mDown;
    std::size_t mDepth;
    /// A row for each output of an iteration, `mRowStride` apart: the taps of its phase, the one for the
    /// oldest input first, and `kMostLanes` finite values behind them.
    const float* mRows;
    std::size_t mRowStride;
    /// The oldest input that each output meets, counted from the iteration's first.
    const std::ptrdiff_t* mOldest;
};

/// `inIterations` times `mUp` outputs. `inSource` is the first iteration's first input; it must be readable
/// for `kMostLanes` values behind the last.
void PhaseRow(const PhaseTaps& inTaps, const float* inSource, std::size_t inIterations, float* outDest);

} // namespace brisken::filter
