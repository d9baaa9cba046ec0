#include <brisken/utility/Copy.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Copy.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

/// Reads one vector at each end of the row and then writes them at the opposite ends.
template <class D, class T>
HWY_INLINE void FlipEnds(D d, std::size_t inLeft, std::size_t inRight, const T* inA, T* out)
{
    const auto left = hn::Reverse(d, hn::LoadU(d, inA + inLeft));
    const auto right = hn::Reverse(d, hn::LoadU(d, inA + inRight));
    hn::StoreU(right, d, out + inLeft);
    hn::StoreU(left, d, out + inRight);
}

/// What is left in the middle, shorter than two vectors: two that overlap, of the largest size that fits.
template <class D, class T>
HWY_INLINE void FlipMiddle(D d, std::size_t inBegin, std::size_t inEnd, const T* inA, T* out)
{
    if (inEnd - inBegin >= hn::Lanes(d)) {
        FlipEnds(d, inBegin, inEnd - hn::Lanes(d), inA, out);
    } else if constexpr (hn::MaxLanes(d) > 1) {
        FlipMiddle(hn::Half<D>(), inBegin, inEnd, inA, out);
    }
}

template <class T>
void FlipRow(unsigned inCount, const T* inA, T* out)
{
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t begin = 0;
    std::size_t end = inCount;
    for (; end - begin >= 2 * lanes; begin += lanes, end -= lanes) {
        FlipEnds(d, begin, end - lanes, inA, out);
    }
    FlipMiddle(d, begin, end, inA, out);
}

struct SwappedBytes : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inWords) const
    {
        const hn::DFromV<V> d;
        const auto low = hn::Set(d, 0x00FF00FFu);
        const auto swapped =
            hn::Or(hn::And(hn::ShiftRight<8>(inWords), low), hn::ShiftLeft<8>(hn::And(inWords, low)));
        return hn::Or(hn::ShiftRight<16>(swapped), hn::ShiftLeft<16>(swapped));
    }
};

constexpr auto& FlipF32 = FlipRow<float>;
constexpr auto& FlipF64 = FlipRow<double>;
constexpr auto& SwapBytesU32 = UnaryRow<SwappedBytes, unsigned>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <cstring>

#include "utility/Exports.h"

namespace brisken::utility {

namespace {

/// The C library has its own dispatch for this one. memmove, as it is no slower and lets a row be copied onto
/// itself.
template <class T>
void CopyBytes(unsigned inCount, const T* inA, T* out)
{
    if (inCount != 0) {
        std::memmove(out, inA, inCount * sizeof(T));
    }
}

} // namespace

HWY_EXPORT(FlipF32);
HWY_EXPORT(FlipF64);
HWY_EXPORT(SwapBytesU32);

void Copy(unsigned inCount, const float* inA, float* out)
{
    CopyBytes(inCount, inA, out);
}
void Copy(unsigned inCount, const double* inA, double* out)
{
    CopyBytes(inCount, inA, out);
}
void Copy(unsigned inCount, const unsigned char* inA, unsigned char* out)
{
    CopyBytes(inCount, inA, out);
}

void Move(unsigned inCount, const float* inA, float* out)
{
    CopyBytes(inCount, inA, out);
}
void Move(unsigned inCount, const double* inA, double* out)
{
    CopyBytes(inCount, inA, out);
}

BRISKEN_UNARY(Flip, float, FlipF32)
BRISKEN_UNARY(Flip, double, FlipF64)
BRISKEN_UNARY_IN_PLACE(Flip_InPlace, float, FlipF32)
BRISKEN_UNARY_IN_PLACE(Flip_InPlace, double, FlipF64)
BRISKEN_UNARY(SwapBytes, unsigned, SwapBytesU32)

} // namespace brisken::utility

#endif // HWY_ONCE
