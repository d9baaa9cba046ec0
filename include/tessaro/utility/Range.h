#pragma once

#include <cstdint>
#include <vector>

#include <tessaro/Export.h>

/// Found events: stretches of a selection, as the click and clipping tools list them for each channel.
///
/// Plain data and pure functions; nothing throws. One thread at a time for each list, `[any thread]`.
namespace tessaro::utils {

/// One event.
struct Range
{
    std::int64_t start = 0;   ///< first sample
    std::int32_t length = 0;  ///< samples; 0 marks an entry that has been given up
    std::int32_t handled = 0; ///< not 0 once the event has been repaired
};

/// Order by start, for `std::sort` and `std::lower_bound`. Length and flag play no part.
[[nodiscard]] TESSARO_EXPORT bool CompareLowerBound(const Range& inLeft, const Range& inRight);

/// Removes the entries of length 0 at the end of the list. Those in front of an entry with a length stay, so
/// that the index of every entry that is left remains what it was.
TESSARO_EXPORT void ShrinkRangeVector(std::vector<Range>& ioRanges);

} // namespace tessaro::utils
