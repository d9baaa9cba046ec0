#include "filter/FIRKernel.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/FIRKernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"
#include "filter/Dot-inl.h"
#include "filter/VectorBlock-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

/// With N lanes, taps N apart meet inputs a vector apart.
void Row(const float* HWY_RESTRICT inSource, std::size_t inCount, const float* HWY_RESTRICT inTaps,
         std::size_t inNumTaps, float* HWY_RESTRICT outDest)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const auto tap = [&](std::size_t k) HWY_ATTR { return hn::Set(d, inTaps[k]); };
    ForEachBlock(inCount, outDest, [&](std::size_t inBegin) HWY_ATTR {
        auto block = ZeroBlock();
        for (std::size_t first = 0; first < std::min(lanes, inNumTaps); ++first) {
            AddTaps(inSource + inBegin - first, first, lanes, inNumTaps, tap, block);
        }
        return block;
    });
}

float DotRow(const float* HWY_RESTRICT inSource, const float* HWY_RESTRICT inTaps, std::size_t inCount)
{
    return Dot(inSource, inTaps, inCount);
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(Row);
HWY_EXPORT(DotRow);

void FIRRow(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
            float* outDest)
{
    BRISKEN_DISPATCH(Row)(inSource, inCount, inTaps, inNumTaps, outDest);
}

float FIRDot(const float* inSource, const float* inTaps, std::size_t inCount)
{
    return BRISKEN_DISPATCH(DotRow)(inSource, inTaps, inCount);
}

} // namespace brisken::filter
#endif
