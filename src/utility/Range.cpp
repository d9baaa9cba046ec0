#include <tessaro/utility/Range.h>

#include <algorithm>

namespace tessaro::utils {

bool CompareLowerBound(const Range& inLeft, const Range& inRight)
{
    return inLeft.start < inRight.start;
}

void ShrinkRangeVector(std::vector<Range>& ioRanges)
{
    const auto last = std::find_if(ioRanges.rbegin(), ioRanges.rend(),
                                   [](const Range& inRange) { return inRange.length != 0; });
    ioRanges.erase(last.base(), ioRanges.end());
}

} // namespace tessaro::utils
