#include <brisken/filter/TapWindows.h>

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/TapWindows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

/// The products of a window, added up to one vector.
HWY_INLINE V PartialSums(const float* HWY_RESTRICT inTaps, const float* HWY_RESTRICT inSource,
                         std::size_t inCount)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    auto sum0 = hn::Zero(d);
    auto sum1 = sum0;
    std::size_t i = 0;
    for (; i + 2 * lanes <= inCount; i += 2 * lanes) {
        sum0 = hn::MulAdd(hn::LoadU(d, inSource + i), hn::LoadU(d, inTaps + i), sum0);
        sum1 = hn::MulAdd(hn::LoadU(d, inSource + i + lanes), hn::LoadU(d, inTaps + i + lanes), sum1);
    }
    if (i + lanes <= inCount) {
        sum0 = hn::MulAdd(hn::LoadU(d, inSource + i), hn::LoadU(d, inTaps + i), sum0);
        i += lanes;
    }
    if (i < inCount) {
        const auto rest = hn::IfThenElseZero(hn::FirstN(d, inCount - i), hn::LoadU(d, inSource + i));
        sum1 = hn::MulAdd(rest, hn::LoadU(d, inTaps + i), sum1);
    }
    return hn::Add(sum0, sum1);
}

HWY_INLINE V PartialSums(const float* inTable, const float* inSource, const TapWindow& inWindow)
{
    return PartialSums(inTable + inWindow.mTaps, inSource + inWindow.mSource, inWindow.mCount);
}

#if HWY_TARGET == HWY_SCALAR

void Dots(const float* inTable, const float* inSource, const TapWindow* inWindows, std::size_t inNumWindows,
          float* HWY_RESTRICT outDest)
{
    for (std::size_t i = 0; i < inNumWindows; ++i) {
        outDest[i] = hn::GetLane(PartialSums(inTable, inSource, inWindows[i]));
    }
}

#else

using Four = hn::Full128<float>;

/// Adds the blocks of four lanes up to one.
template <class Tag>
HWY_INLINE hn::Vec<Four> AddBlocks(Tag d, hn::Vec<Tag> inSums)
{
    if constexpr (hn::MaxLanes(d) > 4) {
        const hn::Half<Tag> half;
        return AddBlocks(half, hn::Add(hn::LowerHalf(half, inSums), hn::UpperHalf(half, inSums)));
    } else {
        return inSums;
    }
}

/// The sums of four vectors, which are added up while they are transposed: a third of the work of adding up
/// one after the other.
HWY_INLINE hn::Vec<Four> SumEach(V inA, V inB, V inC, V inD)
{
    const D d;
    const auto ac = hn::Add(hn::InterleaveLower(d, inA, inC), hn::InterleaveUpper(d, inA, inC));
    const auto bd = hn::Add(hn::InterleaveLower(d, inB, inD), hn::InterleaveUpper(d, inB, inD));
    return AddBlocks(d, hn::Add(hn::InterleaveLower(d, ac, bd), hn::InterleaveUpper(d, ac, bd)));
}

HWY_INLINE hn::Vec<Four> FourDots(const float* inTable, const float* inSource, const TapWindow* inWindows)
{
    return SumEach(PartialSums(inTable, inSource, inWindows[0]), PartialSums(inTable, inSource, inWindows[1]),
                   PartialSums(inTable, inSource, inWindows[2]),
                   PartialSums(inTable, inSource, inWindows[3]));
}

void Dots(const float* inTable, const float* inSource, const TapWindow* inWindows, std::size_t inNumWindows,
          float* HWY_RESTRICT outDest)
{
    const Four four;
    std::size_t i = 0;
    for (; i + 4 <= inNumWindows; i += 4) {
        hn::StoreU(FourDots(inTable, inSource, inWindows + i), four, outDest + i);
    }
    if (i < inNumWindows) {
        TapWindow windows[4] = {};
        HWY_ALIGN float sums[4];
        std::copy(inWindows + i, inWindows + inNumWindows, windows);
        hn::Store(FourDots(inTable, inSource, windows), four, sums);
        std::copy_n(sums, inNumWindows - i, outDest + i);
    }
}

#endif

void Split(double inStart, double inStep, unsigned inFirst, unsigned inCount, unsigned inPhases,
           double* HWY_RESTRICT outWhole, std::int32_t* HWY_RESTRICT outPhase)
{
    const hn::ScalableTag<double> d;
    const hn::Rebind<std::int32_t, decltype(d)> narrow;
    const auto start = hn::Set(d, inStart);
    const auto step = hn::Set(d, inStep);
    const auto phases = hn::Set(d, inPhases);
    const auto half = hn::Set(d, 0.5);
    for (unsigned i = 0; i < inCount; i += static_cast<unsigned>(hn::Lanes(d))) {
        const auto index = hn::Iota(d, static_cast<double>(inFirst) + i);
        const auto position = hn::MulAdd(index, step, start);
        const auto whole = hn::Floor(position);
        const auto phase = hn::MulAdd(hn::Sub(position, whole), phases, half);
        hn::StoreU(whole, d, outWhole + i);
        hn::StoreU(hn::DemoteTo(narrow, phase), narrow, outPhase + i);
    }
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(Dots);
HWY_EXPORT(Split);

void DotWindows(const float* inTable, const float* inSource, const TapWindow* inWindows,
                unsigned inNumWindows, float* outDest)
{
    BRISKEN_DISPATCH(Dots)(inTable, inSource, inWindows, inNumWindows, outDest);
}

void SplitPositions(double inStart, double inStep, unsigned inFirst, unsigned inCount, unsigned inPhases,
                    double* outWhole, std::int32_t* outPhase)
{
    BRISKEN_DISPATCH(Split)(inStart, inStep, inFirst, inCount, inPhases, outWhole, outPhase);
}

} // namespace brisken::filter
#endif
