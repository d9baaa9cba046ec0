#include <tessaro/dynamics/AutoGateDSP.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <brisken/Utility.h>

#include "dynamics/GainLoops.h"
#include "dynamics/GainTimes.h"
#include "dynamics/LevelFollowers.h"

namespace tessaro::dynamics {

namespace {

constexpr double kDelaySeconds = 0.01;
constexpr double kRMSMillis = 0.125;
/// Block levels below this count as -400 dB.
constexpr float kFaintestLevel = 1e-20f;
constexpr double kFaintestInDecibels = -400.0;
/// Below this the gate closes altogether: exp(-18.420681), -160 dB.
constexpr float kClosingLevel = 9.9999974e-9f;
/// Samples that go through all steps at once
constexpr unsigned kRun = 256;

} // namespace

AutoGateDSP::AutoGateDSP(float inSampleRate, ChannelLayout inLayout, int inMaxBlockSize, bool inIsBlockMode)
    : mSampleRate(inSampleRate),
      mLayout(std::move(inLayout)),
      mMaxBlockSize(inMaxBlockSize),
      mIsBlockMode(inIsBlockMode)
{
    Rebuild();
}

AutoGateDSP::~AutoGateDSP() = default;

void AutoGateDSP::Rebuild()
{
    const auto blockSize = static_cast<std::size_t>(std::max(mMaxBlockSize, 0));
    const double rate = mSampleRate;
    mSignal.assign(blockSize, 0.0f);
    mCurve.assign(blockSize, 0.0f);
    mDelay.SetTailMode(static_cast<int>(mLayout.size()), static_cast<int>(std::lround(rate)), mMaxBlockSize,
                       static_cast<int>(std::lround(rate * kDelaySeconds)), true);
    SetAttack(mAttack);
    SetRelease(mRelease);
    SetHold(mHold);
    SetRMSDetection(mRMSDetection);
    Reset();
}

void AutoGateDSP::Reset()
{
    mState = AutoGateState::kNone;
    mHasSeenBlock = false;
    mHoldCounter = 0;
    mGain = 1.0f;
    mMeanSquare = 0.0f;
    mLowestGain = 1.0f;
    mDelay.Reset();
}

int AutoGateDSP::GetLatency() const
{
    return std::max(static_cast<int>(std::lround(static_cast<double>(mSampleRate) * kDelaySeconds - 1.0)), 0);
}

void AutoGateDSP::SetSampleRate(float inSampleRate)
{
    mSampleRate = inSampleRate;
    Rebuild();
}

void AutoGateDSP::SetMaxProcessingBlockSize(int inMaxBlockSize)
{
    mMaxBlockSize = inMaxBlockSize;
    Rebuild();
}

void AutoGateDSP::SetAudioChannelLayout(const ChannelLayout& inLayout)
{
    if (inLayout != mLayout) {
        mLayout = inLayout;
        Rebuild();
    }
}

void AutoGateDSP::SetThreshold(float inThreshold)
{
    mThreshold = inThreshold;
    mLinearThreshold = LinearFromDecibels(inThreshold);
}

void AutoGateDSP::SetAttack(float inAttack)
{
    mAttack = inAttack;
    mAttackKept = OnePoleKept(inAttack, mSampleRate);
}

void AutoGateDSP::SetRelease(float inRelease)
{
    mRelease = inRelease;
    mReleaseKept = OnePoleKept(inRelease, mSampleRate);
}

void AutoGateDSP::SetHold(float inHold)
{
    mHold = inHold;
    const double samples = static_cast<double>(inHold) * 0.001 * static_cast<double>(mSampleRate) - 1.0;
    mHoldSamples = static_cast<unsigned>(std::max(std::lround(samples), 0L));
}

void AutoGateDSP::SetRMSDetection(bool inOn)
{
    mRMSDetection = inOn;
    mRMSKept = OnePoleKept(kRMSMillis, mSampleRate);
}

void AutoGateDSP::Detect(unsigned inCount, const float* const* inInput, ChannelMask inSkipped)
{
    brisken::utility::Zero(inCount, mSignal.data());
    unsigned heard = 0;
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        if (inSkipped.GetBitModulo(channel)) {
            continue;
        }
        ++heard;
        const float* const row = inInput[channel];
        if (mRMSDetection) {
            brisken::utility::AddProduct(inCount, row, row, mSignal.data());
        } else {
            FoldMagnitudes(inCount, row, mSignal.data());
        }
    }
    if (mRMSDetection && heard > 1) {
        brisken::utility::MulConstant_InPlace(inCount, mSignal.data(), 1.0f / static_cast<float>(heard));
    }
}

