#include <brisken/utility/Reductions.h>

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Extremes.cpp"
#include <hwy/foreach_target.h>

#include "utility/Order-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

// A search carries what it has found in every lane of a state, beginning with a broadcast of the value that
// the plain loop would begin with; therefore NaN behaves as there, whatever the number of lanes. Seeing an
// element twice is harmless, so rows end in a vector that overlaps its neighbour.

template <class V>
struct Range
{
    V min;
    V max;
};

struct RangeSearch
{
    template <class D>
    HWY_INLINE Range<hn::Vec<D>> Start(D d, Range<hn::TFromD<D>> inFound) const
    {
        return {hn::Set(d, inFound.min), hn::Set(d, inFound.max)};
    }

    template <class V>
    HWY_INLINE Range<V> See(Range<V> inFound, V inValues) const
    {
        return {Smaller(inValues, inFound.min), Greater(inValues, inFound.max)};
    }

    template <class V>
    HWY_INLINE Range<V> Merge(Range<V> inA, Range<V> inB) const
    {
        return {Smaller(inA.min, inB.min), Greater(inA.max, inB.max)};
    }

    template <class D>
    HWY_INLINE Range<hn::TFromD<D>> Finish(D d, Range<hn::Vec<D>> inFound) const
    {
        return {hn::GetLane(hn::MinOfLanes(d, inFound.min)), hn::GetLane(hn::MaxOfLanes(d, inFound.max))};
    }
};

struct MaxSearch
{
    template <class D>
    HWY_INLINE hn::Vec<D> Start(D d, hn::TFromD<D> inFound) const
    {
        return hn::Set(d, inFound);
    }

    template <class V>
    HWY_INLINE V See(V inFound, V inValues) const
    {
        return Greater(inValues, inFound);
    }

    template <class V>
    HWY_INLINE V Merge(V inA, V inB) const
    {
        return Greater(inA, inB);
    }

    template <class D>
    HWY_INLINE hn::TFromD<D> Finish(D d, hn::Vec<D> inFound) const
    {
        return hn::GetLane(hn::MaxOfLanes(d, inFound));
    }
};

struct MinSearch : MaxSearch
{
    template <class V>
    HWY_INLINE V See(V inFound, V inValues) const
    {
        return Smaller(inValues, inFound);
    }

    template <class V>
    HWY_INLINE V Merge(V inA, V inB) const
    {
        return Smaller(inA, inB);
    }

    template <class D>
    HWY_INLINE hn::TFromD<D> Finish(D d, hn::Vec<D> inFound) const
    {
        return hn::GetLane(hn::MinOfLanes(d, inFound));
    }
};

struct MaxAbsSearch : MaxSearch
{
    template <class V>
    HWY_INLINE V See(V inFound, V inValues) const
    {
        return Greater(hn::Abs(inValues), inFound);
    }
};

/// A row shorter than a vector: two overlapping ones of the largest half, quarter, ... that fits.
template <class D, class Search, class Found>
HWY_INLINE Found SearchShortRow(D d, std::size_t inCount, const hn::TFromD<D>* inA, Search inSearch,
                                Found inFound)
{
    if constexpr (hn::MaxLanes(d) > 1) {
        const hn::Half<D> half;
        const std::size_t lanes = hn::Lanes(half);
        if (inCount < lanes) {
            return SearchShortRow(half, inCount, inA, inSearch, inFound);
        }
        auto state = inSearch.Start(half, inFound);
        state = inSearch.See(state, hn::LoadU(half, inA));
        state = inSearch.See(state, hn::LoadU(half, inA + inCount - lanes));
        return inSearch.Finish(half, state);
    } else {
        return inFound;
    }
}

/// `inFound` is what the search begins with.
template <class D, class Search, class Found>
HWY_INLINE Found SearchRow(D d, std::size_t inCount, const hn::TFromD<D>* inA, Search inSearch, Found inFound)
{
    const std::size_t lanes = hn::Lanes(d);
    if (HWY_UNLIKELY(inCount < lanes)) {
        return SearchShortRow(d, inCount, inA, inSearch, inFound);
    }
    auto state0 = inSearch.Start(d, inFound);
    auto state1 = state0;
    auto state2 = state0;
    auto state3 = state0;
    std::size_t i = 0;
    for (; i + 4 * lanes <= inCount; i += 4 * lanes) {
        state0 = inSearch.See(state0, hn::LoadU(d, inA + i));
        state1 = inSearch.See(state1, hn::LoadU(d, inA + i + lanes));
        state2 = inSearch.See(state2, hn::LoadU(d, inA + i + 2 * lanes));
        state3 = inSearch.See(state3, hn::LoadU(d, inA + i + 3 * lanes));
    }
    for (; i + lanes < inCount; i += lanes) {
        state0 = inSearch.See(state0, hn::LoadU(d, inA + i));
    }
    state1 = inSearch.See(state1, hn::LoadU(d, inA + inCount - lanes));
    return inSearch.Finish(d, inSearch.Merge(inSearch.Merge(state0, state1), inSearch.Merge(state2, state3)));
}

