#include <tessaro/utility/ChannelMask.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

namespace tessaro::utils {

namespace {

constexpr int kFieldBits = std::numeric_limits<unsigned>::digits;

} // namespace

void FillMaskFromBitField(int inCount, unsigned inBits, std::vector<bool>& outMask)
{
    outMask.assign(static_cast<std::size_t>(std::max(inCount, 0)), false);
    const int fromField = std::min(inCount, kFieldBits);
    for (int i = 0; i < fromField; ++i) {
        outMask[static_cast<std::size_t>(i)] = ((inBits >> i) & 1u) != 0;
    }
}

unsigned GetBitFieldFromMask(const std::vector<bool>& inMask)
{
    unsigned bits = 0;
    unsigned bit = 1;
    for (const bool isOn : inMask) {
        bits |= isOn ? bit : 0u;
        bit = std::rotl(bit, 1);
    }
    return bits;
}

} // namespace tessaro::utils
