#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include <ombrel/Export.h>

namespace ombrel::allocator {

/// Owner of one block from the `MemoryRecycler`: the storage of audio buffers.
///
/// The block starts on a 64-byte boundary and its contents are not cleared. `GetSize` is what was asked for,
/// not the rounded size that the pool granted, so that a capacity computed from it does not depend on the
/// pool's classes; `GetGrantedSize` tells the rest, which may be used too. One thread at a time; another
/// thread may destroy it.
class OMBREL_EXPORT RecycledMemory
{
public:
    /// Holds `inBytes` bytes; 0 holds nothing. Throws `std::bad_alloc`.
    explicit RecycledMemory(std::size_t inBytes = 0);
    ~RecycledMemory();

    RecycledMemory(RecycledMemory&& ioOther) noexcept;
    RecycledMemory& operator=(RecycledMemory&& ioOther) noexcept;
    RecycledMemory(const RecycledMemory&) = delete;
    RecycledMemory& operator=(const RecycledMemory&) = delete;

    /// A shared block of `inBytes` bytes. Throws `std::bad_alloc`.
    [[nodiscard]] static std::shared_ptr<RecycledMemory> Create(std::size_t inBytes);

    /// Replaces the block by one of `inBytes` bytes; the contents are not kept. 0 gives the block back. The
    /// old block stays, untouched, when `std::bad_alloc` is thrown, and is reused when its size class fits.
    void Allocate(std::size_t inBytes);

    /// Start of the block, null when nothing is held.
    [[nodiscard]] void* GetMemory() noexcept { return mMemory; }
    [[nodiscard]] const void* GetMemory() const noexcept { return mMemory; }

    /// Bytes asked for, 0 when nothing is held.
    [[nodiscard]] std::size_t GetSize() const noexcept { return mSize; }

    /// Bytes that the block really has.
    [[nodiscard]] std::size_t GetGrantedSize() const noexcept { return mGrantedSize; }

    /// The block as an array of `T`, which must be a type that needs no construction.
    template <typename T>
    [[nodiscard]] T* BufferAs() noexcept
    {
        return static_cast<T*>(mMemory);
    }
    template <typename T>
    [[nodiscard]] const T* BufferAs() const noexcept
    {
        return static_cast<const T*>(mMemory);
    }

private:
    void* mMemory = nullptr;
    std::size_t mSize = 0;
    std::size_t mGrantedSize = 0;
};

} // namespace ombrel::allocator
