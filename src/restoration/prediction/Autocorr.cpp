#include <tessaro/restoration/prediction/Autocorr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

constexpr unsigned kSmallestTransform = 8;
constexpr unsigned kLargestTransform = 1u << brisken::transform::kMaxFFTOrder;

/// The power of two that holds both; one too much for a transform where none does
unsigned TransformSize(unsigned inLength, unsigned inLags)
{
    const auto sum = std::size_t{inLength} + (inLags == Autocorr::kAll ? inLength : inLags);
    return static_cast<unsigned>(
        std::bit_ceil(std::clamp<std::size_t>(sum, kSmallestTransform, 2 * std::size_t{kLargestTransform})));
}

} // namespace

void Autocorr::Transform::Init(unsigned inOrder)
{
    brisken::FFTState_Float* made = nullptr;
    brisken::transform::FFTInit(&made, inOrder);
    mState.reset(made);
    mSize = 1u << inOrder;
}

void Autocorr::SetMode(unsigned inLength, unsigned inLags, bool inUseHalf)
{
    const unsigned size = TransformSize(inLength, inLags);
    if (size != mFull.mSize) {
        const auto order = static_cast<unsigned>(std::countr_zero(size));
        mFull.Init(order);
        mHalf.Init(order - 1);
        ReserveTransform(size);
    }
    if (inLength != mLength) {
        mWindow.resize(inLength);
        for (unsigned i = 0; i < inLength; ++i) {
            mWindow[i] = static_cast<float>(1.0 - std::cos(2.0 * std::numbers::pi * (i + 0.5) / inLength));
        }
    }
    mLength = inLength;
    mUseHalf = inUseHalf;
}

void Autocorr::ReserveMemory(unsigned inLength)
{
    mWindow.reserve(inLength);
    ReserveTransform(TransformSize(inLength, 0));
}

void Autocorr::ReserveTransform(unsigned inSize)
{
    for (auto* row : {&mFrame, &mSpectrum, &mOtherSpectrum}) {
        row->resize(std::max<std::size_t>(row->size(), inSize + 2));
    }
    for (const auto* transform : {&mFull, &mHalf}) {
        if (transform->mState) {
            unsigned bytes = 0;
            brisken::transform::FFTGetBufSize(transform->mState.get(), &bytes);
            mWork.resize(std::max<std::size_t>(mWork.size(), bytes));
        }
    }
}

/// Resolves the placeholders and finds the transform for the frame; null if none holds it. The half is for
/// frames whose lags it holds, too. Lags beyond the frame need no room.
const Autocorr::Transform* Autocorr::Choose(unsigned& ioLags, unsigned& ioLength) const
{
    ioLength = ioLength == kAll ? mLength : ioLength;
    ioLags = ioLags == kAll ? std::max(ioLength, 1u) - 1 : ioLags;
    const auto needed = std::size_t{ioLength} + std::min(ioLags, ioLength);
    if (mUseHalf && needed <= mHalf.mSize) {
        return &mHalf;
    }
    return mFull.mState && ioLength <= mFull.mSize ? &mFull : nullptr;
}

void Autocorr::Analyze(const Transform& inTransform, const float* inFrame, unsigned inLength, bool inWindow,
                       std::vector<float>& outSpectrum)
{
    if (inWindow && inLength == mLength) {
        brisken::utility::Mul(inLength, inFrame, mWindow.data(), mFrame.data());
    } else {
        brisken::utility::Copy(inLength, inFrame, mFrame.data());
    }
    brisken::utility::Zero(inTransform.mSize - inLength, mFrame.data() + inLength);
    brisken::transform::FFTFwd(mFrame.data(), outSpectrum.data(), inTransform.mState.get(), mWork.data());
}

void Autocorr::Correlate(const float* inFrame, float* outCorrelation, unsigned inLags, unsigned inLength,
                         bool inWindow, bool inSquare)
{
    const Transform* const transform = Choose(inLags, inLength);
    const unsigned count = std::min(inLags, inLength);
    if (transform != nullptr) {
        Analyze(*transform, inFrame, inLength, inWindow, mSpectrum);
        const auto* const bins = reinterpret_cast<const std::complex<float>*>(mSpectrum.data());
        float* const levels = mOtherSpectrum.data();
        const unsigned numBins = transform->mSize / 2 + 1;
        inSquare ? brisken::utility::PowerSpectr(numBins, bins, levels)
                 : brisken::utility::Magnitude(numBins, bins, levels);
        for (unsigned bin = 0; bin < numBins; ++bin) {
            mSpectrum[2 * bin] = levels[bin];
            mSpectrum[2 * bin + 1] = 0.0f;
        }
        brisken::transform::FFTInv(mSpectrum.data(), mFrame.data(), transform->mState.get(), mWork.data());
        brisken::utility::Copy(count, mFrame.data(), outCorrelation);
    } else {
        brisken::utility::Zero(count, outCorrelation);
    }
    brisken::utility::Zero(inLags - count, outCorrelation + count);
}

void Autocorr::GetAutocorr(const float* inFrame, float* outCorrelation, unsigned inLags, unsigned inLength,
                           bool inWindow)
{
    Correlate(inFrame, outCorrelation, inLags, inLength, inWindow, true);
}

void Autocorr::GetSqrtAutocorr(const float* inFrame, float* outCorrelation, unsigned inLags,
                               unsigned inLength, bool inWindow)
{
    Correlate(inFrame, outCorrelation, inLags, inLength, inWindow, false);
}

void Autocorr::GetCrosscorr(const float* inFrameA, const float* inFrameB, float* outCorrelation,
                            unsigned inLags, unsigned inLength, bool inWindow, bool inBothSides)
{
    const Transform* const transform = Choose(inLags, inLength);
    const unsigned before = inBothSides && inLags > 0 ? inLags - 1 : 0;
    if (transform == nullptr || inLags == 0) {
        brisken::utility::Zero(before + inLags, outCorrelation);
        return;
    }
    Analyze(*transform, inFrameA, inLength, inWindow, mSpectrum);
    Analyze(*transform, inFrameB, inLength, inWindow, mOtherSpectrum);
    const unsigned size = transform->mSize;
    for (unsigned bin = 0; bin <= size; bin += 2) {
        mSpectrum[bin + 1] = -mSpectrum[bin + 1];
    }
    brisken::utility::Mul_InPlace(size / 2 + 1,
                                  reinterpret_cast<const std::complex<float>*>(mOtherSpectrum.data()),
                                  reinterpret_cast<std::complex<float>*>(mSpectrum.data()));
    brisken::transform::FFTInv(mSpectrum.data(), mFrame.data(), transform->mState.get(), mWork.data());
    const unsigned count = std::min(inLags, inLength);
    const unsigned negative = std::min(before, count == 0 ? 0 : count - 1);
    brisken::utility::Zero(before + inLags, outCorrelation);
    brisken::utility::Copy(count, mFrame.data(), outCorrelation + before);
    brisken::utility::Copy(negative, mFrame.data() + (size - negative), outCorrelation + (before - negative));
}

} // namespace tessaro
