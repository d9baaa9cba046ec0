#include <tessaro/dynamics/MaximizerDSP.h>

#include <algorithm>
#include <utility>

#include <tessaro/dynamics/IRCLimiter.h>

#include "dynamics/GainTimes.h"
#include "dynamics/MaximizerHistogram.h"
#include "dynamics/MaximizerKernels.h"
#include "dynamics/MaximizerRuns.h"

namespace tessaro {

namespace {

using namespace dynamics::maximizer;

/// Time constant of the soft mode's last smoother
constexpr float kSmootherSeconds = 0.001f;
/// What the two rings delay by
constexpr unsigned kRingsDelay = kInputRing - 1 + kOutputRing - 1;

static_assert(MaximizerDSP::kHistogramSize == dynamics::MaximizerHistogram::kSize);

} // namespace

MaximizerDSP::MaximizerDSP(int inMaxBlockSize, float inSampleRate, int inNumChannels, bool inWithHistogram)
    : mMaxBlockSize(inMaxBlockSize),
      mSampleRate(inSampleRate),
      mNumChannels(inNumChannels),
      mHoldLine(std::make_unique<dynamics::HoldLine>()),
      mLimiter(new IRCLimiter)
{
    if (inWithHistogram) {
        mHistogram = std::make_unique<dynamics::MaximizerHistogram>();
    }
    SetAttack(mAttack);
    SetRelease(mRelease);
    SetThreshold(mThreshold);
    UpdateAudioConfig();
}

MaximizerDSP::~MaximizerDSP() = default;

void MaximizerDSP::UpdateAudioConfig()
{
    mPeakDecay = dynamics::PeakDecay(mSampleRate);
    mSmootherStep = AudioProcessor::TimeToIirA(kSmootherSeconds, mSampleRate);
    const auto channels = static_cast<std::size_t>(std::max(mNumChannels, 0));
    mInputDelay.assign(channels * kInputRing, 0.0f);
    mOutputDelay.assign(channels * kOutputRing, 0.0f);
    mScratch.assign(channels * kLongestRun, 0.0f);
    mScratchRows.resize(channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        mScratchRows[channel] = mScratch.data() + channel * kLongestRun;
    }
    mPeaks.assign(kLongestRun, 0.0f);
    mGains.assign(kLongestRun, 0.0f);
    mLimiter->SetMode(mNumChannels, static_cast<int>(mSampleRate), mMaxBlockSize);
    Reset();
    RecomputeSystemDelay();
}

void MaximizerDSP::Reset()
{
    mPeak = 0.0f;
    mGain = 1.0f;
    mSmoothedGain = 1.0f;
    mLeastGain = 1.0f;
    mHasNewGainReduction = true;
    ResetHistogram();
    std::fill(mInputDelay.begin(), mInputDelay.end(), 0.0f);
    std::fill(mOutputDelay.begin(), mOutputDelay.end(), 0.0f);
    mHoldLine->Reset();
    mInputPosition = 0;
    mOutputPosition = 0;
    mLimiter->Reset();
}

void MaximizerDSP::RecomputeSystemDelay()
{
    mSystemDelay = mMode < kDigital ? kRingsDelay : static_cast<unsigned>(mLimiter->GetLatency());
}

void MaximizerDSP::SetChannelCount(int inNumChannels)
{
    if (inNumChannels != mNumChannels) {
        mNumChannels = inNumChannels;
        UpdateAudioConfig();
    }
}

void MaximizerDSP::SetMaxProcessingBlockSize(int inMaxBlockSize)
{
    if (inMaxBlockSize != mMaxBlockSize) {
        mMaxBlockSize = inMaxBlockSize;
        UpdateAudioConfig();
    }
}

void MaximizerDSP::SetSampleRate(float inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        mSampleRate = inSampleRate;
        UpdateAudioConfig();
    }
}

void MaximizerDSP::SetBypass(bool inBypass)
{
    mIsBypassed = inBypass;
    RecomputeSystemDelay();
}

void MaximizerDSP::SetMode(Mode inMode)
{
    mMode = inMode;
    const bool isDouble = mLimiter->IsDoubleEnvelopeEnabled();
    if (mMode == kDigital && isDouble) {
        mLimiter->EnableDoubleEnvelope(false);
    } else if (mMode == kProgram && !isDouble) {
        mLimiter->EnableDoubleEnvelope(true);
    }
    Reset();
    RecomputeSystemDelay();
}

void MaximizerDSP::SetPreventIntersampleClips(bool inPrevent)
{
    mLimiter->EnableAnalogDetection(inPrevent);
    RecomputeSystemDelay();
}

void MaximizerDSP::SetThreshold(float inDecibels)
{
    mThreshold = inDecibels;
    mLinearThreshold = dynamics::LinearFromDecibels(inDecibels);
    UpdateMakeupGain();
    mLimiter->SetThreshold(inDecibels);
}

void MaximizerDSP::SetMargin(float inDecibels)
{
    mMargin = inDecibels;
    UpdateMakeupGain();
}

void MaximizerDSP::UpdateMakeupGain()
{
    mMakeup = dynamics::LinearFromDecibels(mMargin - mThreshold);
}

void MaximizerDSP::SetAttack(float inMillis)
{
    mAttack = inMillis;
    UpdateAttackFactors(inMillis, mAttackKept, mAttackStep);
}

void MaximizerDSP::SetRelease(float inMillis)
{
    mRelease = inMillis;
    UpdateReleaseFactors(inMillis, mReleaseKept, mReleaseStep);
}

void MaximizerDSP::UpdateAttackFactors(float inMillis, float& outKept, float& outStep) const
{
    outKept = dynamics::OnePoleKept(inMillis, mSampleRate);
    outStep = 1.0f - outKept;
}

void MaximizerDSP::UpdateReleaseFactors(float inMillis, float& outKept, float& outStep) const
{
    UpdateAttackFactors(inMillis, outKept, outStep);
}

bool MaximizerDSP::GetGainReduction(float& outGain)
{
    outGain = std::exchange(mLeastGain, 1.0f);
    return std::exchange(mHasNewGainReduction, false);
}

const unsigned* MaximizerDSP::GetHistogram() const
{
    return mHistogram ? mHistogram->GetCounts() : nullptr;
}

bool MaximizerDSP::IsHistogramNewData()
{
    return mHistogram && mHistogram->TakeNewData();
}

void MaximizerDSP::ResetHistogram()
{
    if (mHistogram) {
        mHistogram->Reset();
    }
}

} // namespace tessaro
