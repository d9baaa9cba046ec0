#pragma once

#include <vector>

#include <tessaro/Export.h>

/// Between a list of channels that are on or off and the same as a bit field: bit n is channel n. `[control]`
namespace tessaro::utils {

/// Makes `outMask` hold `inCount` entries, entry n being bit n of `inBits`; entries from 32 on are false. A
/// count of 0 or below gives an empty mask. Throws `std::bad_alloc`.
TESSARO_EXPORT void FillMaskFromBitField(int inCount, unsigned inBits, std::vector<bool>& outMask);

/// The inverse; 0 for an empty mask. Channels share the bits of a field by turns, so that entry 32 sets bit 0
/// again, entry 33 bit 1 and so on. Nothing throws.
[[nodiscard]] TESSARO_EXPORT unsigned GetBitFieldFromMask(const std::vector<bool>& inMask);

} // namespace tessaro::utils
