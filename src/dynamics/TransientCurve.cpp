#include "dynamics/TransientCurve.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <tessaro/frame/AudioProcessor.h>

namespace tessaro::dynamics {

namespace {

// Excitation
constexpr float kFrameSeconds = 0.05f;
constexpr unsigned kOrder = 15;
constexpr float kHopSeconds = 0.02f;

// Seconds
constexpr double kResidualWindow = 0.001;
constexpr double kResidualHalfWidth = 0.001;
constexpr double kLevelWindow = 0.002;
constexpr double kLevelHalfWidth = 0.005;
constexpr float kUpperBandTime = 0.005f;
constexpr float kMeanTime = 0.05f;

/// First difference with a weight on the present sample
constexpr float kUpperBandWeight = 1.2f;

constexpr float kSmallestUpperBand = 1e-12f;
constexpr float kSmallestMean = 1e-20f;
constexpr float kLevelFloor = 1e-9f;
constexpr float kRatioFloor = 0.1f;
constexpr float kHighestRatio = 4.0f;

unsigned ToSamples(double inSeconds, int inRate)
{
    return static_cast<unsigned>(std::lround(inSeconds * inRate));
}

/// 0 for what is too small to matter and for what is no number, which would stay otherwise.
float Flushed(float inValue, float inSmallest)
{
    return inValue >= inSmallest ? inValue : 0.0f;
}

/// `AudioProcessor::SoftDecision`, with 0 for NaN
float SoftDecision(float inX, float inLow, float inHigh)
{
    return inX > inLow ? std::min((inX - inLow) / (inHigh - inLow), 1.0f) : 0.0f;
}

void AddMagnitudes(unsigned inCount, const float* inRow, float* ioSum)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const float magnitude = std::abs(inRow[i]);
        ioSum[i] += magnitude <= std::numeric_limits<float>::max() ? magnitude : 0.0f;
    }
}

} // namespace

TransientCurve::TransientCurve() = default;
TransientCurve::~TransientCurve() = default;

void TransientCurve::SetMode(int inNumChannels, int inSamplingRate)
{
    const auto rate = static_cast<float>(inSamplingRate);
    mExcitation.StartNewStream(static_cast<unsigned>(inNumChannels), rate, 0);
    mExcitation.SetMode(kFrameSeconds, kOrder, kHopSeconds);
    mResiduals.SetMode(inNumChannels, inSamplingRate, kLongestRun);
    mResidualHold.SetWindow(ToSamples(kResidualWindow, inSamplingRate));
    mResidualSmoother.SetHalfWidth(ToSamples(kResidualHalfWidth, inSamplingRate));
    mLevelHold.SetWindow(ToSamples(kLevelWindow, inSamplingRate));
    mLevelSmoother.SetHalfWidth(ToSamples(kLevelHalfWidth, inSamplingRate));
    mUpperBands.resize(static_cast<std::size_t>(inNumChannels));
    mFastCoefficient = AudioProcessor::TimeToIirA(kUpperBandTime, rate);
    mMeanCoefficient = AudioProcessor::TimeToIirA(kMeanTime, rate);
    for (auto* const row : {&mResidual, &mUpper, &mLevel}) {
        row->assign(kLongestRun, 0.0f);
    }
    Reset();
}

void TransientCurve::Reset()
{
    mExcitation.Reset();
    mResidualHold.Reset();
    mResidualSmoother.Reset();
    mLevelHold.Reset();
    mLevelSmoother.Reset();
    std::fill(mUpperBands.begin(), mUpperBands.end(), UpperBand());
    mLevelMean = 0.0f;
    mRatioMean = 0.0f;
}

int TransientCurve::GetLatency() const
{
    return static_cast<int>(mExcitation.GetLatency() + mResidualHold.GetWindow() / 2 +
                            mResidualSmoother.GetHalfWidth());
}

const float* TransientCurve::Process(const DataTail& inInput, unsigned inPosition, unsigned inCount,
                                     Channels inSkipped)
{
    const auto present = inPosition - static_cast<unsigned>(GetLatency());
    const unsigned levelDelay = mLevelHold.GetWindow() / 2 + mLevelSmoother.GetHalfWidth();
    SumExcitation(inInput, inPosition, inCount, inSkipped);
    SumUpperBand(inInput, present, inCount, inSkipped);
    SumLevel(inInput, std::min(present + levelDelay, inPosition), inCount, inSkipped);
    Decide(inCount);
    return mLevel.data();
}

void TransientCurve::SumExcitation(const DataTail& inInput, unsigned inPosition, unsigned inCount,
                                   Channels inSkipped)
{
    mExcitation.Process(inInput, inCount, mResiduals, nullptr, nullptr, nullptr, inPosition);
    std::fill_n(mResidual.begin(), inCount, 0.0f);
    for (std::size_t channel = 0; channel < mUpperBands.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            AddMagnitudes(inCount, mResiduals.GetPointer()[channel], mResidual.data());
        }
    }
    mResidualHold.Process(inCount, mResidual.data(), mResidual.data());
    mResidualSmoother.Process(inCount, mResidual.data(), mResidual.data());
}

void TransientCurve::SumUpperBand(const DataTail& inInput, unsigned inPosition, unsigned inCount,
                                  Channels inSkipped)
{
    std::fill_n(mUpper.begin(), inCount, 0.0f);
    for (std::size_t channel = 0; channel < mUpperBands.size(); ++channel) {
        if (inSkipped.GetBitModulo(channel)) {
            continue;
        }
        const float* const input = inInput.GetPointer()[channel] + inPosition;
        auto [previous, mean] = mUpperBands[channel];
        for (unsigned i = 0; i < inCount; ++i) {
            const float magnitude = std::abs(kUpperBandWeight * input[i] - previous);
            previous = input[i];
            mean = Flushed(mean + mFastCoefficient * (magnitude - mean), kSmallestUpperBand);
            mUpper[i] += mean;
        }
        mUpperBands[channel] = {previous, mean};
    }
}

void TransientCurve::SumLevel(const DataTail& inInput, unsigned inPosition, unsigned inCount,
                              Channels inSkipped)
{
    std::fill_n(mLevel.begin(), inCount, 0.0f);
    for (std::size_t channel = 0; channel < mUpperBands.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            AddMagnitudes(inCount, inInput.GetPointer()[channel] + inPosition, mLevel.data());
        }
    }
    mLevelHold.Process(inCount, mLevel.data(), mLevel.data());
    mLevelSmoother.Process(inCount, mLevel.data(), mLevel.data());
}

void TransientCurve::Decide(unsigned inCount)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const float level = mLevel[i];
        mLevelMean = Flushed(mLevelMean + mMeanCoefficient * (level - mLevelMean), kSmallestMean);
        const float rise = level / (mLevelMean + kLevelFloor);

        const float unexpected = (mResidual[i] + kLevelFloor) / (mUpper[i] + kLevelFloor);
        const float ratio = std::clamp(unexpected, 0.0f, kHighestRatio);
        mRatioMean = Flushed(mRatioMean + mMeanCoefficient * (ratio - mRatioMean), kSmallestMean);
        const float surprise = ratio / (mRatioMean + kRatioFloor);

        mLevel[i] = 0.5f * (std::sqrt(SoftDecision(surprise, 1.0f, 2.0f)) +
                            std::sqrt(SoftDecision(rise, 1.5f, 3.0f)));
    }
}

} // namespace tessaro::dynamics
