#include <brisken/utility/Convolution.h>

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Convolution.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<double>;

// Outputs are computed in blocks that stay in registers: for each tap one broadcast and, for each vector of
// the block, one load of the signal at the tap's distance and one multiply-add. The signal is the longer row,
// the taps are the shorter. Where a block reaches beyond an end of the signal, it reads a copy of that end
// which zeros follow.
constexpr std::size_t kVectors = 8;
constexpr std::size_t kMaxBlock = kVectors * hn::MaxLanes(Tag());

struct Block
{
    hn::Vec<Tag> sums[kVectors];
};

/// sums[j] += sum over k of taps[k] * signal[j - k]
HWY_INLINE void Accumulate(Block& ioBlock, const double* inSignal, const double* inTaps, std::size_t inCount)
{
    const Tag d;
    auto sum0 = ioBlock.sums[0];
    auto sum1 = ioBlock.sums[1];
    auto sum2 = ioBlock.sums[2];
    auto sum3 = ioBlock.sums[3];
    auto sum4 = ioBlock.sums[4];
    auto sum5 = ioBlock.sums[5];
    auto sum6 = ioBlock.sums[6];
    auto sum7 = ioBlock.sums[7];
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t k = 0; k < inCount; ++k) {
        const double* const signal = inSignal - k;
        const auto tap = hn::Set(d, inTaps[k]);
        sum0 = hn::MulAdd(tap, hn::LoadU(d, signal), sum0);
        sum1 = hn::MulAdd(tap, hn::LoadU(d, signal + lanes), sum1);
        sum2 = hn::MulAdd(tap, hn::LoadU(d, signal + 2 * lanes), sum2);
        sum3 = hn::MulAdd(tap, hn::LoadU(d, signal + 3 * lanes), sum3);
        sum4 = hn::MulAdd(tap, hn::LoadU(d, signal + 4 * lanes), sum4);
        sum5 = hn::MulAdd(tap, hn::LoadU(d, signal + 5 * lanes), sum5);
        sum6 = hn::MulAdd(tap, hn::LoadU(d, signal + 6 * lanes), sum6);
        sum7 = hn::MulAdd(tap, hn::LoadU(d, signal + 7 * lanes), sum7);
    }
    ioBlock = {{sum0, sum1, sum2, sum3, sum4, sum5, sum6, sum7}};
}

/// A stretch of the signal, with zeros where it is cut from beyond an end.
struct Stretch
{
    /// Copies `inLength` elements from position `inBegin` of the signal, which may lie before or reach beyond
    /// it.
    HWY_INLINE void Fill(const double* inSignal, std::ptrdiff_t inCount, std::ptrdiff_t inBegin,
                         std::size_t inLength)
    {
        for (std::size_t j = 0; j < inLength; ++j) {
            const std::ptrdiff_t place = inBegin + static_cast<std::ptrdiff_t>(j);
            samples[j] = place >= 0 && place < inCount ? inSignal[place] : 0.0;
        }
    }

    double samples[2 * kMaxBlock];
};

/// The block of outputs that begins at `inBegin`. Taps are taken in up to three runs: those that reach beyond
/// the signal's back, those inside, those that reach before its front.
HWY_INLINE Block ConvolveBlock(std::ptrdiff_t inBegin, std::ptrdiff_t inCount, const double* inSignal,
                               std::ptrdiff_t inTapCount, const double* inTaps)
{
    const Tag d;
    const auto length = static_cast<std::ptrdiff_t>(kVectors * hn::Lanes(d));
    Block block;
    for (auto& sum : block.sums) {
        sum = hn::Zero(d);
    }
    // Tap k reads the signal from begin - k to begin - k + length - 1.
    const std::ptrdiff_t first = HWY_MAX(0, inBegin - inCount + 1);
    const std::ptrdiff_t end = HWY_MIN(inTapCount, inBegin + length);
    const std::ptrdiff_t firstInside = HWY_MIN(HWY_MAX(first, inBegin + length - inCount), end);
    const std::ptrdiff_t endInside = HWY_MAX(firstInside, HWY_MIN(end, inBegin + 1));
    Stretch stretch;
    const auto accumulateBeyond = [&](std::ptrdiff_t inFirst, std::ptrdiff_t inEnd) HWY_ATTR {
        for (std::ptrdiff_t k = inFirst; k < inEnd; k += length) {
            const std::ptrdiff_t taps = HWY_MIN(length, inEnd - k);
            const std::ptrdiff_t before = taps - 1;
            stretch.Fill(inSignal, inCount, inBegin - k - before, static_cast<std::size_t>(length + before));
            Accumulate(block, stretch.samples + before, inTaps + k, static_cast<std::size_t>(taps));
        }
    };
    accumulateBeyond(first, firstInside);
    if (endInside > firstInside) {
        Accumulate(block, inSignal + (inBegin - firstInside), inTaps + firstInside,
                   static_cast<std::size_t>(endInside - firstInside));
    }
    accumulateBeyond(endInside, end);
    return block;
}

HWY_INLINE void StoreBlock(const Block& inBlock, double* out)
{
    const Tag d;
    for (std::size_t j = 0; j < kVectors; ++j) {
        hn::StoreU(inBlock.sums[j], d, out + j * hn::Lanes(d));
    }
}

void ConvolveRows(std::size_t inCount, const double* inSignal, std::size_t inTapCount, const double* inTaps,
                  double* out)
{
    const std::size_t length = kVectors * hn::Lanes(Tag());
    const std::size_t outputs = inCount + inTapCount - 1;
    for (std::size_t i = 0; i < outputs; i += length) {
        const Block block =
            ConvolveBlock(static_cast<std::ptrdiff_t>(i), static_cast<std::ptrdiff_t>(inCount), inSignal,
                          static_cast<std::ptrdiff_t>(inTapCount), inTaps);
        if (i + length <= outputs) {
            StoreBlock(block, out + i);
        } else {
            double rest[kMaxBlock];
            StoreBlock(block, rest);
            for (std::size_t j = i; j < outputs; ++j) {
                out[j] = rest[j - i];
            }
        }
    }
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "Dispatch.h"

namespace brisken::utility {

HWY_EXPORT(ConvolveRows);

unsigned ConvolutionWorkBufferSize(unsigned, unsigned)
{
    return 0; // the blocks live in registers, the ends on the stack
}

void Convolve(unsigned inCountA, const double* inA, unsigned inCountB, const double* inB, double* out,
              unsigned char*)
{
    if (inCountA == 0 || inCountB == 0) {
        return;
    }
    if (inCountA >= inCountB) {
        BRISKEN_DISPATCH(ConvolveRows)(inCountA, inA, inCountB, inB, out);
    } else {
        BRISKEN_DISPATCH(ConvolveRows)(inCountB, inB, inCountA, inA, out);
    }
}

} // namespace brisken::utility

#endif // HWY_ONCE
