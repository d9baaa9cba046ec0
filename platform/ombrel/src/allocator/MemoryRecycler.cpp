#include <ombrel/allocator/MemoryRecycler.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <mutex>
#include <new>

#include "allocator/SizeClasses.h"

// One compiler defines a macro, the other has a feature test.
#if defined(__SANITIZE_ADDRESS__)
#define OMBREL_HIDE_UNUSED_BLOCKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OMBREL_HIDE_UNUSED_BLOCKS
#endif
#endif
#if defined(OMBREL_HIDE_UNUSED_BLOCKS)
#include <sanitizer/asan_interface.h>
#endif

namespace ombrel::allocator {

namespace {

using details::ClassOf;
using details::kCachedClasses;
using details::kLargestCached;
using details::kLargestPooled;
using details::kPooledClasses;
using details::SizeOfClass;

/// Blocks above `kLargestPooled` are rounded to this, so that a granted size grants itself.
constexpr std::size_t kLargeUnit = 4096;
constexpr std::size_t kThreadCacheBytes = std::size_t{1} << 20;
/// Bytes that pass between a thread's cache and the shared list at once.
constexpr std::size_t kBatchBytes = std::size_t{64} << 10;
constexpr std::size_t kSmallestBatch = 2;
constexpr std::size_t kLargestBatch = 16;
constexpr std::size_t kDefaultRetentionLimit = std::size_t{64} << 20;

/// An unused block; the link lies in its first bytes.
struct FreeBlock
{
    FreeBlock* mNext;
};

// A waiting block is poisoned, so that the address sanitizer sees a use after it was given back; all but the
// link, which the leak check follows.
void HideFromUse([[maybe_unused]] FreeBlock* inBlock, [[maybe_unused]] std::size_t inBytes) noexcept
{
#if defined(OMBREL_HIDE_UNUSED_BLOCKS)
    __asan_poison_memory_region(inBlock + 1, inBytes - sizeof(FreeBlock));
#endif
}

void ShowForUse([[maybe_unused]] FreeBlock* inBlock, [[maybe_unused]] std::size_t inBytes) noexcept
{
#if defined(OMBREL_HIDE_UNUSED_BLOCKS)
    __asan_unpoison_memory_region(inBlock + 1, inBytes - sizeof(FreeBlock));
#endif
}

void* NewBlock(std::size_t inBytes)
{
    return ::operator new (inBytes, std::align_val_t{MemoryRecycler::kAlignment});
}

void FreeBlockMemory(void* inBlock) noexcept
{
    ::operator delete (inBlock, std::align_val_t{MemoryRecycler::kAlignment});
}

/// A stack of unused blocks of one class.
struct FreeList
{
    FreeBlock* mHead;
    std::uint32_t mCount;

    void Push(void* inBlock, std::size_t inBytes) noexcept
    {
        mHead = ::new (inBlock) FreeBlock{mHead};
        ++mCount;
        HideFromUse(mHead, inBytes);
    }

