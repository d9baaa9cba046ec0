#include "filter/MRFKernel.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/MRFKernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"
#include "filter/Dot-inl.h"
#include "filter/VectorBlock-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

/// Calls `inStep(row of taps, distance back in the streams)` for each tap of a phase, in the one order of
/// summation.
template <typename Step>
HWY_INLINE void ForEachTap(const StreamTaps& inTaps, std::size_t inStride, Step inStep)
{
    for (std::size_t b = 0; b < inTaps.mDown; ++b) {
        auto offset = static_cast<std::ptrdiff_t>(b * inStride);
        for (std::size_t m = b; m < inTaps.mDepth; m += inTaps.mDown) {
            inStep(inTaps.mRows + m * inTaps.mRowStride, offset);
            offset -= static_cast<std::ptrdiff_t>(inTaps.mUp);
        }
    }
}

/// Four vectors of outputs, `inPeriod` apart, which have the same phases and so share each vector of taps.
HWY_INLINE void ComputeFour(const StreamTaps& inTaps, const float* HWY_RESTRICT inStreams,
                            std::size_t inStride, std::size_t inPeriod, std::size_t inPhase,
                            float* HWY_RESTRICT outDest)
{
    const D d;
    auto sum0 = hn::Zero(d);
    auto sum1 = sum0;
    auto sum2 = sum0;
    auto sum3 = sum0;
    ForEachTap(inTaps, inStride, [&](const float* inRow, std::ptrdiff_t inOffset) HWY_ATTR {
        const auto tap = hn::LoadU(d, inRow + inPhase);
        const float* source = inStreams + inOffset;
        sum0 = hn::MulAdd(tap, hn::LoadU(d, source), sum0);
        sum1 = hn::MulAdd(tap, hn::LoadU(d, source + inPeriod), sum1);
        sum2 = hn::MulAdd(tap, hn::LoadU(d, source + 2 * inPeriod), sum2);
        sum3 = hn::MulAdd(tap, hn::LoadU(d, source + 3 * inPeriod), sum3);
    });
    hn::StoreU(sum0, d, outDest);
    hn::StoreU(sum1, d, outDest + inPeriod);
    hn::StoreU(sum2, d, outDest + 2 * inPeriod);
    hn::StoreU(sum3, d, outDest + 3 * inPeriod);
}

HWY_INLINE V ComputeOne(const StreamTaps& inTaps, const float* HWY_RESTRICT inStreams, std::size_t inStride,
                        std::size_t inPhase)
{
    const D d;
    auto sum = hn::Zero(d);
    ForEachTap(inTaps, inStride, [&](const float* inRow, std::ptrdiff_t inOffset) HWY_ATTR {
        sum = hn::MulAdd(hn::LoadU(d, inRow + inPhase), hn::LoadU(d, inStreams + inOffset), sum);
    });
    return sum;
}

/// A factor up that divides the lanes: each vector begins with the same phase, and taps N / up apart meet
/// inputs a vector apart. `inTap(m)` gives tap `m` of the phases.
template <typename Tap>
HWY_INLINE void ShortPeriodRow(const StreamTaps& inTaps, Tap inTap, const float* HWY_RESTRICT inStreams,
                               std::size_t inStride, std::size_t inCount, float* HWY_RESTRICT outDest)
{
    const std::size_t reach = hn::Lanes(D()) / inTaps.mUp;
    const auto up = inTaps.mUp;
    const auto down = inTaps.mDown;
    const auto depth = inTaps.mDepth;
    ForEachBlock(inCount, outDest, [&](std::size_t inBegin) HWY_ATTR {
        auto block = ZeroBlock();
        for (std::size_t a = 0; a < reach; ++a) {
            const float* source = inStreams + inBegin - a * up;
            for (std::size_t b = 0; b < down; ++b, source += inStride) {
                AddTaps(source, a * down + b, reach * down, depth, inTap, block);
            }
        }
        return block;
    });
}

HWY_INLINE void AnyPeriodRow(const StreamTaps& inTaps, const float* HWY_RESTRICT inStreams,
                             std::size_t inStride, std::size_t inCount, float* HWY_RESTRICT outDest)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const auto period = std::lcm(inTaps.mUp, lanes);
    std::size_t begin = 0;
    for (; begin + 4 * period <= inCount; begin += 4 * period) {
        for (std::size_t i = begin; i < begin + period; i += lanes) {
            ComputeFour(inTaps, inStreams + i, inStride, period, i % inTaps.mUp, outDest + i);
        }
    }
    for (; begin + lanes <= inCount; begin += lanes) {
        hn::StoreU(ComputeOne(inTaps, inStreams + begin, inStride, begin % inTaps.mUp), d, outDest + begin);
    }
    if (begin < inCount) {
        HWY_ALIGN float outputs[hn::MaxLanes(D())];
        hn::Store(ComputeOne(inTaps, inStreams + begin, inStride, begin % inTaps.mUp), d, outputs);
        std::copy_n(outputs, inCount - begin, outDest + begin);
    }
}

