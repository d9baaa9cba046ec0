#include <brisken/utility/Elementary.h>

#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Elementary.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

#include <hwy/contrib/math/math-inl.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

struct Squared : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA) const
    {
        return hn::Mul(inA, inA);
    }
};

struct Root : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA) const
    {
        return hn::Sqrt(inA);
    }
};

struct Absolute : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA) const
    {
        return hn::Abs(inA);
    }
};

struct NaturalLogarithm : ElementOp
{
    static constexpr bool kUnroll = false;

    template <class V>
    HWY_INLINE V operator()(V inA) const
    {
        using Limits = std::numeric_limits<double>;
        const hn::DFromV<V> d;
        const auto zero = hn::Zero(d);
        // The library's logarithm is for positive finite numbers.
        const auto regular = hn::And(hn::Gt(inA, zero), hn::Le(inA, hn::Set(d, Limits::max())));
        const auto ofZero = hn::Set(d, -Limits::infinity());
        const auto ofNegative = hn::Set(d, Limits::quiet_NaN());
        auto special = hn::IfThenElse(hn::Lt(inA, zero), ofNegative, inA);
        special = hn::IfThenElse(hn::Eq(inA, zero), ofZero, special);
        return hn::IfThenElse(regular, hn::Log(d, inA), special);
    }
};

constexpr auto& SqrF32 = UnaryRow<Squared, float>;
constexpr auto& SqrF64 = UnaryRow<Squared, double>;
constexpr auto& SqrtF32 = UnaryRow<Root, float>;
constexpr auto& SqrtF64 = UnaryRow<Root, double>;
constexpr auto& AbsF32 = UnaryRow<Absolute, float>;
constexpr auto& AbsF64 = UnaryRow<Absolute, double>;
constexpr auto& LnF64 = UnaryRow<NaturalLogarithm, double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(SqrF32);
HWY_EXPORT(SqrF64);
HWY_EXPORT(SqrtF32);
HWY_EXPORT(SqrtF64);
HWY_EXPORT(AbsF32);
HWY_EXPORT(AbsF64);
HWY_EXPORT(LnF64);

BRISKEN_UNARY(Sqr, float, SqrF32)
BRISKEN_UNARY(Sqr, double, SqrF64)
BRISKEN_UNARY_IN_PLACE(Sqrt_InPlace, float, SqrtF32)
BRISKEN_UNARY_IN_PLACE(Sqrt_InPlace, double, SqrtF64)
BRISKEN_UNARY(Abs, float, AbsF32)
BRISKEN_UNARY(Abs, double, AbsF64)
BRISKEN_UNARY_IN_PLACE(Abs_InPlace, float, AbsF32)
BRISKEN_UNARY_IN_PLACE(Abs_InPlace, double, AbsF64)
BRISKEN_UNARY(Ln, double, LnF64)

} // namespace brisken::utility

#endif // HWY_ONCE
