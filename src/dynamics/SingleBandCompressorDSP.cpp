#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <brisken/Utility.h>

#include "dynamics/GainLoops.h"
#include "dynamics/GainTimes.h"
#include "dynamics/LevelFollowers.h"
#include "dynamics/RunningMean.h"

namespace tessaro::dynamics {

namespace {

constexpr double kDelaySeconds = 0.001;
constexpr double kMakeupSeconds = 2.0;
/// Part of the shorter of attack and release
constexpr float kSmoothingPart = 2.0f;
/// Gains below this count as -400 dB.
constexpr float kLowestGain = 1e-20f;
constexpr float kLowestGainInDecibels = -400.0f;
/// Samples that go through all steps at once
constexpr unsigned kRun = 256;

} // namespace

SingleBandCompressorDSP::SingleBandCompressorDSP(float inSampleRate, ChannelLayout inLayout)
    : mSampleRate(inSampleRate), mLayout(std::move(inLayout)), mMakeup(std::make_unique<RunningMean>())
{
    Rebuild();
}

SingleBandCompressorDSP::~SingleBandCompressorDSP() = default;

void SingleBandCompressorDSP::Rebuild()
{
    mLevels.assign(mLayout.size(), 0.0f);
    mDelays.assign(mLayout.size(), DelayRow(static_cast<std::size_t>(GetLatency()) + kRun));
    mMakeup->SetLength(static_cast<std::size_t>(std::max(mSampleRate * kMakeupSeconds, 0.0)));
    mFactorDetection = PeakDecay(mSampleRate);
    UpdateTimes();
    Reset();
}

void SingleBandCompressorDSP::UpdateTimes()
{
    mAttackKept = OnePoleKept(mAttack, mSampleRate);
    mReleaseKept = OnePoleKept(mRelease, mSampleRate);
    mSmoothingKept = OnePoleKept(std::min(mAttack, mRelease) / kSmoothingPart, mSampleRate);
}

void SingleBandCompressorDSP::Reset()
{
    mPeak = 0.0f;
    mGain = 1.0f;
    mSmoothedGain = 1.0f;
    mLowestGain = 1.0f;
    std::fill(mLevels.begin(), mLevels.end(), 0.0f);
    for (auto& delay : mDelays) {
        std::fill(delay.begin(), delay.end(), 0.0f);
    }
    mMakeup->Clear();
}

int SingleBandCompressorDSP::GetLatency() const
{
    return std::max(static_cast<int>(static_cast<double>(mSampleRate) * kDelaySeconds - 1.0), 0);
}

void SingleBandCompressorDSP::SetSampleRate(float inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        mSampleRate = inSampleRate;
        Rebuild();
    }
}

void SingleBandCompressorDSP::SetAudioChannelLayout(const ChannelLayout& inLayout)
{
    if (inLayout != mLayout) {
        mLayout = inLayout;
        Rebuild();
    }
}

void SingleBandCompressorDSP::SetThreshold(float inThreshold)
{
    mThreshold = inThreshold;
    mLinearThreshold = LinearFromDecibels(inThreshold);
}

void SingleBandCompressorDSP::SetRatio(float inRatio)
{
    mRatio = inRatio;
    mExponent = CompressionExponent(inRatio);
}

void SingleBandCompressorDSP::SetAttack(float inAttack)
{
    mAttack = inAttack;
    UpdateTimes();
}

void SingleBandCompressorDSP::SetRelease(float inRelease)
{
    mRelease = inRelease;
    UpdateTimes();
}

void SingleBandCompressorDSP::SetOutputGain(float inGain)
{
    mOutputGain = inGain;
    mLinearOutputGain = LinearFromDecibels(inGain);
}

void SingleBandCompressorDSP::ComputeCurve(unsigned inCount, float* ioPeaks, float* outCurve)
{
    FollowPeaks(inCount, ioPeaks, mFactorDetection, mPeak, ioPeaks);
    const float highest = brisken::utility::Max(inCount, ioPeaks);
    float gains[kRun];
    CurveAbove(inCount, ioPeaks, highest, mLinearThreshold, mExponent, gains);
    const StageSmoothers smoothers = {OnePole(mAttackKept), OnePole(mReleaseKept)};
    const OnePole smoother(mSmoothingKept);
    GainState state = {mGain, mSmoothedGain};
    FollowTargets(inCount, gains, smoothers, &smoother, state, gains);
    mGain = state.mGain;
    mSmoothedGain = state.mSmoothed;
    mLowestGain = std::min(mLowestGain, brisken::utility::Min(inCount, gains));
    brisken::utility::MulConstant(inCount, gains, outCurve, mLinearOutputGain);
    if (mAutoMakeupGain) {
        ApplyMakeup(inCount, gains, outCurve);
    }
}

void SingleBandCompressorDSP::ApplyMakeup(unsigned inCount, const float* inGains, float* ioCurve)
{
    float makeup[kRun];
    brisken::utility::Copy(inCount, inGains, makeup);
    brisken::utility::Threshold_LT_InPlace(inCount, makeup, kLowestGain);
    brisken::utility::Ln(inCount, makeup, makeup);
    brisken::utility::MulConstant_InPlace(inCount, makeup, static_cast<float>(-kDecibelsFromNatural));
    for (unsigned i = 0; i < inCount; ++i) {
        makeup[i] = inGains[i] < kLowestGain ? -kLowestGainInDecibels : makeup[i];
    }
    mMakeup->AddAndAverage(inCount, makeup, makeup);
    brisken::utility::MulConstant_InPlace(inCount, makeup, static_cast<float>(kNaturalFromDecibels));
    brisken::utility::Exp(inCount, makeup, makeup);
    brisken::utility::Mul_InPlace(inCount, makeup, ioCurve);
}

void SingleBandCompressorDSP::ProcessRun(unsigned inOffset, unsigned inCount, const float* const* inInput,
                                         float* const* outOutput, ChannelMask inSkipped)
{
    float peaks[kRun] = {};
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            const float peak = FoldMagnitudes(inCount, inInput[channel] + inOffset, peaks);
            mLevels[channel] = std::max(mLevels[channel], peak);
        }
    }
    float curve[kRun];
    ComputeCurve(inCount, peaks, curve);

    const auto delay = static_cast<unsigned>(GetLatency());
    for (std::size_t channel = 0; channel < mLayout.size(); ++channel) {
        float* const output = outOutput[channel] + inOffset;
        if (inSkipped.GetBitModulo(channel)) {
            brisken::utility::Zero(inCount, output);
        } else {
            float* const row = mDelays[channel].data();
            brisken::utility::Copy(inCount, inInput[channel] + inOffset, row + delay);
            brisken::utility::Mul(inCount, row, curve, output);
            brisken::utility::Move(delay, row + inCount, row);
        }
    }
}

void SingleBandCompressorDSP::Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                                      ChannelMask inSkipped)
{
    for (unsigned begin = 0; begin < inCount; begin += kRun) {
        ProcessRun(begin, std::min(kRun, inCount - begin), inInput, outOutput, inSkipped);
    }
}

float SingleBandCompressorDSP::GetGainReduction()
{
    return std::exchange(mLowestGain, 1.0f);
}

void SingleBandCompressorDSP::GetLevels(std::vector<float>& outLevels)
{
    if (outLevels.size() == mLevels.size()) {
        std::copy(mLevels.begin(), mLevels.end(), outLevels.begin());
        std::fill(mLevels.begin(), mLevels.end(), 0.0f);
    }
}

} // namespace tessaro::dynamics
