#pragma once

#include "Dispatch.h"

// The exported functions of the common shapes: each picks the active target's kernel. The kernels take
// sources first, then a constant, then the destination; the form in place hands them the destination as the
// last source.

/// NAME(n, a, out)
#define BRISKEN_UNARY(NAME, T, KERNEL)                                                                       \
    void NAME(unsigned inCount, const T* inA, T* out)                                                        \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, inA, out);                                                         \
    }

/// NAME(n, io)
#define BRISKEN_UNARY_IN_PLACE(NAME, T, KERNEL)                                                              \
    void NAME(unsigned inCount, T* io)                                                                       \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, io, io);                                                           \
    }

/// NAME(n, a, b, out)
#define BRISKEN_BINARY(NAME, T, KERNEL)                                                                      \
    void NAME(unsigned inCount, const T* inA, const T* inB, T* out)                                          \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, inA, inB, out);                                                    \
    }

/// NAME(n, a, io)
#define BRISKEN_BINARY_IN_PLACE(NAME, T, KERNEL)                                                             \
    void NAME(unsigned inCount, const T* inA, T* io)                                                         \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, inA, io, io);                                                      \
    }

/// NAME(n, a, out, constant)
#define BRISKEN_CONSTANT(NAME, T, KERNEL)                                                                    \
    void NAME(unsigned inCount, const T* inA, T* out, T inConstant)                                          \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, inA, inConstant, out);                                             \
    }

/// NAME(n, a, constant, out)
#define BRISKEN_MIDDLE_CONSTANT(NAME, T, KERNEL)                                                             \
    void NAME(unsigned inCount, const T* inA, T inConstant, T* out)                                          \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, inA, inConstant, out);                                             \
    }

/// NAME(n, io, constant)
#define BRISKEN_CONSTANT_IN_PLACE(NAME, T, KERNEL)                                                           \
    void NAME(unsigned inCount, T* io, T inConstant)                                                         \
    {                                                                                                        \
        BRISKEN_DISPATCH(KERNEL)(inCount, io, inConstant, io);                                               \
    }
