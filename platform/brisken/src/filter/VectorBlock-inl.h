// Eight vectors of outputs in a row, for the FIR kernels. Included once for each target, like they are.
#if defined(BRISKEN_FILTER_VECTOR_BLOCK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef BRISKEN_FILTER_VECTOR_BLOCK_INL_H
#undef BRISKEN_FILTER_VECTOR_BLOCK_INL_H
#else
#define BRISKEN_FILTER_VECTOR_BLOCK_INL_H
#endif

#include <algorithm>
#include <cstddef>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

struct VectorBlock
{
    V mSum0, mSum1, mSum2, mSum3, mSum4, mSum5, mSum6, mSum7;
};

HWY_INLINE VectorBlock ZeroBlock()
{
    const auto zero = hn::Zero(D());
    return {zero, zero, zero, zero, zero, zero, zero, zero};
}

/// Adds `inTap` times the eight vectors at `inSource`.
HWY_INLINE void AddOneTap(const float* HWY_RESTRICT inSource, V inTap, VectorBlock& ioBlock)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    ioBlock.mSum0 = hn::MulAdd(inTap, hn::LoadU(d, inSource), ioBlock.mSum0);
    ioBlock.mSum1 = hn::MulAdd(inTap, hn::LoadU(d, inSource + lanes), ioBlock.mSum1);
    ioBlock.mSum2 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 2 * lanes), ioBlock.mSum2);
    ioBlock.mSum3 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 3 * lanes), ioBlock.mSum3);
    ioBlock.mSum4 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 4 * lanes), ioBlock.mSum4);
    ioBlock.mSum5 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 5 * lanes), ioBlock.mSum5);
    ioBlock.mSum6 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 6 * lanes), ioBlock.mSum6);
    ioBlock.mSum7 = hn::MulAdd(inTap, hn::LoadU(d, inSource + 7 * lanes), ioBlock.mSum7);
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

/// Adds four taps of which each meets its input a vector further back: `inTap0` the eight vectors at
/// `inSource`, `inTap1` those from one vector earlier on, and so on. Each vector of input is so loaded once
/// for four products, and the loads, most of which cross a cache line, stay behind the arithmetic. Each sum
/// meets the taps from the last to the first.
HWY_INLINE void AddFourTaps(const float* HWY_RESTRICT inSource, V inTap0, V inTap1, V inTap2, V inTap3,
                            VectorBlock& ioBlock)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    auto& b = ioBlock;
    const float* source = inSource - 3 * lanes;
    auto x = hn::LoadU(d, source);
    b.mSum0 = hn::MulAdd(inTap3, x, b.mSum0);
    x = hn::LoadU(d, source += lanes);
    b.mSum0 = hn::MulAdd(inTap2, x, b.mSum0);
    b.mSum1 = hn::MulAdd(inTap3, x, b.mSum1);
    x = hn::LoadU(d, source += lanes);
    b.mSum0 = hn::MulAdd(inTap1, x, b.mSum0);
    b.mSum1 = hn::MulAdd(inTap2, x, b.mSum1);
    b.mSum2 = hn::MulAdd(inTap3, x, b.mSum2);
    x = hn::LoadU(d, source += lanes);
    AddShared(x, inTap0, inTap1, inTap2, inTap3, b.mSum0, b.mSum1, b.mSum2, b.mSum3);
    x = hn::LoadU(d, source += lanes);
    AddShared(x, inTap0, inTap1, inTap2, inTap3, b.mSum1, b.mSum2, b.mSum3, b.mSum4);
    x = hn::LoadU(d, source += lanes);
    AddShared(x, inTap0, inTap1, inTap2, inTap3, b.mSum2, b.mSum3, b.mSum4, b.mSum5);
    x = hn::LoadU(d, source += lanes);
    AddShared(x, inTap0, inTap1, inTap2, inTap3, b.mSum3, b.mSum4, b.mSum5, b.mSum6);
    x = hn::LoadU(d, source += lanes);
    AddShared(x, inTap0, inTap1, inTap2, inTap3, b.mSum4, b.mSum5, b.mSum6, b.mSum7);
    x = hn::LoadU(d, source += lanes);
    b.mSum5 = hn::MulAdd(inTap0, x, b.mSum5);
    b.mSum6 = hn::MulAdd(inTap1, x, b.mSum6);
    b.mSum7 = hn::MulAdd(inTap2, x, b.mSum7);
    x = hn::LoadU(d, source += lanes);
    b.mSum6 = hn::MulAdd(inTap0, x, b.mSum6);
    b.mSum7 = hn::MulAdd(inTap1, x, b.mSum7);
    x = hn::LoadU(d, source += lanes);
    b.mSum7 = hn::MulAdd(inTap0, x, b.mSum7);
}

