#include "filter/FIRKernel.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/FIRKernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

constexpr std::size_t kRows = 8;

/// The outputs of eight vectors in a row.
///
/// With N lanes, the inputs of output vector `i` for tap `k` are those of vector `i - d` for tap `k - d * N`.
/// So taps are taken four at a time, N apart: each vector of input is then loaded once for four products, and
/// the loads, most of which cross a cache line, stay behind the arithmetic.
struct Block
{
    V mSum0, mSum1, mSum2, mSum3, mSum4, mSum5, mSum6, mSum7;
};

HWY_INLINE void AddOneTap(D d, const float* HWY_RESTRICT inSource, std::size_t inLanes, V inTap,
                          Block& ioBlock)
{
    ioBlock.mSum0 = hn::MulAdd(inTap, hn::LoadU(d, inSource), ioBlock.mSum0);
    ioBlock.mSum1 = hn::MulAdd(inTap, hn::LoadU(d, inSource + inLanes), ioBlock.mSum1);
    ioBlock.mSum2 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 2 * inLanes), ioBlock.mSum2);
    ioBlock.mSum3 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 3 * inLanes), ioBlock.mSum3);
    ioBlock.mSum4 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 4 * inLanes), ioBlock.mSum4);
    ioBlock.mSum5 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 5 * inLanes), ioBlock.mSum5);
    ioBlock.mSum6 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 6 * inLanes), ioBlock.mSum6);
    ioBlock.mSum7 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 7 * inLanes), ioBlock.mSum7);
}

/// Four sums that share one vector of input, each with the tap that belongs to its distance.
HWY_INLINE void AddShared(V inSource, V inTap0, V inTap1, V inTap2, V inTap3, V& ioSum0, V& ioSum1, V& ioSum2,
                          V& ioSum3)
{
    ioSum0 = hn::MulAdd(inTap0, inSource, ioSum0);
    ioSum1 = hn::MulAdd(inTap1, inSource, ioSum1);
    ioSum2 = hn::MulAdd(inTap2, inSource, ioSum2);
    ioSum3 = hn::MulAdd(inTap3, inSource, ioSum3);
}

/// Taps `inTaps[0]`, `[N]`, `[2 N]`, `[3 N]`; each sum meets them from the last to the first.
HWY_INLINE void AddFourTaps(D d, const float* HWY_RESTRICT inSource, std::size_t inLanes,
                            const float* HWY_RESTRICT inTaps, Block& ioBlock)
{
    const auto tap0 = hn::Set(d, inTaps[0]);
    const auto tap1 = hn::Set(d, inTaps[inLanes]);
    const auto tap2 = hn::Set(d, inTaps[2 * inLanes]);
    const auto tap3 = hn::Set(d, inTaps[3 * inLanes]);
    auto& b = ioBlock;
    const float* source = inSource - 3 * inLanes;
    b.mSum0 = hn::MulAdd(tap3, hn::LoadU(d, source), b.mSum0);
    auto x = hn::LoadU(d, source += inLanes);
    b.mSum0 = hn::MulAdd(tap2, x, b.mSum0);
    b.mSum1 = hn::MulAdd(tap3, x, b.mSum1);
    x = hn::LoadU(d, source += inLanes);
    b.mSum0 = hn::MulAdd(tap1, x, b.mSum0);
    b.mSum1 = hn::MulAdd(tap2, x, b.mSum1);
    b.mSum2 = hn::MulAdd(tap3, x, b.mSum2);
    x = hn::LoadU(d, source += inLanes);
    AddShared(x, tap0, tap1, tap2, tap3, b.mSum0, b.mSum1, b.mSum2, b.mSum3);
    x = hn::LoadU(d, source += inLanes);
    AddShared(x, tap0, tap1, tap2, tap3, b.mSum1, b.mSum2, b.mSum3, b.mSum4);
    x = hn::LoadU(d, source += inLanes);
    AddShared(x, tap0, tap1, tap2, tap3, b.mSum2, b.mSum3, b.mSum4, b.mSum5);
    x = hn::LoadU(d, source += inLanes);
    AddShared(x, tap0, tap1, tap2, tap3, b.mSum3, b.mSum4, b.mSum5, b.mSum6);
    x = hn::LoadU(d, source += inLanes);
    AddShared(x, tap0, tap1, tap2, tap3, b.mSum4, b.mSum5, b.mSum6, b.mSum7);
    x = hn::LoadU(d, source += inLanes);
    b.mSum5 = hn::MulAdd(tap0, x, b.mSum5);
    b.mSum6 = hn::MulAdd(tap1, x, b.mSum6);
    b.mSum7 = hn::MulAdd(tap2, x, b.mSum7);
    x = hn::LoadU(d, source += inLanes);
    b.mSum6 = hn::MulAdd(tap0, x, b.mSum6);
    b.mSum7 = hn::MulAdd(tap1, x, b.mSum7);
    b.mSum7 = hn::MulAdd(tap0, hn::LoadU(d, source + inLanes), b.mSum7);
}

