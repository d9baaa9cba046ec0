#include <tessaro/restoration/prediction/CFillIn.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

#include <brisken/Utility.h>

#include "restoration/prediction/BinLimits.h"

namespace tessaro {

namespace {

constexpr int kSmallestFrame = 4;
constexpr int kFewestReferences = 4;
constexpr float kOneSidedLimit = 2.4f;
constexpr int kOneSidedFirstBin = 2;

/// Rises from 0 at 0 towards 1 at `inLength`
float RaisedCosine(int inIndex, int inLength)
{
    return static_cast<float>(0.5 - 0.5 * std::cos(inIndex * std::numbers::pi / inLength));
}

void BlendOver(float inWeight, float inOld, float& ioNew)
{
    ioNew = inOld + inWeight * (ioNew - inOld);
}

} // namespace

void CFillIn::Init(int inFrameSize, unsigned inContextRange)
{
    const auto size = std::bit_floor(static_cast<unsigned>(std::max(inFrameSize, kSmallestFrame)));
    if (static_cast<int>(size) != mFrameSize) {
        brisken::FFTState_Float* made = nullptr;
        brisken::transform::FFTInit(&made, static_cast<unsigned>(std::countr_zero(size)));
        mTransform.reset(made);
        unsigned bytes = 0;
        brisken::transform::FFTGetBufSize(made, &bytes);
        mWork.resize(bytes);
    }
    mFrameSize = static_cast<int>(size);
    mContextRange = static_cast<int>(std::min<unsigned>(inContextRange, GetMaximumLength()));
    mWindow.assign(size, 0.0f);
    for (unsigned i = 1; i < size; ++i) {
        mWindow[i] = static_cast<float>(0.5001 - 0.4999 * std::cos(2.0 * std::numbers::pi * i / size));
    }
    mFrame.assign(size, 0.0f);
    mSpectrum.assign(size + 2, 0.0f);
    for (auto* row : {&mMagnitudes, &mReference, &mReferenceSteps, &mGains, &mFixedWeights, &mGainWeights}) {
        row->assign(size / 2 + 1, 0.0f);
    }
}

void CFillIn::Transform(const float* inFrame)
{
    brisken::utility::Mul(static_cast<unsigned>(mFrameSize), inFrame, mWindow.data(), mFrame.data());
    brisken::transform::FFTFwd(mFrame.data(), mSpectrum.data(), mTransform.get(), mWork.data());
}

/// The mean level of each bin in the frames from `inStart` on. Callers rely on |im| + re^2 as it stands.
void CFillIn::TakeReference(const float* inData, int inStart, float* outReference)
{
    const unsigned numBins = static_cast<unsigned>(mFrameSize) / 2 + 1;
    brisken::utility::Zero(numBins, outReference);
    for (int frame = 0; frame < mNumReferenceFrames; ++frame) {
        Transform(inData + std::max(inStart + frame * mReferenceStep, 0));
        for (unsigned bin = 0; bin < numBins; ++bin) {
            const float re = mSpectrum[2 * bin];
            outReference[bin] += std::abs(mSpectrum[2 * bin + 1]) + re * re;
        }
    }
    brisken::utility::DivConstant_InPlace(numBins, outReference, static_cast<float>(mNumReferenceFrames));
}

/// References, limits and gains for the first sample of the span
void CFillIn::PrepareSpan(const float* inData, int inSpanStart, int inSpanEnd)
{
    const int half = mFrameSize / 2;
    const unsigned numBins = static_cast<unsigned>(half) + 1;
    const int most = std::max(kFewestReferences, 8 * mContextRange / mFrameSize);
    mReferenceStep = mContextRange / most;
    mNumReferenceFrames = std::min(mReferenceStep, most) + 1;
    TakeReference(inData, inSpanStart - half - mContextRange, mReference.data());
    brisken::utility::Set(numBins, mGains.data(), 1.0f);
    if (mMode == kOneSided) {
        mLimit = kOneSidedLimit;
        brisken::utility::Zero(numBins, mReferenceSteps.data());
        WeighBins(kOneSidedFirstBin);
        return;
    }
    mLimit = 1.0f;
    TakeReference(inData, inSpanEnd - half, mReferenceSteps.data());
    brisken::utility::Sub_InPlace(numBins, mReference.data(), mReferenceSteps.data());
    brisken::utility::DivConstant_InPlace(numBins, mReferenceSteps.data(),
                                          static_cast<float>(inSpanEnd - inSpanStart));
    WeighBins(mNumReferenceFrames + 1);
}

/// Weights with which the real parts of the bins make the frame's centre sample. The first bin that gains
/// apply to is counted along the whole transform, so that of the bins below it the mirror images do take
/// part: half of such a bin follows its gain, and half stays.
void CFillIn::WeighBins(int inFirstBin)
{
    const int half = mFrameSize / 2;
    for (int bin = 0; bin <= half; ++bin) {
        const float sign = bin % 2 == 0 ? 1.0f : -1.0f;
        const float images = bin == 0 || bin == half ? 1.0f : 2.0f;
        const float weight = sign * images / static_cast<float>(mFrameSize);
        const bool isLow = bin >= inFirstBin;
        const bool isMirrored = bin > 0 && mFrameSize - bin >= inFirstBin;
        const float share = (isLow ? 0.5f : 0.0f) + (isMirrored ? 0.5f : 0.0f);
        mGainWeights[static_cast<std::size_t>(bin)] = weight * share;
        mFixedWeights[static_cast<std::size_t>(bin)] = weight * (1.0f - share);
    }
}

/// One step of the gains, and the sample in the centre of the frame after them. No inverse transform: the
/// centre is the sum over the bins with alternating signs.
float CFillIn::RefineSample(const float* inFrame)
{
    const unsigned numBins = static_cast<unsigned>(mFrameSize) / 2 + 1;
    Transform(inFrame);
    brisken::utility::Magnitude(numBins, reinterpret_cast<const std::complex<float>*>(mSpectrum.data()),
                                mMagnitudes.data());
    LimitBins(numBins, mLimit,
              {mMagnitudes.data(), mReferenceSteps.data(), mReference.data(), mGains.data()});
    float* const products = mMagnitudes.data();
    for (unsigned bin = 0; bin < numBins; ++bin) {
        products[bin] = mSpectrum[2 * bin] * (mFixedWeights[bin] + mGainWeights[bin] * mGains[bin]);
    }
    return brisken::utility::Sum(numBins, products);
}

bool CFillIn::FillInNow(int inStart, int inEnd, float* ioData, float* outProgress, float inRangeLow,
                        float inRangeHigh, bool* inCancel)
{
    const int half = mFrameSize / 2;
    const int missing = std::max(mFrameSize - inStart, 0);
    const int spanStart = inStart - half + missing;
    const int spanEnd = inEnd + half - missing;
    const int count = spanEnd - spanStart - 1;
    if (mFrameSize == 0 || count <= 0) {
        return true;
    }
    PrepareSpan(ioData, spanStart, spanEnd);
    mRefined.resize(std::max(mRefined.size(), static_cast<std::size_t>(count)));
    for (int i = 0; i < count; ++i) {
        if (inCancel != nullptr && std::atomic_ref(*inCancel).load(std::memory_order_relaxed)) {
            return false;
        }
        mRefined[static_cast<std::size_t>(i)] = RefineSample(ioData + spanStart + 1 + i - half);
        if (outProgress != nullptr) {
            const float done = static_cast<float>(i + 1) / static_cast<float>(count);
            std::atomic_ref(*outProgress)
                .store(inRangeLow + done * (inRangeHigh - inRangeLow), std::memory_order_relaxed);
        }
    }
    BlendIn(count, ioData + spanStart + 1);
    return true;
}

/// Both fades apply where a short span has them overlap.
void CFillIn::BlendIn(int inCount, float* ioData)
{
    const int half = mFrameSize / 2;
    for (int i = 0; i < std::min(half, inCount); ++i) {
        const float weight = RaisedCosine(i, half);
        const int mirrored = inCount - 1 - i;
        BlendOver(weight, ioData[i], mRefined[static_cast<std::size_t>(i)]);
        BlendOver(weight, ioData[mirrored], mRefined[static_cast<std::size_t>(mirrored)]);
    }
    brisken::utility::Copy(static_cast<unsigned>(inCount), mRefined.data(), ioData);
}

void CFillIn::WindowClickData(int inStart, int inEnd, float* ioData)
{
    const float before = ioData[inStart - 1];
    const float slope = (ioData[inEnd] - before) / static_cast<float>(inEnd - inStart + 1);
    for (int i = inStart; i < inEnd; ++i) {
        ioData[i] = before + slope * static_cast<float>(i - inStart + 1);
    }
}

} // namespace tessaro
