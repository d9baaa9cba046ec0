#pragma once

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace host {

/// Makes the thread treat denormal numbers as zeros while it lives, as an engine's audio thread does; the
/// library itself leaves the floating-point mode alone.
class FlushToZero
{
public:
#if defined(__SSE2__)
    FlushToZero() : mSaved(_mm_getcsr())
    {
        _mm_setcsr(mSaved | kFlushAndDenormalsAreZero);
    }
    ~FlushToZero()
    {
        _mm_setcsr(mSaved);
    }

private:
    static constexpr unsigned kFlushAndDenormalsAreZero = 0x8040;
    unsigned mSaved;
#elif defined(__aarch64__)
    FlushToZero()
    {
        asm volatile("mrs %0, fpcr" : "=r"(mSaved));
        asm volatile("msr fpcr, %0" : : "r"(mSaved | kFlush));
    }
    ~FlushToZero()
    {
        asm volatile("msr fpcr, %0" : : "r"(mSaved));
    }

private:
    static constexpr unsigned long kFlush = 1ul << 24;
    unsigned long mSaved;
#else
    FlushToZero() = default;
    ~FlushToZero() = default;
#endif
    FlushToZero(const FlushToZero&) = delete;
    FlushToZero& operator=(const FlushToZero&) = delete;
};

} // namespace host
