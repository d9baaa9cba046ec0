#pragma once

#include "PlainLoops.h"

/// The plain loops as the compiler makes them for the machine at hand.
namespace native {

#define TESSARO_DECLARE(NAME) void NAME(Rows& r);
TESSARO_ELEMENTWISE_KERNELS(TESSARO_DECLARE)
TESSARO_REDUCTION_KERNELS(TESSARO_DECLARE)
#undef TESSARO_DECLARE

} // namespace native
