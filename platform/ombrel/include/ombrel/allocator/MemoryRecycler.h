#pragma once

#include <cstddef>

#include <ombrel/Export.h>

namespace ombrel::allocator {

/// The process-wide pool behind `RecycledMemory` and `STLAllocator`: blocks that are given back are kept by
/// size and handed out again, so that a program which makes and drops audio buffers all the time stays off
/// the system's heap.
///
/// Sizes are rounded up to classes, four to each doubling, so that at most a quarter of a block is slack
/// (below 512 bytes the classes are the multiples of 64). Every block starts on a 64-byte boundary. Blocks up
/// to 64 KiB pass through a small cache of the calling thread (at most 1 MiB a thread), larger ones and the
/// overflow of these caches through one locked list a class. The lists keep no more than `GetRetentionLimit`
/// bytes together; what would exceed that, and every block above 32 MiB, goes back to `operator delete`. New
/// memory comes from the aligned `operator new`.
///
/// Contents are never cleared: a block comes with whatever its last user left in it.
///
/// It works from static constructors and destructors and from the destructors of thread-local objects. A
/// thread's cache goes to the shared lists when the thread ends.
///
/// Real-time safety: a call that the thread's cache can serve takes no lock and makes no system call; nobody
/// should build on that, since the cache may be empty or full. Allocate in the configuration calls.
class OMBREL_EXPORT MemoryRecycler
{
public:
    /// Every block's address is a multiple of this.
    static constexpr std::size_t kAlignment = 64;
    /// No block is larger; a request above it fails without asking the system.
    static constexpr std::size_t kLargestBlock = std::size_t{1} << 39;

    MemoryRecycler() = delete;

    /// Returns a block of at least `inBytes` bytes, and in `outGrantedBytes` its full size, which is
    /// `GrantedSize(inBytes)` and may all be used. 0 bytes give null and 0. Throws `std::bad_alloc`. [any
    /// thread]
    [[nodiscard]] static void* Allocate(std::size_t inBytes, std::size_t& outGrantedBytes);

    /// Takes a block back. `inBytes` is the granted size, or the size that was asked for: both round to the
    /// same class. Null is ignored. [any thread]
    static void Recycle(void* inBlock, std::size_t inBytes) noexcept;

    /// What `Allocate` grants for a request: at least the request, and the same again for its own result.
    /// Returns 0 for 0 and for a request above `kLargestBlock`.
    [[nodiscard]] static std::size_t GrantedSize(std::size_t inBytes) noexcept;

    /// Frees every block of the shared lists and of the calling thread's cache; other threads keep theirs.
    /// [any thread]
    static void ReleaseUnused() noexcept;

    /// Bytes that wait in the shared lists for reuse; the caches of threads do not count. [any thread]
    [[nodiscard]] static std::size_t GetRetainedBytes() noexcept;

    /// Most bytes that the shared lists may keep; 64 MiB at first. A lower limit takes effect as blocks come
    /// back. [any thread]
    static void SetRetentionLimit(std::size_t inBytes) noexcept;
    [[nodiscard]] static std::size_t GetRetentionLimit() noexcept;
};

} // namespace ombrel::allocator