/// Index of the first element equal to the value; 0 if none is, which is so for NaN.
template <class T>
HWY_INLINE std::size_t FirstEqual(std::size_t inCount, const T* inA, T inValue)
{
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto value = hn::Set(d, inValue);
    std::size_t i = 0;
    for (; i + lanes <= inCount; i += lanes) {
        const auto found = hn::FindFirstTrue(d, hn::Eq(hn::LoadU(d, inA + i), value));
        if (found >= 0) {
            return i + static_cast<std::size_t>(found);
        }
    }
    for (; i < inCount; ++i) {
        if (inA[i] == inValue) {
            return i;
        }
    }
    return 0;
}

// A search for places goes block by block, remembers which block brought the last improvement, and at the end
// looks for the place in that block alone: the row is read once, and the block again while it is still near.
constexpr std::size_t kBlock = 1024; // elements

HWY_INLINE std::size_t BlockLength(std::size_t inCount, std::size_t inBlock)
{
    return HWY_MIN(kBlock, inCount - inBlock);
}

template <class T>
T MaxOfRow(unsigned inCount, const T* inA)
{
    return inCount == 0 ? T(0) : SearchRow(hn::ScalableTag<T>(), inCount, inA, MaxSearch(), inA[0]);
}

template <class T>
T MinOfRow(unsigned inCount, const T* inA)
{
    return inCount == 0 ? T(0) : SearchRow(hn::ScalableTag<T>(), inCount, inA, MinSearch(), inA[0]);
}

template <class T>
T MaxAbsOfRow(unsigned inCount, const T* inA)
{
    return SearchRow(hn::ScalableTag<T>(), inCount, inA, MaxAbsSearch(), T(0));
}

template <class T>
void MinMaxOfRow(unsigned inCount, const T* inA, T& outMin, T& outMax)
{
    if (inCount != 0) {
        const Range<T> found =
            SearchRow(hn::ScalableTag<T>(), inCount, inA, RangeSearch(), Range<T>{inA[0], inA[0]});
        outMin = found.min;
        outMax = found.max;
    }
}

template <class T>
unsigned MaxIndexOfRow(unsigned inCount, const T* inA, T* outMaxOrNull)
{
    if (inCount == 0) {
        return 0;
    }
    T max = inA[0];
    std::size_t maxBlock = 0;
    for (std::size_t block = 0; block < inCount; block += kBlock) {
        const T found =
            SearchRow(hn::ScalableTag<T>(), BlockLength(inCount, block), inA + block, MaxSearch(), max);
        maxBlock = found > max ? block : maxBlock;
        max = found;
    }
    if (outMaxOrNull != nullptr) {
        *outMaxOrNull = max;
    }
    return static_cast<unsigned>(maxBlock + FirstEqual(BlockLength(inCount, maxBlock), inA + maxBlock, max));
}

template <class T>
void MinMaxIndexOfRow(unsigned inCount, const T* inA, T& outMin, T& outMax, unsigned& outMinIndex,
                      unsigned& outMaxIndex)
{
    if (inCount == 0) {
        return;
    }
    Range<T> range{inA[0], inA[0]};
    std::size_t minBlock = 0;
    std::size_t maxBlock = 0;
    for (std::size_t block = 0; block < inCount; block += kBlock) {
        const Range<T> found =
            SearchRow(hn::ScalableTag<T>(), BlockLength(inCount, block), inA + block, RangeSearch(), range);
        minBlock = found.min < range.min ? block : minBlock;
        maxBlock = found.max > range.max ? block : maxBlock;
        range = found;
    }
    outMin = range.min;
    outMax = range.max;
    const std::size_t minIndex =
        minBlock + FirstEqual(BlockLength(inCount, minBlock), inA + minBlock, range.min);
    const std::size_t maxIndex =
        maxBlock + FirstEqual(BlockLength(inCount, maxBlock), inA + maxBlock, range.max);
    outMinIndex = static_cast<unsigned>(minIndex);
    outMaxIndex = static_cast<unsigned>(maxIndex);
}

