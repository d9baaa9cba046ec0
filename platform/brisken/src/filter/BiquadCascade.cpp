#include "filter/BiquadCascade.h"

#include <algorithm>

namespace brisken::filter {

namespace {

constexpr std::size_t kChunk = 512;

/// The past of a signal after `inCount` further samples.
void Advance(SectionPast& ioPast, const double* inRow, std::size_t inCount)
{
    const auto fresh = std::min(inCount, kSectionPast);
    std::copy(ioPast.begin() + static_cast<std::ptrdiff_t>(fresh), ioPast.end(), ioPast.begin());
    std::copy_n(inRow + inCount - fresh, fresh, ioPast.end() - static_cast<std::ptrdiff_t>(fresh));
}

} // namespace

BiquadCascade::BiquadCascade(std::size_t inOrder, std::size_t inNumSections)
    : mOrder(inOrder), mSections(inNumSections), mPasts(inNumSections + 1)
{
    for (auto& window : mWindows) {
        window = AlignedArray<double>(kSectionPast + kChunk + kMostLookAhead);
    }
}

void BiquadCascade::SetTaps(const double* inTaps)
{
    for (auto& section : mSections) {
        const auto* denominator = inTaps + mOrder + 1;
        double b[3] = {};
        double a[3] = {};
        for (std::size_t k = 0; k <= mOrder; ++k) {
            b[k] = inTaps[k] / denominator[0];
            a[k] = denominator[k] / denominator[0];
        }
        section = MakeSectionForms(b[0], b[1], b[2], a[1], a[2]);
        inTaps += 2 * (mOrder + 1);
    }
    mPlainLeft = kSectionPast;
}

void BiquadCascade::SetDelayLine(const double* inDelayLine)
{
    for (auto& past : mPasts) {
        past.fill(0.0);
        if (inDelayLine != nullptr) {
            std::reverse_copy(inDelayLine, inDelayLine + mOrder,
                              past.end() - static_cast<std::ptrdiff_t>(mOrder));
            inDelayLine += mOrder;
        }
    }
    mPlainLeft = kSectionPast;
}

void BiquadCascade::Process(std::size_t inCount, const double* inSource, double* outDest)
{
    for (std::size_t begin = 0; begin < inCount; begin += kChunk) {
        ProcessChunk(std::min(kChunk, inCount - begin), inSource + begin, outDest + begin);
    }
}

SectionTaps BiquadCascade::GetSingleTaps() const
{
    const auto& plain = mSections[0][0];
    return {plain.mBack1, plain.mBack2, plain.mFeed[0], plain.mFeed[1], plain.mFeed[2]};
}

SectionMemory BiquadCascade::GetSingleMemory() const
{
    const auto& input = mPasts[0];
    const auto& output = mPasts[1];
    return {input[kSectionPast - 1], input[kSectionPast - 2], output[kSectionPast - 1],
            output[kSectionPast - 2]};
}

void BiquadCascade::SetSingleMemory(const SectionMemory& inMemory)
{
    const double delayLine[] = {inMemory.x1, inMemory.x2, inMemory.y1, inMemory.y2};
    for (std::size_t i = 0; i < mPasts.size(); ++i) {
        mPasts[i][kSectionPast - 1] = delayLine[2 * i];
        mPasts[i][kSectionPast - 2] = delayLine[2 * i + 1];
    }
    mPlainLeft = kSectionPast;
}

void BiquadCascade::ProcessChunk(std::size_t inCount, const double* inSource, double* outDest)
{
    const auto plain = std::min(mPlainLeft, inCount);
    mPlainLeft -= plain;
    auto* window = mWindows[0].Get();
    auto* nextWindow = mWindows[1].Get();
    std::copy_n(mPasts[0].data(), kSectionPast, window);
    std::copy_n(inSource, inCount, window + kSectionPast);
    Advance(mPasts[0], inSource, inCount);
    for (std::size_t i = 0; i < mSections.size(); ++i) {
        auto& past = mPasts[i + 1];
        const auto isLast = i + 1 == mSections.size();
        auto* dest = isLast ? outDest : nextWindow + kSectionPast;
        std::copy_n(past.data(), kSectionPast, nextWindow);
        SectionRow(mSections[i], window + kSectionPast, inCount, plain, past, dest);
        Advance(past, dest, inCount);
        std::swap(window, nextWindow);
    }
    if (mSections.empty()) {
        std::copy_n(window + kSectionPast, inCount, outDest);
    }
}

} // namespace brisken::filter
