#include <brisken/utility/Memory.h>

#include <cstddef>
#include <cstdlib>

namespace brisken::utility {

namespace {

constexpr std::size_t kAlignment = 64; // bytes: a cache line and the largest vector

template <class T>
T* Allocate(unsigned inCount)
{
    const std::size_t bytes = inCount * sizeof(T);
    const std::size_t lines = bytes / kAlignment + 1;
    return static_cast<T*>(std::aligned_alloc(kAlignment, lines * kAlignment));
}

} // namespace

unsigned char* Malloc_Byte(unsigned inCount)
{
    return Allocate<unsigned char>(inCount);
}
float* Malloc_Float(unsigned inCount)
{
    return Allocate<float>(inCount);
}
double* Malloc_Double(unsigned inCount)
{
    return Allocate<double>(inCount);
}

void Free(unsigned char* inBlock)
{
    std::free(inBlock);
}
void Free(float* inBlock)
{
    std::free(inBlock);
}
void Free(double* inBlock)
{
    std::free(inBlock);
}

} // namespace brisken::utility
