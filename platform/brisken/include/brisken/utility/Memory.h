#pragma once

#include <brisken/Export.h>

/// Aligned memory for rows.
///
/// Blocks begin at a multiple of 64 bytes, which is a cache line and the largest vector: kernels are fastest
/// there. Contents are not cleared. These calls go to the system's allocator, so none is real-time safe. [any
/// thread]
namespace brisken::utility {

/// Room for `inCount` elements, or null when there is no memory. A count of 0 gives a block that holds
/// nothing. Hand the block to `Free`.
BRISKEN_EXPORT unsigned char* Malloc_Byte(unsigned inCount);
BRISKEN_EXPORT float* Malloc_Float(unsigned inCount);
BRISKEN_EXPORT double* Malloc_Double(unsigned inCount);

/// Gives back a block of one of the functions above. Null is harmless.
BRISKEN_EXPORT void Free(unsigned char* inBlock);
BRISKEN_EXPORT void Free(float* inBlock);
BRISKEN_EXPORT void Free(double* inBlock);

} // namespace brisken::utility