HWY_INLINE void ComputeBlock(const float* HWY_RESTRICT inSource, const float* HWY_RESTRICT inTaps,
                             std::size_t inNumTaps, float* HWY_RESTRICT outDest)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const auto zero = hn::Zero(d);
    Block block{zero, zero, zero, zero, zero, zero, zero, zero};
    for (std::size_t first = 0; first < std::min(lanes, inNumTaps); ++first) {
        auto tap = first;
        for (; tap + 3 * lanes < inNumTaps; tap += 4 * lanes) {
            AddFourTaps(d, inSource - tap, lanes, inTaps + tap, block);
        }
        for (; tap < inNumTaps; tap += lanes) {
            AddOneTap(d, inSource - tap, lanes, hn::Set(d, inTaps[tap]), block);
        }
    }
    hn::StoreU(block.mSum0, d, outDest);
    hn::StoreU(block.mSum1, d, outDest + lanes);
    hn::StoreU(block.mSum2, d, outDest + 2 * lanes);
    hn::StoreU(block.mSum3, d, outDest + 3 * lanes);
    hn::StoreU(block.mSum4, d, outDest + 4 * lanes);
    hn::StoreU(block.mSum5, d, outDest + 5 * lanes);
    hn::StoreU(block.mSum6, d, outDest + 6 * lanes);
    hn::StoreU(block.mSum7, d, outDest + 7 * lanes);
}

void Row(const float* HWY_RESTRICT inSource, std::size_t inCount, const float* HWY_RESTRICT inTaps,
         std::size_t inNumTaps, float* HWY_RESTRICT outDest)
{
    const std::size_t blockSize = kRows * hn::Lanes(D());
    if (inCount < blockSize) {
        HWY_ALIGN float outputs[kFIRReadAhead];
        ComputeBlock(inSource, inTaps, inNumTaps, outputs);
        std::copy_n(outputs, inCount, outDest);
        return;
    }
    std::size_t begin = 0;
    for (; begin + blockSize <= inCount; begin += blockSize) {
        ComputeBlock(inSource + begin, inTaps, inNumTaps, outDest + begin);
    }
    if (begin < inCount) {
        // The last block overlaps the one before and computes the same values once more.
        begin = inCount - blockSize;
        ComputeBlock(inSource + begin, inTaps, inNumTaps, outDest + begin);
    }
}

float Dot(const float* HWY_RESTRICT inA, const float* HWY_RESTRICT inB, std::size_t inCount)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    auto sum0 = hn::Zero(d);
    auto sum1 = sum0;
    auto sum2 = sum0;
    auto sum3 = sum0;
    std::size_t i = 0;
    for (; i + 4 * lanes <= inCount; i += 4 * lanes) {
        sum0 = hn::MulAdd(hn::LoadU(d, inA + i), hn::LoadU(d, inB + i), sum0);
        sum1 = hn::MulAdd(hn::LoadU(d, inA + i + lanes), hn::LoadU(d, inB + i + lanes), sum1);
        sum2 = hn::MulAdd(hn::LoadU(d, inA + i + 2 * lanes), hn::LoadU(d, inB + i + 2 * lanes), sum2);
        sum3 = hn::MulAdd(hn::LoadU(d, inA + i + 3 * lanes), hn::LoadU(d, inB + i + 3 * lanes), sum3);
    }
    for (; i + lanes <= inCount; i += lanes) {
        sum0 = hn::MulAdd(hn::LoadU(d, inA + i), hn::LoadU(d, inB + i), sum0);
    }
    const auto sum = hn::Add(hn::Add(sum0, sum1), hn::Add(sum2, sum3));
    auto total = hn::GetLane(hn::SumOfLanes(d, sum));
    for (; i < inCount; ++i) {
        total += inA[i] * inB[i];
    }
    return total;
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(Row);
HWY_EXPORT(Dot);

void FIRRow(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
            float* outDest)
{
    BRISKEN_DISPATCH(Row)(inSource, inCount, inTaps, inNumTaps, outDest);
}

float FIRDot(const float* inA, const float* inB, std::size_t inCount)
{
    return BRISKEN_DISPATCH(Dot)(inA, inB, inCount);
}

} // namespace brisken::filter
#endif