void AutoGateDSP::FollowBlock(unsigned inCount, float inHighest)
{
    float target = 1.0f;
    // The smoother's factors change places: settings count on it.
    float kept = mAttack > 0.0f ? 1.0f - mAttackKept : 0.0f;
    if (inHighest < mLinearThreshold) {
        const double level = inHighest < kFaintestLevel ? kFaintestInDecibels
                                                        : 20.0 * std::log10(static_cast<double>(inHighest));
        const double threshold = mThreshold;
        const double gain = (level - threshold) * static_cast<double>(mRatio) + threshold - level;
        target = static_cast<float>(std::exp(gain * kNaturalFromDecibels));
        kept = mReleaseKept;
    }
    mGain = ApproachTarget(inCount, target, OnePole(kept), mGain, mCurve.data());
}

void AutoGateDSP::FollowLevels(unsigned inCount, const float* inSignal, float* outCurve)
{
    float levels[kRun];
    if (mRMSDetection) {
        FollowMeanSquares(inCount, inSignal, mRMSKept, 0.0f, mMeanSquare, levels);
    } else {
        brisken::utility::Copy(inCount, inSignal, levels);
    }
    const float lowest = brisken::utility::Min(inCount, levels);
    const double exponent = static_cast<double>(mRatio) - 1.0;
    CurveBelow(inCount, levels, lowest, mLinearThreshold, exponent, outCurve);
    const float closingLevel = std::min(kClosingLevel, mLinearThreshold);
    if (exponent != 0.0 && lowest < closingLevel) {
        for (unsigned i = 0; i < inCount; ++i) {
            outCurve[i] = levels[i] < closingLevel ? 0.0f : outCurve[i];
        }
    }
    const StageSmoothers smoothers = {OnePole(mAttackKept), OnePole(mReleaseKept)};
    HeldGate gate = {mGain, mHoldCounter, mWasHeld};
    FollowGateWithHold(inCount, outCurve, levels, mLinearThreshold, smoothers, mHoldSamples, gate, outCurve);
    mGain = gate.mGain;
    mHoldCounter = gate.mHoldCounter;
    mWasHeld = gate.mWasHeld;
}

void AutoGateDSP::ComputeCurve(unsigned inCount)
{
    mWasHeld = false;
    if (mIsBlockMode || !mHasSeenBlock) {
        const float highest = brisken::utility::Max(inCount, mSignal.data());
        const float level = mRMSDetection ? std::sqrt(highest) : highest;
        if (mIsBlockMode) {
            FollowBlock(inCount, level);
            return;
        }
        mGain = level > mLinearThreshold ? 1.0f : 0.0f;
        mHasSeenBlock = true;
    }
    for (unsigned begin = 0; begin < inCount; begin += kRun) {
        FollowLevels(std::min(kRun, inCount - begin), mSignal.data() + begin, mCurve.data() + begin);
    }
}

float AutoGateDSP::Apply(unsigned inCount, const float* const* inInput, float* const* outOutput,
                         ChannelMask inSkipped)
{
    mDelay.AppendCircular(inInput, inCount, 0);
    const int position = static_cast<int>(mDelay.GetTotal()) - static_cast<int>(inCount) - GetLatency();
    float highest = 0.0f;
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        float* const output = outOutput[channel];
        if (!inSkipped.GetBitModulo(channel)) {
            mDelay.ExtractCircular(outOutput, inCount, position, 0, static_cast<unsigned>(channel));
            brisken::utility::Mul_InPlace(inCount, mCurve.data(), output);
            highest = std::max(highest, brisken::utility::MaxAbs(output, inCount));
        } else if (output != inInput[channel]) {
            brisken::utility::Zero(inCount, output);
        }
    }
    return highest;
}

void AutoGateDSP::Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                          ChannelMask inSkipped)
{
    if (inCount == 0) {
        return;
    }
    Detect(inCount, inInput, inSkipped);
    ComputeCurve(inCount);
    if (mMeasuresGainReduction) {
        mLowestGain = std::min(mLowestGain, brisken::utility::Min(inCount, mCurve.data()));
    }
    const float highest = Apply(inCount, inInput, outOutput, inSkipped);
    if (highest > mLinearThreshold) {
        mState = AutoGateState::kOpen;
    } else {
        mState = mWasHeld ? AutoGateState::kHold : AutoGateState::kClosed;
    }
}

float AutoGateDSP::GetGainReduction()
{
    return std::exchange(mLowestGain, 1.0f);
}

} // namespace tessaro::dynamics
