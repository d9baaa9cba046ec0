#include <brisken/utility/Power.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Power.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

// All in vectors of doubles, with half vectors of floats at both ends.

/// Largest |log2| of a result that is a normal float
constexpr double kLargestLog2 = 126.0;
/// From here down results are 0; the exponent stays one of double's.
constexpr double kLeastLog2 = -1000.0;

/// log2 of a positive finite float
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Log2(D d, V inValues)
{
    const hn::RebindToUnsigned<D> words;
    constexpr std::uint64_t kRootOfHalf = 0x3FE6A09E667F3BCD;
    constexpr std::uint64_t kBias = 1024; // keeps the exponent positive
    constexpr std::uint64_t kTwoTo52 = 0x4330000000000000;
    const auto bits = hn::BitCast(words, inValues);
    const auto biased = hn::ShiftRight<52>(hn::Sub(bits, hn::Set(words, kRootOfHalf - (kBias << 52))));
    const auto exponent = hn::Sub(hn::BitCast(d, hn::Or(biased, hn::Set(words, kTwoTo52))),
                                  hn::Set(d, 0x1p52 + static_cast<double>(kBias)));
    const auto shift = hn::ShiftLeft<52>(hn::Sub(biased, hn::Set(words, kBias)));
    const auto mantissa = hn::BitCast(d, hn::Sub(bits, shift));

    const auto one = hn::Set(d, 1.0);
    const auto s = hn::Div(hn::Sub(mantissa, one), hn::Add(mantissa, one));
    const auto z = hn::Mul(s, s);
    // atanh(s) / s * 2 / ln 2; relative error 5e-12
    auto series = hn::Set(d, 0.3407120415619086);
    series = hn::MulAdd(series, z, hn::Set(d, 0.41167376623771057));
    series = hn::MulAdd(series, z, hn::Set(d, 0.5770835660048659));
    series = hn::MulAdd(series, z, hn::Set(d, 0.9617966734515485));
    series = hn::MulAdd(series, z, hn::Set(d, 2.885390081789987));
    return hn::MulAdd(series, s, exponent);
}

/// 2 to the power of values from `kLeastLog2` to `kLargestLog2`
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Exp2(D d, V inValues)
{
    const hn::RebindToUnsigned<D> words;
    const auto rounder = hn::Set(d, 0x1.8p52); // the sum's last bits are the nearest integer
    const auto rounded = hn::Add(inValues, rounder);
    const auto f = hn::Sub(inValues, hn::Sub(rounded, rounder));
    // (2^f - 1) / f; relative error 3e-10
    auto series = hn::Set(d, 1.5297323760701075e-05);
    series = hn::MulAdd(series, f, hn::Set(d, 0.0001546144469856913));
    series = hn::MulAdd(series, f, hn::Set(d, 0.001333350238616277));
    series = hn::MulAdd(series, f, hn::Set(d, 0.009618056678524637));
    series = hn::MulAdd(series, f, hn::Set(d, 0.055504108839096185));
    series = hn::MulAdd(series, f, hn::Set(d, 0.24022650922288757));
    series = hn::MulAdd(series, f, hn::Set(d, 0.6931471805599453));
    const auto power = hn::MulAdd(series, f, hn::Set(d, 1.0));
    const auto scale = hn::ShiftLeft<52>(hn::BitCast(words, rounded));
    return hn::BitCast(d, hn::Add(hn::BitCast(words, power), scale));
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE auto IsPositiveFinite(D d, V inValues)
{
    const auto largest = hn::Set(d, static_cast<double>(std::numeric_limits<float>::max()));
    return hn::And(hn::Gt(inValues, hn::Zero(d)), hn::Le(inValues, largest));
}

/// Puts the C library's results where an element is no regular one.
template <class D, class V, class M, class Function>
HWY_INLINE V Patch(D d, M inIsRegular, V inArguments, V inResults, const Function& inFunction)
{
    if (HWY_LIKELY(hn::AllTrue(d, inIsRegular))) {
        return inResults;
    }
    HWY_ALIGN double arguments[HWY_MAX_BYTES / sizeof(double)];
    HWY_ALIGN double results[HWY_MAX_BYTES / sizeof(double)];
    hn::Store(inArguments, d, arguments);
    for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
        results[i] = inFunction(arguments[i]);
    }
    return hn::IfThenElse(inIsRegular, inResults, hn::Load(d, results));
}

struct PowerFunction
{
    template <class D, class V>
    HWY_INLINE V operator()(D d, V inA) const
    {
        const auto exponent = hn::Mul(Log2(d, inA), hn::Set(d, mExponent));
        const auto isRegular = hn::And(IsPositiveFinite(d, inA), hn::Le(exponent, hn::Set(d, kLargestLog2)));
        const auto bounded = hn::Max(hn::Min(exponent, hn::Set(d, kLargestLog2)), hn::Set(d, kLeastLog2));
        return Patch(d, isRegular, inA, Exp2(d, bounded),
                     [this](double inValue) { return std::pow(inValue, mExponent); });
    }

    double mExponent;
};

struct ExpFunction
{
    template <class D, class V>
    HWY_INLINE V operator()(D d, V inA) const
    {
        const auto exponent = hn::Mul(inA, hn::Set(d, std::numbers::log2e));
        const auto isRegular = hn::Le(exponent, hn::Set(d, kLargestLog2));
        const auto bounded = hn::Max(hn::Min(exponent, hn::Set(d, kLargestLog2)), hn::Set(d, kLeastLog2));
        return Patch(d, isRegular, inA, Exp2(d, bounded), [](double inValue) { return std::exp(inValue); });
    }
};

struct LnFunction
{
    template <class D, class V>
    HWY_INLINE V operator()(D d, V inA) const
    {
        const auto result = hn::Mul(Log2(d, inA), hn::Set(d, std::numbers::ln2));
        return Patch(d, IsPositiveFinite(d, inA), inA, result,
                     [](double inValue) { return std::log(inValue); });
    }
};

template <class Function>
struct FunctionStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        const hn::Rebind<float, D> floats;
        return Narrow(floats, mFunction(d, hn::PromoteTo(d, hn::LoadU(floats, inA + i))));
    }

    template <class D, class V>
    HWY_INLINE void Store(D, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, hn::Rebind<float, D>(), out + i);
    }

    const float* inA;
    float* out;
    Function mFunction;
};

template <class Function>
HWY_INLINE void RunFunction(unsigned inCount, const float* inA, float* out, Function inFunction)
{
    RunRow<false>(hn::ScalableTag<double>(), inCount, FunctionStep<Function>{inA, out, inFunction});
}

void PowerF32(unsigned inCount, const float* inA, double inExponent, float* out)
{
    RunFunction(inCount, inA, out, PowerFunction{inExponent});
}

void ExpF32(unsigned inCount, const float* inA, float* out)
{
    RunFunction(inCount, inA, out, ExpFunction());
}

void LnF32(unsigned inCount, const float* inA, float* out)
{
    RunFunction(inCount, inA, out, LnFunction());
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(PowerF32);
HWY_EXPORT(ExpF32);
HWY_EXPORT(LnF32);

void Power(unsigned inCount, const float* inA, double inExponent, float* out)
{
    BRISKEN_DISPATCH(PowerF32)(inCount, inA, inExponent, out);
}

BRISKEN_UNARY(Exp, float, ExpF32)
BRISKEN_UNARY(Ln, float, LnF32)

} // namespace brisken::utility

#endif // HWY_ONCE
