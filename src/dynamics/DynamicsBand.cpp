#include <tessaro/dynamics/DynamicsBand.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <brisken/Utility.h>

#include "dynamics/GainLoops.h"
#include "dynamics/GainTimes.h"
#include "dynamics/LevelFollowers.h"
#include "dynamics/RunningMean.h"

namespace tessaro::dynamics {

namespace {

constexpr double kDelaySeconds = 0.001;
constexpr double kMakeupSeconds = 4.0;
/// Samples that go through all steps at once
constexpr unsigned kRun = 256;

} // namespace

DynamicsBand::DynamicsBand(float inSampleRate, ChannelLayout inLayout, int inMaxBlockSize)
    : mSampleRate(inSampleRate),
      mLayout(std::move(inLayout)),
      mMaxBlockSize(inMaxBlockSize),
      mMakeup(std::make_unique<RunningMean>())
{
    UpdateThreshold(mGate, mGate.mThreshold);
    Rebuild();
}

DynamicsBand::~DynamicsBand() = default;

void DynamicsBand::Rebuild()
{
    const auto blockSize = static_cast<std::size_t>(std::max(mMaxBlockSize, 0));
    const double rate = mSampleRate;
    mPeaks.assign(blockSize, 0.0f);
    mSumOfSquares.assign(blockSize, 0.0f);
    mCurve.assign(blockSize, 0.0f);
    mLevels.assign(mLayout.size(), 0.0f);
    mMakeup->SetLength(static_cast<std::size_t>(std::max(rate * kMakeupSeconds, 0.0)));
    mDelay.SetTailMode(static_cast<int>(mLayout.size()), static_cast<int>(std::lround(rate)), mMaxBlockSize,
                       static_cast<int>(std::lround(rate * kDelaySeconds)), true);
    mFactorDetection = PeakDecay(mSampleRate);
    for (auto* const stage : {&mComp, &mLim, &mGate}) {
        UpdateTimes(*stage);
    }
    Reset();
}

void DynamicsBand::Reset()
{
    // The make-up's sum stays though its entries go: callers have set their levels with it so. What an
    // infinity or NaN has done to it must not stay.
    if (std::isfinite(mPeak) && std::isfinite(mMeanSquare) && std::isfinite(mMakeup->GetSum())) {
        mMakeup->SetSurplus(mMakeup->GetSum());
    }
    mMakeup->Clear();
    mPeak = 0.0f;
    mMeanSquare = 0.0f;
    mGain = 1.0f;
    mSmoothedGain = 1.0f;
    mGateGain = 1.0f;
    mSmoothedGateGain = 1.0f;
    mLowestGain = 1.0f;
    mLowestGateGain = 1.0f;
    std::fill(mLevels.begin(), mLevels.end(), 0.0f);
    mDelay.Reset();
}

int DynamicsBand::GetSystemDelay(float inSampleRate)
{
    return std::max(static_cast<int>(std::lround(static_cast<double>(inSampleRate) * kDelaySeconds - 1.0)),
                    0);
}

void DynamicsBand::Detect(unsigned inCount, const float* const* inInput, ChannelMask inSkipped)
{
    brisken::utility::Zero(inCount, mPeaks.data());
    brisken::utility::Zero(inCount, mSumOfSquares.data());
    unsigned heard = 0;
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            const float* const row = inInput[channel];
            mLevels[channel] = FoldMagnitudes(inCount, row, mPeaks.data());
            if (mRMSDetection) {
                brisken::utility::AddProduct(inCount, row, row, mSumOfSquares.data());
            }
            ++heard;
        }
    }
    if (mRMSDetection && heard > 1) {
        brisken::utility::MulConstant_InPlace(inCount, mSumOfSquares.data(),
                                              1.0f / static_cast<float>(heard));
    }
}

void DynamicsBand::ComputeCurve(unsigned inCount, const float* inPeaks, const float* inMeanSquares,
                                float* outCurve)
{
    float levels[kRun];
    float gains[kRun];
    if (mRMSDetection) {
        FollowMeanSquares(inCount, inMeanSquares, mRMSKept, kLowestLevel, mMeanSquare, levels);
    } else {
        FollowPeaks(inCount, inPeaks, mFactorDetection, mPeak, levels);
    }
    ComputeTargets(inCount, levels, gains);
    FollowTargets(inCount, levels, gains);
    ApplyGate(inCount, levels, gains);
    brisken::utility::MulConstant(inCount, gains, outCurve, mLinearOutputGain);
    if (mAutoMakeupGain) {
        ApplyMakeup(inCount, gains, outCurve);
    }
}