void Row(const StreamTaps& inTaps, const float* HWY_RESTRICT inStreams, std::size_t inStride,
         std::size_t inCount, float* HWY_RESTRICT outDest)
{
    const D d;
    const auto* rows = inTaps.mRows;
    const auto stride = inTaps.mRowStride;
    if (inTaps.mUp == 1) {
        const auto tap = [d, rows](std::size_t m) HWY_ATTR { return hn::Set(d, rows[m]); };
        ShortPeriodRow(inTaps, tap, inStreams, inStride, inCount, outDest);
    } else if (hn::Lanes(d) % inTaps.mUp == 0) {
        const auto tap = [d, rows, stride](std::size_t m) HWY_ATTR { return hn::Load(d, rows + m * stride); };
        ShortPeriodRow(inTaps, tap, inStreams, inStride, inCount, outDest);
    } else {
        AnyPeriodRow(inTaps, inStreams, inStride, inCount, outDest);
    }
}

void Phases(const PhaseTaps& inTaps, const float* HWY_RESTRICT inSource, std::size_t inIterations,
            float* HWY_RESTRICT outDest)
{
    for (std::size_t i = 0; i < inIterations; ++i, inSource += inTaps.mDown, outDest += inTaps.mUp) {
        for (std::size_t j = 0; j < inTaps.mUp; ++j) {
            outDest[j] =
                Dot(inSource + inTaps.mOldest[j], inTaps.mRows + j * inTaps.mRowStride, inTaps.mDepth);
        }
    }
}

void Hold(const float* HWY_RESTRICT inSource, std::size_t inCount, std::size_t inFactor,
          float* HWY_RESTRICT outDest)
{
    // Whole vectors from the front on: what is written too much is overwritten by the next value.
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t n = 0; n < inCount; ++n, outDest += inFactor) {
        const auto value = hn::Set(d, inSource[n]);
        for (std::size_t i = 0; i < inFactor; i += lanes) {
            hn::StoreU(value, d, outDest + i);
        }
    }
}

void Deinterleave(const float* HWY_RESTRICT inSource, std::size_t inCount, std::size_t inFactor,
                  float* HWY_RESTRICT outRows, std::size_t inStride)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t n = 0;
    if (inFactor == 2) {
        for (; n + lanes <= inCount; n += lanes) {
            V v0, v1;
            hn::LoadInterleaved2(d, inSource + 2 * n, v0, v1);
            hn::StoreU(v1, d, outRows + n);
            hn::StoreU(v0, d, outRows + inStride + n);
        }
    } else if (inFactor == 4) {
        for (; n + lanes <= inCount; n += lanes) {
            V v0, v1, v2, v3;
            hn::LoadInterleaved4(d, inSource + 4 * n, v0, v1, v2, v3);
            hn::StoreU(v3, d, outRows + n);
            hn::StoreU(v2, d, outRows + inStride + n);
            hn::StoreU(v1, d, outRows + 2 * inStride + n);
            hn::StoreU(v0, d, outRows + 3 * inStride + n);
        }
    }
    for (std::size_t r = 0; r < inFactor; ++r) {
        for (std::size_t i = n; i < inCount; ++i) {
            outRows[r * inStride + i] = inSource[i * inFactor + inFactor - 1 - r];
        }
    }
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(Row);
HWY_EXPORT(Hold);
HWY_EXPORT(Deinterleave);
HWY_EXPORT(Phases);

void StreamRow(const StreamTaps& inTaps, const float* inStreams, std::size_t inStride, std::size_t inCount,
               float* outDest)
{
    BRISKEN_DISPATCH(Row)(inTaps, inStreams, inStride, inCount, outDest);
}

void HoldRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outDest)
{
    BRISKEN_DISPATCH(Hold)(inSource, inCount, inFactor, outDest);
}

void DeinterleaveRow(const float* inSource, std::size_t inCount, std::size_t inFactor, float* outRows,
                     std::size_t inStride)
{
    BRISKEN_DISPATCH(Deinterleave)(inSource, inCount, inFactor, outRows, inStride);
}

void PhaseRow(const PhaseTaps& inTaps, const float* inSource, std::size_t inIterations, float* outDest)
{
    BRISKEN_DISPATCH(Phases)(inTaps, inSource, inIterations, outDest);
}

} // namespace brisken::filter
#endif
