// The greater and the smaller of two vectors, by comparison. Included once for each target.

#if defined(BRISKEN_UTILITY_ORDER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_UTILITY_ORDER_INL_H_
#undef BRISKEN_UTILITY_ORDER_INL_H_
#else
#define BRISKEN_UTILITY_ORDER_INL_H_
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Both keep the current value unless the candidate passes it, so that NaN as a candidate is passed over and
// NaN as the current value stays. The vector instructions of x86 do just that; elsewhere what Max and Min
// make of NaN is another thing on each machine.
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

template <class V>
HWY_INLINE V Greater(V inCandidate, V inCurrent)
{
    return hn::Max(inCandidate, inCurrent);
}

template <class V>
HWY_INLINE V Smaller(V inCandidate, V inCurrent)
{
    return hn::Min(inCandidate, inCurrent);
}

#else

template <class V>
HWY_INLINE V Greater(V inCandidate, V inCurrent)
{
    return hn::IfThenElse(hn::Gt(inCandidate, inCurrent), inCandidate, inCurrent);
}

template <class V>
HWY_INLINE V Smaller(V inCandidate, V inCurrent)
{
    return hn::IfThenElse(hn::Lt(inCandidate, inCurrent), inCandidate, inCurrent);
}

#endif

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif // per-target include guard
