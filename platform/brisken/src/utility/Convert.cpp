#include <brisken/utility/Convert.h>

#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Convert.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

// The tag that goes round the loop is that of the wider type; the other has as many lanes in a shorter
// vector.

struct NarrowStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Narrow(hn::Rebind<float, D>(), hn::LoadU(d, inA + i));
    }

    template <class D, class V>
    HWY_INLINE void Store(D, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, hn::Rebind<float, D>(), out + i);
    }

    const double* inA;
    float* out;
};

struct WidenStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), inA + i));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const float* inA;
    double* out;
};

struct FromShortStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        const hn::RebindToSigned<D> words;
        const auto integers = hn::PromoteTo(words, hn::LoadU(hn::Rebind<std::int16_t, D>(), inA + i));
        return hn::Mul(hn::ConvertTo(d, integers), hn::Set(d, inFactor));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    const std::int16_t* inA;
    float inFactor;
    float* out;
};

void NarrowRow(unsigned inCount, const double* inA, float* out)
{
    RunRow(hn::ScalableTag<double>(), inCount, NarrowStep{inA, out});
}

void WidenRow(unsigned inCount, const float* inA, double* out)
{
    RunRowBackwards(hn::ScalableTag<double>(), inCount, WidenStep{inA, out});
}

void FromShortRow(unsigned inCount, const std::int16_t* inA, float inFactor, float* out)
{
    RunRowBackwards(hn::ScalableTag<float>(), inCount, FromShortStep{inA, inFactor, out});
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <algorithm>
#include <bit>

#include <brisken/utility/Arithmetic.h>

#include "Dispatch.h"

namespace brisken::utility {

namespace {

/// A power that is a normal number. Made from its bits, as the call of a library function would take longer
/// than a short row does.
float PowerOfTwo(int inExponent)
{
    constexpr int kBias = 127;
    constexpr int kMantissaBits = 23;
    return std::bit_cast<float>((inExponent + kBias) << kMantissaBits);
}

/// Exponents of normal numbers, either way.
constexpr int kMaxExponent = 126;

} // namespace

HWY_EXPORT(NarrowRow);
HWY_EXPORT(WidenRow);
HWY_EXPORT(FromShortRow);

void Convert(unsigned inCount, const double* inA, float* out)
{
    BRISKEN_DISPATCH(NarrowRow)(inCount, inA, out);
}

void Convert(unsigned inCount, const float* inA, double* out)
{
    BRISKEN_DISPATCH(WidenRow)(inCount, inA, out);
}

void Convert(unsigned inCount, const short* inA, float* out, int inScale)
{
    if (inScale >= -kMaxExponent && inScale <= kMaxExponent) {
        BRISKEN_DISPATCH(FromShortRow)(inCount, inA, PowerOfTwo(-inScale), out);
        return;
    }
    // Two factors; twice the greatest exponent takes any sample out of the range of float.
    const int first = inScale < 0 ? kMaxExponent : -kMaxExponent;
    const int second = -std::clamp(inScale, -2 * kMaxExponent, 2 * kMaxExponent) - first;
    BRISKEN_DISPATCH(FromShortRow)(inCount, inA, PowerOfTwo(first), out);
    MulConstant_InPlace(inCount, out, PowerOfTwo(second));
}

} // namespace brisken::utility

#endif // HWY_ONCE
