#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include <hwy/aligned_allocator.h>

namespace brisken::filter {

/// A fixed number of zero-initialised values, aligned for any vector.
template <typename T>
class AlignedArray
{
public:
    AlignedArray() = default;

    explicit AlignedArray(std::size_t inSize)
        : mValues(hwy::AllocateAligned<T>(std::max<std::size_t>(inSize, 1)))
    {
        if (mValues == nullptr) {
            throw std::bad_alloc();
        }
        std::fill_n(mValues.get(), inSize, T{});
    }

    T* Get() { return mValues.get(); }
    const T* Get() const { return mValues.get(); }
    T& operator[](std::size_t inIndex) { return mValues[inIndex]; }
    const T& operator[](std::size_t inIndex) const { return mValues[inIndex]; }

private:
    hwy::AlignedFreeUniquePtr<T[]> mValues;
};

} // namespace brisken::filter