constexpr auto& MinF32 = MinOfRow<float>;
constexpr auto& MinF64 = MinOfRow<double>;
constexpr auto& MaxF32 = MaxOfRow<float>;
constexpr auto& MaxF64 = MaxOfRow<double>;
constexpr auto& MaxAbsF32 = MaxAbsOfRow<float>;
constexpr auto& MaxAbsF64 = MaxAbsOfRow<double>;
constexpr auto& MinMaxF32 = MinMaxOfRow<float>;
constexpr auto& MinMaxF64 = MinMaxOfRow<double>;
constexpr auto& MaxIndexF32 = MaxIndexOfRow<float>;
constexpr auto& MaxIndexF64 = MaxIndexOfRow<double>;
constexpr auto& MinMaxIndexF32 = MinMaxIndexOfRow<float>;
constexpr auto& MinMaxIndexF64 = MinMaxIndexOfRow<double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <cstring>

#include "Dispatch.h"

namespace brisken::utility {

HWY_EXPORT(MinF32);
HWY_EXPORT(MinF64);
HWY_EXPORT(MaxF32);
HWY_EXPORT(MaxF64);
HWY_EXPORT(MaxAbsF32);
HWY_EXPORT(MaxAbsF64);
HWY_EXPORT(MinMaxF32);
HWY_EXPORT(MinMaxF64);
HWY_EXPORT(MaxIndexF32);
HWY_EXPORT(MaxIndexF64);
HWY_EXPORT(MinMaxIndexF32);
HWY_EXPORT(MinMaxIndexF64);

float Min(unsigned inCount, const float* inA)
{
    return BRISKEN_DISPATCH(MinF32)(inCount, inA);
}
double Min(unsigned inCount, const double* inA)
{
    return BRISKEN_DISPATCH(MinF64)(inCount, inA);
}
float Max(unsigned inCount, const float* inA)
{
    return BRISKEN_DISPATCH(MaxF32)(inCount, inA);
}
double Max(unsigned inCount, const double* inA)
{
    return BRISKEN_DISPATCH(MaxF64)(inCount, inA);
}
float MaxAbs(const float* inA, unsigned inCount)
{
    return BRISKEN_DISPATCH(MaxAbsF32)(inCount, inA);
}
double MaxAbs(const double* inA, unsigned inCount)
{
    return BRISKEN_DISPATCH(MaxAbsF64)(inCount, inA);
}

void MinMax(unsigned inCount, const float* inA, float& outMin, float& outMax)
{
    BRISKEN_DISPATCH(MinMaxF32)(inCount, inA, outMin, outMax);
}

void MinMax(unsigned inCount, const double* inA, double& outMin, double& outMax)
{
    BRISKEN_DISPATCH(MinMaxF64)(inCount, inA, outMin, outMax);
}

unsigned MaxIndex(unsigned inCount, const float* inA, float* outMaxOrNull)
{
    return BRISKEN_DISPATCH(MaxIndexF32)(inCount, inA, outMaxOrNull);
}

unsigned MaxIndex(unsigned inCount, const double* inA, double* outMaxOrNull)
{
    return BRISKEN_DISPATCH(MaxIndexF64)(inCount, inA, outMaxOrNull);
}

void MinMaxIndex(unsigned inCount, const float* inA, float& outMin, float& outMax, unsigned& outMinIndex,
                 unsigned& outMaxIndex)
{
    BRISKEN_DISPATCH(MinMaxIndexF32)(inCount, inA, outMin, outMax, outMinIndex, outMaxIndex);
}

void MinMaxIndex(unsigned inCount, const double* inA, double& outMin, double& outMax, unsigned& outMinIndex,
                 unsigned& outMaxIndex)
{
    BRISKEN_DISPATCH(MinMaxIndexF64)(inCount, inA, outMin, outMax, outMinIndex, outMaxIndex);
}

bool Equal(unsigned inCount, const unsigned char* inA, const unsigned char* inB)
{
    return inCount == 0 || std::memcmp(inA, inB, inCount) == 0;
}

} // namespace brisken::utility

#endif // HWY_ONCE