void DynamicsBand::ComputeTargets(unsigned inCount, const float* inLevels, float* outTargets) const
{
    const float highest = brisken::utility::Max(inCount, inLevels);
    CurveAbove(inCount, inLevels, highest, mComp.mLinearThreshold, mComp.mExponent, outTargets);
    if (highest >= mLim.mLinearThreshold) {
        float limited[kRun];
        CurveAbove(inCount, inLevels, highest, mLim.mLinearThreshold, mLim.mExponent, limited);
        for (unsigned i = 0; i < inCount; ++i) {
            const float continued = limited[i] * mMaxCompressorGain;
            outTargets[i] = inLevels[i] >= mLim.mLinearThreshold ? continued : outTargets[i];
        }
    }
}

void DynamicsBand::FollowTargets(unsigned inCount, const float* inLevels, float* ioGains)
{
    const StageSmoothers comp = {OnePole(mComp.mAttackKept), OnePole(mComp.mReleaseKept)};
    const StageSmoothers lim = {OnePole(mLim.mAttackKept), OnePole(mLim.mReleaseKept)};
    const OnePole smoother(mSmoothingKept);
    GainState state = {mGain, mSmoothedGain};
    dynamics::FollowTargets(inCount, ioGains, inLevels, mLim.mLinearThreshold, comp, lim,
                            mAutoSmoothing ? &smoother : nullptr, state, ioGains);
    mGain = state.mGain;
    mSmoothedGain = state.mSmoothed;
    if (mGainReductionEnabled) {
        mLowestGain = std::min(mLowestGain, brisken::utility::Min(inCount, ioGains));
    }
}

void DynamicsBand::ApplyGate(unsigned inCount, const float* inLevels, float* ioGains)
{
    const float lowest = brisken::utility::Min(inCount, inLevels);
    const bool isSettled = mGateGain == 1.0f && (!mAutoSmoothing || mSmoothedGateGain == 1.0f);
    if (isSettled && (mGate.mExponent == 0.0 || lowest >= mGate.mLinearThreshold)) {
        return; // open throughout
    }
    float gate[kRun];
    CurveBelow(inCount, inLevels, lowest, mGate.mLinearThreshold, mGate.mExponent, gate);
    const StageSmoothers smoothers = {OnePole(mGate.mAttackKept), OnePole(mGate.mReleaseKept)};
    const OnePole smoother(mGateSmoothingKept);
    GainState state = {mGateGain, mSmoothedGateGain};
    FollowGate(inCount, gate, inLevels, mGate.mLinearThreshold, smoothers,
               mAutoSmoothing ? &smoother : nullptr, state, gate);
    mGateGain = state.mGain;
    mSmoothedGateGain = state.mSmoothed;
    if (mGainReductionEnabled) {
        mLowestGateGain = std::min(mLowestGateGain, brisken::utility::Min(inCount, gate));
    }
    brisken::utility::Mul_InPlace(inCount, gate, ioGains);
}

void DynamicsBand::ApplyMakeup(unsigned inCount, const float* inGains, float* ioCurve)
{
    float makeup[kRun];
    for (unsigned i = 0; i < inCount; ++i) {
        const float inverse = 1.0f / inGains[i];
        // A gate that has closed must not make the sum infinite.
        makeup[i] = std::min(inverse * inverse, std::numeric_limits<float>::max());
    }
    mMakeup->AddAndAverage(inCount, makeup, makeup);
    brisken::utility::Sqrt_InPlace(inCount, makeup);
    brisken::utility::Mul_InPlace(inCount, makeup, ioCurve);
}

void DynamicsBand::Apply(unsigned inCount, const float* const* inInput, float* const* outOutput,
                         ChannelMask inSkipped)
{
    mDelay.AppendCircular(inInput, inCount, 0);
    const int position = static_cast<int>(mDelay.GetTotal()) - static_cast<int>(inCount) - GetSystemDelay();
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            mDelay.ExtractCircular(outOutput, inCount, position, 0, static_cast<unsigned>(channel));
            brisken::utility::Mul_InPlace(inCount, mCurve.data(), outOutput[channel]);
        }
    }
}

void DynamicsBand::Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                           ChannelMask inSkipped)
{
    if (inCount == 0) {
        return;
    }
    Detect(inCount, inInput, inSkipped);
    for (unsigned begin = 0; begin < inCount; begin += kRun) {
        ComputeCurve(std::min(kRun, inCount - begin), mPeaks.data() + begin, mSumOfSquares.data() + begin,
                     mCurve.data() + begin);
    }
    Apply(inCount, inInput, outOutput, inSkipped);
}

void DynamicsBand::ProcessInPlace(unsigned inCount, float* const* ioChannels, ChannelMask inSkipped)
{
    Process(inCount, ioChannels, ioChannels, inSkipped);
}

float DynamicsBand::GetGainReduction()
{
    return std::exchange(mLowestGain, 1.0f) * std::exchange(mLowestGateGain, 1.0f);
}

void DynamicsBand::GetLevels(std::vector<float>& outLevels)
{
    if (outLevels.size() == mLevels.size()) {
        std::copy(mLevels.begin(), mLevels.end(), outLevels.begin());
        std::fill(mLevels.begin(), mLevels.end(), 0.0f);
    }
}

} // namespace tessaro::dynamics
