// Sums of products, for the FIR kernels. Included once for each target, like they are.
#if defined(BRISKEN_FILTER_DOT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_FILTER_DOT_INL_H
#undef BRISKEN_FILTER_DOT_INL_H
#else
#define BRISKEN_FILTER_DOT_INL_H
#endif

#include <cstddef>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

/// Sum of `inCount` products. Both rows are readable for a vector behind their end; what stands there in
/// `inSource` is left out, and in `inTaps` it is finite.
HWY_INLINE float Dot(const float* HWY_RESTRICT inSource, const float* HWY_RESTRICT inTaps,
                     std::size_t inCount)
{
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    auto sum0 = hn::Zero(d);
    auto sum1 = sum0;
    auto sum2 = sum0;
    auto sum3 = sum0;
    std::size_t i = 0;
    for (; i + 4 * lanes <= inCount; i += 4 * lanes) {
        const auto* source = inSource + i;
        const auto* taps = inTaps + i;
        sum0 = hn::MulAdd(hn::LoadU(d, source), hn::LoadU(d, taps), sum0);
        sum1 = hn::MulAdd(hn::LoadU(d, source + lanes), hn::LoadU(d, taps + lanes), sum1);
        sum2 = hn::MulAdd(hn::LoadU(d, source + 2 * lanes), hn::LoadU(d, taps + 2 * lanes), sum2);
        sum3 = hn::MulAdd(hn::LoadU(d, source + 3 * lanes), hn::LoadU(d, taps + 3 * lanes), sum3);
    }
    for (; i + lanes <= inCount; i += lanes) {
        sum0 = hn::MulAdd(hn::LoadU(d, inSource + i), hn::LoadU(d, inTaps + i), sum0);
    }
    if (i < inCount) {
        const auto rest = hn::IfThenElseZero(hn::FirstN(d, inCount - i), hn::LoadU(d, inSource + i));
        sum1 = hn::MulAdd(rest, hn::LoadU(d, inTaps + i), sum1);
    }
    const auto sum = hn::Add(hn::Add(sum0, sum1), hn::Add(sum2, sum3));
    return hn::GetLane(hn::SumOfLanes(d, sum));
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
