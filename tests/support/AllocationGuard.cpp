#include "support/AllocationGuard.h"

#include <cerrno>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TESSARO_COUNT_MALLOC 0
#elif defined(__has_feature)
#define TESSARO_COUNT_MALLOC (!__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer))
#else
#define TESSARO_COUNT_MALLOC 1
#endif
#if !defined(__GLIBC__)
#undef TESSARO_COUNT_MALLOC
#define TESSARO_COUNT_MALLOC 0
#endif

namespace {

struct HeapCalls
{
    std::size_t mAllocations = 0;
    std::size_t mFrees = 0;
};

thread_local HeapCalls tHeapCalls;

} // namespace

#if TESSARO_COUNT_MALLOC

// The C library's own functions, under the names that a replacement of the heap may call.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t inBytes)
{
    ++tHeapCalls.mAllocations;
    return __libc_malloc(inBytes);
}

void* calloc(std::size_t inCount, std::size_t inBytes)
{
    ++tHeapCalls.mAllocations;
    return __libc_calloc(inCount, inBytes);
}

void* realloc(void* inBlock, std::size_t inBytes)
{
    ++tHeapCalls.mAllocations;
    return __libc_realloc(inBlock, inBytes);
}

void* memalign(std::size_t inAlignment, std::size_t inBytes)
{
    ++tHeapCalls.mAllocations;
    return __libc_memalign(inAlignment, inBytes);
}

void* aligned_alloc(std::size_t inAlignment, std::size_t inBytes)
{
    return memalign(inAlignment, inBytes);
}

int posix_memalign(void** outBlock, std::size_t inAlignment, std::size_t inBytes)
{
    *outBlock = memalign(inAlignment, inBytes);
    return *outBlock != nullptr ? 0 : ENOMEM;
}

void free(void* inBlock)
{
    tHeapCalls.mFrees += inBlock != nullptr;
    __libc_free(inBlock);
}
}

#else

// All forms, the array and nothrow ones too: those of the sanitizer's own runtime would not pair with these.

namespace {

void* TakeOrNull(std::size_t inBytes, std::size_t inAlignment = 0) noexcept
{
    ++tHeapCalls.mAllocations;
    if (inAlignment == 0) {
        return std::malloc(inBytes != 0 ? inBytes : 1);
    }
    const auto bytes = (inBytes + inAlignment - 1) / inAlignment * inAlignment;
    return std::aligned_alloc(inAlignment, bytes != 0 ? bytes : inAlignment);
}

void* OrThrow(void* inBlock)
{
    return inBlock != nullptr ? inBlock : throw std::bad_alloc();
}

void Give(void* inBlock) noexcept
{
    tHeapCalls.mFrees += inBlock != nullptr;
    std::free(inBlock);
}

std::size_t Number(std::align_val_t inAlignment)
{
    return static_cast<std::size_t>(inAlignment);
}

} // namespace

using Nothrow = const std::nothrow_t&;
using Align = std::align_val_t;

void* operator new(std::size_t inBytes)
{
    return OrThrow(TakeOrNull(inBytes));
}
void* operator new[](std::size_t inBytes)
{
    return OrThrow(TakeOrNull(inBytes));
}
void* operator new(std::size_t inBytes, Nothrow) noexcept
{
    return TakeOrNull(inBytes);
}
void* operator new[](std::size_t inBytes, Nothrow) noexcept
{
    return TakeOrNull(inBytes);
}
void* operator new(std::size_t inBytes, Align inAlign)
{
    return OrThrow(TakeOrNull(inBytes, Number(inAlign)));
}
void* operator new[](std::size_t inBytes, Align inAlign)
{
    return OrThrow(TakeOrNull(inBytes, Number(inAlign)));
}
void* operator new(std::size_t inBytes, Align inAlign, Nothrow) noexcept
{
    return TakeOrNull(inBytes, Number(inAlign));
}
void* operator new[](std::size_t inBytes, Align inAlign, Nothrow) noexcept
{
    return TakeOrNull(inBytes, Number(inAlign));
}

void operator delete(void* inBlock) noexcept
{
    Give(inBlock);
}
void operator delete[](void* inBlock) noexcept
{
    Give(inBlock);
}
void operator delete(void* inBlock, Nothrow) noexcept
{
    Give(inBlock);
}
void operator delete[](void* inBlock, Nothrow) noexcept
{
    Give(inBlock);
}
void operator delete(void* inBlock, std::size_t) noexcept
{
    Give(inBlock);
}
void operator delete[](void* inBlock, std::size_t) noexcept
{
    Give(inBlock);
}
void operator delete(void* inBlock, Align) noexcept
{
    Give(inBlock);
}
void operator delete[](void* inBlock, Align) noexcept
{
    Give(inBlock);
}
void operator delete(void* inBlock, std::size_t, Align) noexcept
{
    Give(inBlock);
}
void operator delete[](void* inBlock, std::size_t, Align) noexcept
{
    Give(inBlock);
}

#endif

namespace tessaro::testing {

AllocationCounter::AllocationCounter()
    : mAllocationsBefore(tHeapCalls.mAllocations), mFreesBefore(tHeapCalls.mFrees)
{
}

std::size_t AllocationCounter::GetAllocations() const
{
    return tHeapCalls.mAllocations - mAllocationsBefore;
}

std::size_t AllocationCounter::GetFrees() const
{
    return tHeapCalls.mFrees - mFreesBefore;
}

AllocationGuard::~AllocationGuard()
{
    const auto allocations = mCounter.GetAllocations();
    const auto frees = mCounter.GetFrees();
    EXPECT_EQ(allocations, 0u) << "allocations in a scope that must not allocate";
    EXPECT_EQ(frees, 0u) << "frees in a scope that must not free";
}

} // namespace tessaro::testing