/// The same with two taps.
HWY_INLINE void AddTwoTaps(const float* HWY_RESTRICT inSource, V inTap0, V inTap1, VectorBlock& ioBlock)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const float* source = inSource - lanes;
    ioBlock.mSum0 = hn::MulAdd(inTap1, hn::LoadU(d, source), ioBlock.mSum0);
    const auto addShared = [&](V& ioSum0, V& ioSum1) HWY_ATTR {
        const auto x = hn::LoadU(d, source += lanes);
        ioSum0 = hn::MulAdd(inTap0, x, ioSum0);
        ioSum1 = hn::MulAdd(inTap1, x, ioSum1);
    };
    addShared(ioBlock.mSum0, ioBlock.mSum1);
    addShared(ioBlock.mSum1, ioBlock.mSum2);
    addShared(ioBlock.mSum2, ioBlock.mSum3);
    addShared(ioBlock.mSum3, ioBlock.mSum4);
    addShared(ioBlock.mSum4, ioBlock.mSum5);
    addShared(ioBlock.mSum5, ioBlock.mSum6);
    addShared(ioBlock.mSum6, ioBlock.mSum7);
    ioBlock.mSum7 = hn::MulAdd(inTap0, hn::LoadU(d, source + lanes), ioBlock.mSum7);
}

/// Adds taps `inFirst`, `inFirst + inStep`, ... below `inCount`, which `inTap(index)` gives; the first meets
/// the eight vectors at `inSource`, each other those one vector before.
template <typename Tap>
HWY_INLINE void AddTaps(const float* inSource, std::size_t inFirst, std::size_t inStep, std::size_t inCount,
                        Tap inTap, VectorBlock& ioBlock)
{
    const std::size_t lanes = hn::Lanes(D());
    auto k = inFirst;
    for (; k + 3 * inStep < inCount; k += 4 * inStep, inSource -= 4 * lanes) {
        AddFourTaps(inSource, inTap(k), inTap(k + inStep), inTap(k + 2 * inStep), inTap(k + 3 * inStep),
                    ioBlock);
    }
    if (k + inStep < inCount) {
        AddTwoTaps(inSource, inTap(k), inTap(k + inStep), ioBlock);
        k += 2 * inStep;
        inSource -= 2 * lanes;
    }
    if (k < inCount) {
        AddOneTap(inSource, inTap(k), ioBlock);
    }
}

HWY_INLINE void StoreBlock(const VectorBlock& inBlock, float* HWY_RESTRICT outDest)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    hn::StoreU(inBlock.mSum0, d, outDest);
    hn::StoreU(inBlock.mSum1, d, outDest + lanes);
    hn::StoreU(inBlock.mSum2, d, outDest + 2 * lanes);
    hn::StoreU(inBlock.mSum3, d, outDest + 3 * lanes);
    hn::StoreU(inBlock.mSum4, d, outDest + 4 * lanes);
    hn::StoreU(inBlock.mSum5, d, outDest + 5 * lanes);
    hn::StoreU(inBlock.mSum6, d, outDest + 6 * lanes);
    hn::StoreU(inBlock.mSum7, d, outDest + 7 * lanes);
}

/// Calls `inCompute(begin)` for the blocks of a row, and stores them. A row shorter than a block takes the
/// front of one; otherwise the last block may overlap the one before and compute the same values once more.
template <typename Compute>
HWY_INLINE void ForEachBlock(std::size_t inCount, float* HWY_RESTRICT outDest, Compute inCompute)
{
    const std::size_t blockSize = 8 * hn::Lanes(D());
    if (inCount < blockSize) {
        HWY_ALIGN float outputs[8 * hn::MaxLanes(D())];
        StoreBlock(inCompute(0), outputs);
        std::copy_n(outputs, inCount, outDest);
        return;
    }
    std::size_t begin = 0;
    for (; begin + blockSize <= inCount; begin += blockSize) {
        StoreBlock(inCompute(begin), outDest + begin);
    }
    if (begin < inCount) {
        StoreBlock(inCompute(inCount - blockSize), outDest + inCount - blockSize);
    }
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
