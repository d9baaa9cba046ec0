#include <brisken/utility/Reductions.h>

#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Sums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A term adds one vector of its summands, which begins at an index of the row, to a partial sum. `inKeep`
// decides which of the lanes count: what it drops must become 0.

struct KeepAll
{
    template <class V>
    HWY_INLINE V operator()(V inValue) const
    {
        return inValue;
    }
};

template <class M>
struct KeepMasked
{
    template <class V>
    HWY_INLINE V operator()(V inValue) const
    {
        return hn::IfThenElseZero(mask, inValue);
    }

    M mask;
};

template <class T>
struct ElementTerm
{
    template <class D, class V, class Keep>
    HWY_INLINE V Accumulate(D d, std::size_t i, V inSum, Keep inKeep) const
    {
        return hn::Add(inSum, inKeep(hn::LoadU(d, inA + i)));
    }

    const T* inA;
};

template <class T>
struct ProductTerm
{
    template <class D, class V, class Keep>
    HWY_INLINE V Accumulate(D d, std::size_t i, V inSum, Keep inKeep) const
    {
        return hn::MulAdd(inKeep(hn::LoadU(d, inA + i)), inKeep(hn::LoadU(d, inB + i)), inSum);
    }

    const T* inA;
    const T* inB;
};

/// The square of a float, in double precision
struct WideSquareTerm
{
    template <class D, class V, class Keep>
    HWY_INLINE V Accumulate(D d, std::size_t i, V inSum, Keep inKeep) const
    {
        const hn::Rebind<float, D> narrow;
        const auto value = inKeep(hn::PromoteTo(d, hn::LoadU(narrow, inA + i)));
        return hn::MulAdd(value, value, inSum);
    }

    const float* inA;
};

/// (a - offset)^2
template <class T>
struct SquaredDistanceTerm
{
    template <class D, class V, class Keep>
    HWY_INLINE V Accumulate(D d, std::size_t i, V inSum, Keep inKeep) const
    {
        const auto distance = inKeep(hn::Sub(hn::LoadU(d, inA + i), hn::Set(d, inOffset)));
        return hn::MulAdd(distance, distance, inSum);
    }

    const T* inA;
    T inOffset;
};

/// Adds the last `inRest` elements of the row by a vector that ends with the row, its earlier lanes dropped.
template <class D, class V, class Term>
HWY_INLINE V AccumulateRest(D d, std::size_t inCount, std::size_t inRest, const Term& inTerm, V inSum)
{
    const auto dropped = hn::FirstN(d, hn::Lanes(d) - inRest);
    const auto kept = hn::Not(dropped);
    return inTerm.Accumulate(d, inCount - hn::Lanes(d), inSum, KeepMasked<decltype(kept)>{kept});
}

/// A row shorter than a vector: one of the largest half, quarter, ... that fits, and the rest.
template <class D, class Term>
HWY_INLINE hn::TFromD<D> SumShortRow(D d, std::size_t inCount, const Term& inTerm)
{
    if constexpr (hn::MaxLanes(d) > 1) {
        const hn::Half<D> half;
        const std::size_t lanes = hn::Lanes(half);
        if (inCount < lanes) {
            return SumShortRow(half, inCount, inTerm);
        }
        auto sum = inTerm.Accumulate(half, 0, hn::Zero(half), KeepAll());
        sum = AccumulateRest(half, inCount, inCount - lanes, inTerm, sum);
        return hn::GetLane(hn::SumOfLanes(half, sum));
    } else {
        return 0;
    }
}

template <class D, class Term>
HWY_INLINE hn::TFromD<D> SumRow(D d, std::size_t inCount, const Term& inTerm)
{
    const std::size_t lanes = hn::Lanes(d);
    if (HWY_UNLIKELY(inCount < lanes)) {
        return SumShortRow(d, inCount, inTerm);
    }
    auto sum0 = hn::Zero(d);
    auto sum1 = hn::Zero(d);
    auto sum2 = hn::Zero(d);
    auto sum3 = hn::Zero(d);
    std::size_t i = 0;
    for (; i + 4 * lanes <= inCount; i += 4 * lanes) {
        sum0 = inTerm.Accumulate(d, i, sum0, KeepAll());
        sum1 = inTerm.Accumulate(d, i + lanes, sum1, KeepAll());
        sum2 = inTerm.Accumulate(d, i + 2 * lanes, sum2, KeepAll());
        sum3 = inTerm.Accumulate(d, i + 3 * lanes, sum3, KeepAll());
    }
    for (; i + lanes <= inCount; i += lanes) {
        sum0 = inTerm.Accumulate(d, i, sum0, KeepAll());
    }
    if (i < inCount) {
        sum1 = AccumulateRest(d, inCount, inCount - i, inTerm, sum1);
    }
    return hn::GetLane(hn::SumOfLanes(d, hn::Add(hn::Add(sum0, sum1), hn::Add(sum2, sum3))));
}

