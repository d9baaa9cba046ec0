#include <brisken/filter/RowBank.h>

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/RowBank.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<double, kRowBankBlock>;
using V = hn::Vec<D>;

/// There are registers for 16 sums where there are 32 of them, else for 8.
constexpr std::size_t kMostStretches = HWY_MAX_BYTES >= 64 ? 4 : 2;

/// Keeps GCC from loading the vector again for each use, as it otherwise does in this loop: all of them wait
/// on the loads.
HWY_INLINE void KeepInRegister([[maybe_unused]] V& ioVector)
{
#if HWY_ARCH_X86 && HWY_COMPILER_GCC_ACTUAL && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
    asm("" : "+v"(ioVector.raw));
#endif
}

#if HWY_TARGET == HWY_SCALAR

HWY_INLINE void StoreTwoSums(V inFirst, V inSecond, double* HWY_RESTRICT outSums)
{
    outSums[0] = hn::GetLane(inFirst);
    outSums[1] = hn::GetLane(inSecond);
}

#else

/// Adds the halves of a vector to each other, down to one of two lanes.
template <class DV, class VV>
HWY_INLINE auto FoldToPair(DV d, VV inVector)
{
    if constexpr (hn::MaxLanes(d) > 2) {
        const hn::Half<DV> half;
        return FoldToPair(half, hn::Add(hn::LowerHalf(half, inVector), hn::UpperHalf(half, inVector)));
    } else {
        return inVector;
    }
}

/// The lanes of each of two vectors, added up
HWY_INLINE void StoreTwoSums(V inFirst, V inSecond, double* HWY_RESTRICT outSums)
{
    const hn::FixedTag<double, 2> d;
    const auto first = FoldToPair(D(), inFirst);
    const auto second = FoldToPair(D(), inSecond);
    hn::StoreU(hn::Add(hn::InterleaveLower(d, first, second), hn::InterleaveUpper(d, first, second)), d,
               outSums);
}

#endif

/// Each sum has one vector, all through the rows: so it comes out the same beside any others.
template <std::size_t kStretches>
HWY_INLINE void Tile(const double* HWY_RESTRICT inBank, std::size_t inRowLength,
                     const double* HWY_RESTRICT inSignal, std::size_t inHop, double* HWY_RESTRICT outSums)
{
    const D d;
    V sums[kStretches][kRowBankRows];
    for (auto& stretch : sums) {
        for (auto& sum : stretch) {
            sum = hn::Zero(d);
        }
    }
    for (std::size_t block = 0; block < inRowLength; block += kRowBankBlock) {
        for (std::size_t lane = 0; lane < kRowBankBlock; lane += hn::Lanes(d)) {
            V samples[kStretches];
            for (std::size_t s = 0; s < kStretches; ++s) {
                samples[s] = hn::LoadU(d, inSignal + s * inHop + block + lane);
            }
            for (std::size_t row = 0; row < kRowBankRows; ++row) {
                auto taps = hn::LoadU(d, inBank + block * kRowBankRows + row * kRowBankBlock + lane);
                KeepInRegister(taps);
                for (std::size_t s = 0; s < kStretches; ++s) {
                    sums[s][row] = hn::MulAdd(taps, samples[s], sums[s][row]);
                }
            }
        }
    }
    for (std::size_t s = 0; s < kStretches; ++s) {
        for (std::size_t row = 0; row < kRowBankRows; row += 2) {
            StoreTwoSums(sums[s][row], sums[s][row + 1], outSums + s * kRowBankRows + row);
        }
    }
}

void BankSums(const double* inBank, std::size_t inRowLength, const double* inSignal, std::size_t inHop,
              std::size_t inNumStretches, double* outSums)
{
    std::size_t s = 0;
    for (; s + kMostStretches <= inNumStretches; s += kMostStretches) {
        Tile<kMostStretches>(inBank, inRowLength, inSignal + s * inHop, inHop, outSums + s * kRowBankRows);
    }
    const auto finish = [&]<std::size_t kRest>() HWY_ATTR {
        Tile<kRest>(inBank, inRowLength, inSignal + s * inHop, inHop, outSums + s * kRowBankRows);
    };
    switch (inNumStretches - s) {
    case 1:
        finish.template operator()<1>();
        break;
    case 2:
        finish.template operator()<2>();
        break;
    case 3:
        finish.template operator()<3>();
        break;
    default:
        break;
    }
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(BankSums);

void RowBankSums(const double* inBank, unsigned inRowLength, const double* inSignal, unsigned inHop,
                 unsigned inNumStretches, double* outSums)
{
    BRISKEN_DISPATCH(BankSums)(inBank, inRowLength, inSignal, inHop, inNumStretches, outSums);
}

} // namespace brisken::filter
#endif
