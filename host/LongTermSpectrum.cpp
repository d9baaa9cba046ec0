#include "LongTermSpectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <brisken/Utility.h>
#include <tessaro/utility/FFTWindow.h>

namespace host {

namespace {

constexpr std::size_t kFramesAFrameLength = 4;
constexpr double kNoAttenuation = 140.0;

} // namespace

LongTermSpectrum::LongTermSpectrum(unsigned inOrder, unsigned inWindowType)
    : mOrder(inOrder),
      mWindowType(inWindowType),
      mFrameLength(std::size_t{1} << inOrder),
      mWindow(mFrameLength),
      mFrame(mFrameLength),
      mSpectrum(mFrameLength + 2),
      mPower(mFrameLength / 2 + 1)
{
    mTransforms.AddOrder(inOrder);
}

void LongTermSpectrum::SetIOConfig(int inNumChannels, float inSamplingRate)
{
    mSamplingRate = inSamplingRate;
    mChannels.resize(static_cast<std::size_t>(inNumChannels));
    const auto length = static_cast<int>(mFrameLength);
    mTail.SetTailMode(inNumChannels, static_cast<int>(inSamplingRate), length, length, true);
}

bool LongTermSpectrum::SetSelection(std::int64_t, std::int64_t inLength)
{
    mLength = inLength;
    return inLength >= kFewestSamples;
}

float LongTermSpectrum::GetProgress() const
{
    return 100.0f * static_cast<float>(mDone) / static_cast<float>(mLength);
}

void LongTermSpectrum::Start(float* inResult)
{
    DSPAnalyzer::Start(inResult);
    mDone = 0;
    mFrameCount = 0;
    mNextFrame = 0;
    mTail.Reset();
    mTail.ResetTotal();
    for (auto& channel : mChannels) {
        channel.mLevels.assign(mPower.size(), 0.0);
        channel.mInvalidCount = 0;
    }
    const double width = std::min(1.0, static_cast<double>(mLength) / static_cast<double>(mFrameLength));
    tessaro::GetFFTWindow(mWindow.data(), static_cast<int>(mFrameLength), width,
                          mWindowType | tessaro::fftwindow::kFull, kNoAttenuation);
    mWindowSum = 0.0;
    for (const float weight : mWindow) {
        mWindowSum += weight;
    }
}

std::int64_t LongTermSpectrum::Analyze(const float* const* inInput, int, int inNumSamples)
{
    const auto count = static_cast<unsigned>(inNumSamples);
    mTail.Append(inInput, count, 0);
    CleanNewSamples(count);
    mDone += inNumSamples;
    for (; mNextFrame + mFrameLength <= mTail.GetTotal(); mNextFrame += mFrameLength / kFramesAFrameLength) {
        AddFrame(mNextFrame);
    }
    if (mTail.GetTotal() > mFrameLength) {
        const auto surplus = mTail.GetTotal() - mFrameLength;
        mTail.Shift(static_cast<int>(surplus));
        mNextFrame -= surplus;
    }
    return inNumSamples;
}

void LongTermSpectrum::Done()
{
    const std::size_t total = mTail.GetTotal();
    const std::size_t step = mFrameLength / kFramesAFrameLength;
    if (total < mFrameLength) {
        // The short window stands in the middle of the frame, so the samples must do so too.
        const std::size_t before = (mFrameLength - total) / 2;
        std::vector<std::vector<float>> rows(mChannels.size(), std::vector<float>(mFrameLength, 0.0f));
        std::vector<const float*> pointers;
        for (std::size_t channel = 0; channel < rows.size(); ++channel) {
            std::copy_n(mTail.GetPointer()[channel], total, rows[channel].data() + before);
            pointers.push_back(rows[channel].data());
        }
        mTail.ResetTotal();
        mTail.Append(pointers.data(), static_cast<unsigned>(mFrameLength), 0);
        AddFrame(0);
    } else if (mNextFrame + mFrameLength < total + step) {
        AddFrame(total - mFrameLength);
    }
    for (auto& channel : mChannels) {
        const double frames = static_cast<double>(std::max<std::int64_t>(mFrameCount, 1));
        for (std::size_t bin = 0; bin < channel.mLevels.size(); ++bin) {
            const bool isEnd = bin == 0 || bin + 1 == channel.mLevels.size();
            channel.mLevels[bin] =
                std::sqrt(channel.mLevels[bin] / frames) * (isEnd ? 1.0 : 2.0) / mWindowSum;
        }
    }
}

LongTermSpectrum::Peak LongTermSpectrum::FindPeak(std::size_t inChannel) const
{
    const auto& levels = GetLevels(inChannel);
    const auto highest = std::max_element(levels.begin() + 1, levels.end() - 1);
    if (*highest <= 0.0) {
        return {};
    }
    const double side = highest[1] > highest[-1] ? 1.0 : -1.0;
    const double ratio = std::max(highest[1], highest[-1]) / *highest;
    double low = 0.0;
    double high = 0.5;
    for (int halving = 0; halving < 24; ++halving) {
        const double middle = 0.5 * (low + high);
        (GetWindowResponse(1.0 - middle) < ratio * GetWindowResponse(middle) ? low : high) = middle;
    }
    const auto bin = static_cast<double>(highest - levels.begin());
    return {(bin + side * low) * GetBinWidth(), *highest / GetWindowResponse(low)};
}

/// How high a sine stands on a bin that it misses by `inBins`, against one that falls on its bin. A thousand
/// points of the window are enough for the few bins around the peak.
double LongTermSpectrum::GetWindowResponse(double inBins) const
{
    const std::size_t step = std::max<std::size_t>(1, mFrameLength / 1024);
    const double turn = 2.0 * std::numbers::pi * inBins / static_cast<double>(mFrameLength);
    double response = 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < mFrameLength; i += step) {
        const double fromMiddle = static_cast<double>(i) - 0.5 * static_cast<double>(mFrameLength);
        response += mWindow[i] * std::cos(turn * fromMiddle);
        sum += mWindow[i];
    }
    return response / sum;
}

void LongTermSpectrum::AddFrame(std::size_t inOffset)
{
    const auto length = static_cast<unsigned>(mFrameLength);
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        brisken::utility::Mul(length, mTail.GetPointer()[channel] + inOffset, mWindow.data(), mFrame.data());
        brisken::transform::FFTFwd(mFrame.data(), mSpectrum.data(), mTransforms.GetFFT(mOrder),
                                   mTransforms.GetFFTBuffer());
        brisken::utility::PowerSpectr(static_cast<unsigned>(mPower.size()),
                                      reinterpret_cast<const std::complex<float>*>(mSpectrum.data()),
                                      mPower.data());
        auto& sums = mChannels[channel].mLevels;
        for (std::size_t bin = 0; bin < sums.size(); ++bin) {
            sums[bin] += mPower[bin];
        }
    }
    ++mFrameCount;
}

void LongTermSpectrum::CleanNewSamples(std::size_t inCount)
{
    const std::size_t first = mTail.GetTotal() - inCount;
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        float* row = mTail.GetPointer()[channel] + first;
        if (std::isfinite(brisken::utility::DotProduct(static_cast<unsigned>(inCount), row, row))) {
            continue;
        }
        for (std::size_t i = 0; i < inCount; ++i) {
            if (!std::isfinite(row[i])) {
                row[i] = 0.0f;
                ++mChannels[channel].mInvalidCount;
            }
        }
    }
}

} // namespace host