    void* Pop(std::size_t inBytes) noexcept
    {
        if (mHead == nullptr) {
            return nullptr;
        }
        FreeBlock* block = mHead;
        ShowForUse(block, inBytes);
        mHead = block->mNext;
        --mCount;
        return block;
    }
};

struct alignas(64) SharedList
{
    std::mutex mMutex;
    FreeList mList{};
};

// All of this is constant-initialised and has no destructor to run, so that the pool stands before the first
// static constructor and after the last static destructor.
constinit std::array<SharedList, kPooledClasses> sShared{};
constinit std::atomic<std::size_t> sRetainedBytes{0};
constinit std::atomic<std::size_t> sRetentionLimit{kDefaultRetentionLimit};
static_assert(std::is_trivially_destructible_v<decltype(sShared)>);

struct ThreadCache
{
    std::array<FreeList, kCachedClasses> mLists;
    std::size_t mBytes;
    bool mIsClosed;
};

constinit thread_local ThreadCache sCache{};

#if defined(__ELF__)
#define OMBREL_FAST_THREAD_LOCAL __attribute__((tls_model("initial-exec")))
#else
#define OMBREL_FAST_THREAD_LOCAL
#endif

/// The cache while it is live. One word that is reached without a call into the loader; the cache itself
/// would be too large for the room that the loader keeps for such variables.
constinit thread_local ThreadCache* sLiveCache OMBREL_FAST_THREAD_LOCAL = nullptr;

std::size_t BatchOf(std::size_t inBytes)
{
    return std::clamp<std::size_t>(kBatchBytes / inBytes, kSmallestBatch, kLargestBatch);
}

/// Puts one block on the list of its class, or frees it when the lists hold enough.
void GiveToShared(std::size_t inClass, void* inBlock) noexcept
{
    const auto bytes = SizeOfClass(inClass);
    const auto retained = sRetainedBytes.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    if (retained > sRetentionLimit.load(std::memory_order_relaxed)) {
        sRetainedBytes.fetch_sub(bytes, std::memory_order_relaxed);
        FreeBlockMemory(inBlock);
        return;
    }
    auto& shared = sShared[inClass];
    const std::lock_guard lock(shared.mMutex);
    shared.mList.Push(inBlock, bytes);
}

/// Moves up to `inCount` blocks of a class into `ioList`; returns how many came.
std::size_t TakeFromShared(std::size_t inClass, std::size_t inCount, FreeList& ioList) noexcept
{
    const auto bytes = SizeOfClass(inClass);
    auto& shared = sShared[inClass];
    std::size_t taken = 0;
    {
        const std::lock_guard lock(shared.mMutex);
        for (void* block = nullptr; taken < inCount && (block = shared.mList.Pop(bytes)) != nullptr;
             ++taken) {
            ioList.Push(block, bytes);
        }
    }
    sRetainedBytes.fetch_sub(taken * bytes, std::memory_order_relaxed);
    return taken;
}

void ReturnFromCache(ThreadCache& ioCache, std::size_t inClass, std::size_t inCount) noexcept
{
    const auto bytes = SizeOfClass(inClass);
    for (std::size_t i = 0; i < inCount; ++i) {
        GiveToShared(inClass, ioCache.mLists[inClass].Pop(bytes));
        ioCache.mBytes -= bytes;
    }
}

void EmptyCache(ThreadCache& ioCache) noexcept
{
    for (std::size_t sizeClass = 0; sizeClass < kCachedClasses; ++sizeClass) {
        ReturnFromCache(ioCache, sizeClass, ioCache.mLists[sizeClass].mCount);
    }
}

/// Its destructor hands the thread's blocks on and shuts the cache, while the cache itself stays readable to
/// the thread-local destructors that run later.
struct CacheCloser
{
    CacheCloser() noexcept { sLiveCache = &sCache; }
    ~CacheCloser()
    {
        sCache.mIsClosed = true;
        EmptyCache(*sLiveCache);
        sLiveCache = nullptr;
    }
    CacheCloser(const CacheCloser&) = delete;
    CacheCloser& operator=(const CacheCloser&) = delete;
};

ThreadCache* OpenCache() noexcept
{
    if (!sCache.mIsClosed) {
        static thread_local const CacheCloser closer;
        static_cast<void>(closer);
    }
    return sLiveCache;
}

/// The thread's cache, or null when the thread is ending.
ThreadCache* UsableCache() noexcept
{
    return sLiveCache != nullptr ? sLiveCache : OpenCache();
}

void* TakeFromSharedOrNew(std::size_t inClass)
{
    FreeList one{};
    return TakeFromShared(inClass, 1, one) == 1 ? one.Pop(SizeOfClass(inClass))
                                                : NewBlock(SizeOfClass(inClass));
}

void* TakeSmall(std::size_t inClass)
{
    ThreadCache* cache = UsableCache();
    if (cache == nullptr) {
        return TakeFromSharedOrNew(inClass);
    }
    const auto bytes = SizeOfClass(inClass);
    auto& list = cache->mLists[inClass];
    if (list.mHead == nullptr) {
        cache->mBytes += bytes * TakeFromShared(inClass, BatchOf(bytes), list);
    }
    if (void* block = list.Pop(bytes)) {
        cache->mBytes -= bytes;
        return block;
    }
    return NewBlock(bytes);
}

void GiveSmall(std::size_t inClass, void* inBlock) noexcept
{
    ThreadCache* cache = UsableCache();
    if (cache == nullptr) {
        GiveToShared(inClass, inBlock);
        return;
    }
    const auto bytes = SizeOfClass(inClass);
    auto& list = cache->mLists[inClass];
    if (list.mCount >= 2 * BatchOf(bytes)) {
        ReturnFromCache(*cache, inClass, list.mCount / 2);
    }
    if (cache->mBytes + bytes > kThreadCacheBytes) {
        GiveToShared(inClass, inBlock);
        return;
    }
    list.Push(inBlock, bytes);
    cache->mBytes += bytes;
}

} // namespace

std::size_t MemoryRecycler::GrantedSize(std::size_t inBytes) noexcept
{
    if (inBytes == 0 || inBytes > kLargestBlock) {
        return 0;
    }
    return inBytes <= kLargestPooled ? SizeOfClass(ClassOf(inBytes))
                                     : (inBytes + kLargeUnit - 1) / kLargeUnit * kLargeUnit;
}

void* MemoryRecycler::Allocate(std::size_t inBytes, std::size_t& outGrantedBytes)
{
    outGrantedBytes = GrantedSize(inBytes);
    if (outGrantedBytes == 0) {
        if (inBytes != 0) {
            throw std::bad_alloc();
        }
        return nullptr;
    }
    if (inBytes <= kLargestCached) {
        return TakeSmall(ClassOf(inBytes));
    }
    return inBytes <= kLargestPooled ? TakeFromSharedOrNew(ClassOf(inBytes)) : NewBlock(outGrantedBytes);
}

void MemoryRecycler::Recycle(void* inBlock, std::size_t inBytes) noexcept
{
    if (inBlock == nullptr || inBytes == 0) {
        return;
    }
    if (inBytes <= kLargestCached) {
        GiveSmall(ClassOf(inBytes), inBlock);
    } else if (inBytes <= kLargestPooled) {
        GiveToShared(ClassOf(inBytes), inBlock);
    } else {
        FreeBlockMemory(inBlock);
    }
}

void MemoryRecycler::ReleaseUnused() noexcept
{
    if (ThreadCache* cache = UsableCache()) {
        EmptyCache(*cache);
    }
    for (std::size_t sizeClass = 0; sizeClass < kPooledClasses; ++sizeClass) {
        FreeList taken{};
        TakeFromShared(sizeClass, std::numeric_limits<std::size_t>::max(), taken);
        while (void* block = taken.Pop(SizeOfClass(sizeClass))) {
            FreeBlockMemory(block);
        }
    }
}

std::size_t MemoryRecycler::GetRetainedBytes() noexcept
{
    return sRetainedBytes.load(std::memory_order_relaxed);
}

void MemoryRecycler::SetRetentionLimit(std::size_t inBytes) noexcept
{
    sRetentionLimit.store(inBytes, std::memory_order_relaxed);
}

std::size_t MemoryRecycler::GetRetentionLimit() noexcept
{
    return sRetentionLimit.load(std::memory_order_relaxed);
}

} // namespace ombrel::allocator
