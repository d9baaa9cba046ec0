#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include <brisken/utility/Copy.h>

namespace tessaro::waveform {

inline constexpr std::size_t kLongestRow = std::numeric_limits<unsigned>::max();

/// Calls `inFunction(offset, count)` for rows that the vector operations can count, until `inCount` elements
/// are done: once, as a rule.
template <typename Function>
void ForEachRow(std::size_t inCount, const Function& inFunction)
{
    for (std::size_t done = 0; done < inCount;) {
        const std::size_t count = std::min(inCount - done, kLongestRow);
        inFunction(done, static_cast<unsigned>(count));
        done += count;
    }
}

/// As `brisken::utility::Move`, of any length. The rows may overlap, so it cannot go piece by piece.
inline void MoveLongRow(std::size_t inCount, const float* inSource, float* outDest)
{
    if (inCount <= kLongestRow) {
        brisken::utility::Move(static_cast<unsigned>(inCount), inSource, outDest);
    } else {
        std::memmove(outDest, inSource, inCount * sizeof(float));
    }
}

/// As `brisken::utility::Flip_InPlace`, of any length.
inline void FlipLongRow(std::size_t inCount, float* ioRow)
{
    if (inCount <= kLongestRow) {
        brisken::utility::Flip_InPlace(static_cast<unsigned>(inCount), ioRow);
    } else {
        std::reverse(ioRow, ioRow + inCount);
    }
}

} // namespace tessaro::waveform