template <class T>
T SumOfRow(unsigned inCount, const T* inA)
{
    return SumRow(hn::ScalableTag<T>(), inCount, ElementTerm<T>{inA});
}

template <class T>
T SumOfProducts(unsigned inCount, const T* inA, const T* inB)
{
    return SumRow(hn::ScalableTag<T>(), inCount, ProductTerm<T>{inA, inB});
}

template <class T>
T SumOfSquaredDistances(unsigned inCount, const T* inA, T inOffset)
{
    return SumRow(hn::ScalableTag<T>(), inCount, SquaredDistanceTerm<T>{inA, inOffset});
}

double SumOfWideSquares(unsigned inCount, const float* inA)
{
    return SumRow(hn::ScalableTag<double>(), inCount, WideSquareTerm{inA});
}

constexpr auto& SumF32 = SumOfRow<float>;
constexpr auto& SumF64 = SumOfRow<double>;
constexpr auto& DotProductF32 = SumOfProducts<float>;
constexpr auto& DotProductF64 = SumOfProducts<double>;
constexpr auto& SquaredDistancesF32 = SumOfSquaredDistances<float>;
constexpr auto& SquaredDistancesF64 = SumOfSquaredDistances<double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "Dispatch.h"

namespace brisken::utility {

HWY_EXPORT(SumF32);
HWY_EXPORT(SumF64);
HWY_EXPORT(DotProductF32);
HWY_EXPORT(DotProductF64);
HWY_EXPORT(SquaredDistancesF32);
HWY_EXPORT(SquaredDistancesF64);
HWY_EXPORT(SumOfWideSquares);

float Sum(unsigned inCount, const float* inA)
{
    return BRISKEN_DISPATCH(SumF32)(inCount, inA);
}
double Sum(unsigned inCount, const double* inA)
{
    return BRISKEN_DISPATCH(SumF64)(inCount, inA);
}

float DotProduct(unsigned inCount, const float* inA, const float* inB)
{
    return BRISKEN_DISPATCH(DotProductF32)(inCount, inA, inB);
}

double DotProduct(unsigned inCount, const double* inA, const double* inB)
{
    return BRISKEN_DISPATCH(DotProductF64)(inCount, inA, inB);
}

double SumOfSquares(unsigned inCount, const float* inA)
{
    return BRISKEN_DISPATCH(SumOfWideSquares)(inCount, inA);
}

float NormL2(unsigned inCount, const float* inA)
{
    return std::sqrt(DotProduct(inCount, inA, inA));
}
double NormL2(unsigned inCount, const double* inA)
{
    return std::sqrt(DotProduct(inCount, inA, inA));
}

void StandardDeviation(unsigned inCount, const float* inA, float& outDeviation)
{
    if (inCount < 2) {
        outDeviation = 0;
        return;
    }
    const float mean = Sum(inCount, inA) / static_cast<float>(inCount);
    const float squares = BRISKEN_DISPATCH(SquaredDistancesF32)(inCount, inA, mean);
    outDeviation = std::sqrt(squares / static_cast<float>(inCount - 1));
}

void StandardDeviation(unsigned inCount, const double* inA, double& outDeviation)
{
    if (inCount < 2) {
        outDeviation = 0;
        return;
    }
    const double mean = Sum(inCount, inA) / inCount;
    const double squares = BRISKEN_DISPATCH(SquaredDistancesF64)(inCount, inA, mean);
    outDeviation = std::sqrt(squares / (inCount - 1));
}

} // namespace brisken::utility

#endif // HWY_ONCE
