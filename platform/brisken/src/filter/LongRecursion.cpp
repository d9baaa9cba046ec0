#include "filter/LongRecursion.h"

#include <algorithm>

#include "filter/IIRKernel.h"

namespace brisken::filter {

namespace {

constexpr std::size_t kChunk = 512;

void SetPast(AlignedArray<double>& outRow, const double* inLine, std::size_t inOrder)
{
    if (inLine != nullptr) {
        std::reverse_copy(inLine, inLine + inOrder, outRow.Get());
    } else {
        std::fill_n(outRow.Get(), inOrder, 0.0);
    }
}

} // namespace

LongRecursion::LongRecursion(std::size_t inOrder)
    : mOrder(inOrder), mFeed(inOrder + 1), mBack(inOrder), mSource(inOrder + kChunk), mDest(inOrder + kChunk)
{
}

void LongRecursion::SetTaps(const double* inTaps)
{
    const auto* denominator = inTaps + mOrder + 1;
    const auto normaliser = denominator[0];
    const auto divide = [normaliser](double inTap) { return inTap / normaliser; };
    std::transform(inTaps, denominator, mFeed.begin(), divide);
    std::transform(denominator + 1, denominator + 1 + mOrder, mBack.begin(), divide);
}

void LongRecursion::SetDelayLine(const double* inDelayLine)
{
    SetPast(mSource, inDelayLine, mOrder);
    SetPast(mDest, inDelayLine != nullptr ? inDelayLine + mOrder : nullptr, mOrder);
}

void LongRecursion::Process(std::size_t inCount, const double* inSource, double* outDest)
{
    for (std::size_t begin = 0; begin < inCount; begin += kChunk) {
        const auto count = std::min(kChunk, inCount - begin);
        std::copy_n(inSource + begin, count, mSource.Get() + mOrder);
        RecursionRow(mFeed.data(), mBack.data(), mOrder, mSource.Get() + mOrder, count, mDest.Get() + mOrder);
        std::copy_n(mDest.Get() + mOrder, count, outDest + begin);
        std::copy_n(mSource.Get() + count, mOrder, mSource.Get());
        std::copy_n(mDest.Get() + count, mOrder, mDest.Get());
    }
}

} // namespace brisken::filter
