#pragma once

#include <bit>
#include <cstddef>

namespace ombrel::allocator::details {

/// The classes of the pool, four to a doubling: 64, 128, 192, 256, 320, 384, 448, 512, 640, 768, 896, 1024,
/// 1280...
inline constexpr std::size_t kUnit = 64;
inline constexpr std::size_t kStepsPerDoubling = 4;
inline constexpr std::size_t kLargestPooled = std::size_t{32} << 20;
inline constexpr std::size_t kLargestCached = std::size_t{64} << 10;

/// Class of a block of 1 to `kLargestPooled` bytes. In units u = ceil(bytes / 64): the first four classes are
/// u - 1; above, with the top three bits of u - 1 as mantissa, four classes follow each power of two.
constexpr std::size_t ClassOf(std::size_t inBytes)
{
    const std::size_t last = (inBytes - 1) / kUnit;
    if (last < kStepsPerDoubling) {
        return last;
    }
    const auto doublings = static_cast<std::size_t>(std::bit_width(last)) - 3;
    return doublings * kStepsPerDoubling + (last >> doublings);
}

/// Bytes of each block of a class.
constexpr std::size_t SizeOfClass(std::size_t inClass)
{
    if (inClass < kStepsPerDoubling) {
        return (inClass + 1) * kUnit;
    }
    const std::size_t doublings = inClass / kStepsPerDoubling - 1;
    const std::size_t mantissa = inClass - doublings * kStepsPerDoubling;
    return ((mantissa + 1) << doublings) * kUnit;
}

inline constexpr std::size_t kPooledClasses = ClassOf(kLargestPooled) + 1;
inline constexpr std::size_t kCachedClasses = ClassOf(kLargestCached) + 1;

static_assert(SizeOfClass(kPooledClasses - 1) == kLargestPooled);
static_assert(SizeOfClass(kCachedClasses - 1) == kLargestCached);

} // namespace ombrel::allocator::details
