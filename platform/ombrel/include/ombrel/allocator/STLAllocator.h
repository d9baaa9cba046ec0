#pragma once

#include <cstddef>
#include <limits>
#include <new>

#include <ombrel/allocator/MemoryRecycler.h>

namespace ombrel::allocator {

/// Allocator over the `MemoryRecycler` for the containers of the standard library. It has no state: any two
/// are equal, and containers of it move and swap freely. Arrays start on a 64-byte boundary.
template <typename T>
class STLAllocator
{
public:
    using value_type = T;

    constexpr STLAllocator() noexcept = default;
    template <typename Other>
    constexpr STLAllocator(const STLAllocator<Other>&) noexcept
    {
    }

    [[nodiscard]] T* allocate(std::size_t inCount)
    {
        static_assert(alignof(T) <= MemoryRecycler::kAlignment, "the pool does not align more strictly");
        if (inCount > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        std::size_t granted = 0;
        return static_cast<T*>(MemoryRecycler::Allocate(inCount * sizeof(T), granted));
    }

    void deallocate(T* inArray, std::size_t inCount) noexcept
    {
        MemoryRecycler::Recycle(inArray, inCount * sizeof(T));
    }
};

template <typename T, typename Other>
[[nodiscard]] constexpr bool operator==(const STLAllocator<T>&, const STLAllocator<Other>&) noexcept
{
    return true;
}

} // namespace ombrel::allocator
