#include <tessaro/dynamics/TubeLimiter.h>

#include <algorithm>

#include <brisken/utility/Arithmetic.h>
#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include "dynamics/GainTimes.h"
#include "utility/LookAheadStreamer.h"

namespace tessaro {

namespace {

constexpr float kBehaviorPerCharacter = 0.15f;

} // namespace

TubeLimiter::TubeLimiter(int inMaxBlockSize, float inSampleRate, int inNumChannels)
    : mMaxBlockSize(inMaxBlockSize),
      mSampleRate(inSampleRate),
      mNumChannels(inNumChannels),
      mLimiter(new SimpleIRCLimiter),
      mStreamer(new LookAheadStreamer(*mLimiter))
{
    UpdateAudioConfig();
    SetPreventIntersampleClips(mPreventsIntersampleClips);
    SetThreshold(mThreshold);
    SetCharacter(mCharacter);
}

TubeLimiter::~TubeLimiter() = default;

void TubeLimiter::UpdateAudioConfig()
{
    mStreamer->SetMode(mNumChannels, static_cast<int>(mSampleRate), mMaxBlockSize);
    mRows.resize(static_cast<std::size_t>(std::max(mNumChannels, 0)));
    mSpare.resize(static_cast<std::size_t>(std::max(mMaxBlockSize, 0)));
}

void TubeLimiter::Process(unsigned inCount, const float* const* inInput, float* const* outOutput,
                          ChannelMask inSkipped)
{
    if (inCount > mSpare.size()) {
        mSpare.resize(inCount);
    }
    for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
        mRows[channel] = inSkipped.GetBitModulo(channel) ? mSpare.data() : outOutput[channel];
    }
    mStreamer->Process(inInput, static_cast<int>(inCount), mRows.data(), inSkipped);
    // From the input rows on purpose: in place they hold what was limited by now, and callers that hand over
    // separate rows rely on their input lifted.
    for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
        if (!inSkipped.GetBitModulo(channel)) {
            brisken::utility::MulConstant(inCount, inInput[channel], outOutput[channel], mMakeup);
        }
    }
}

void TubeLimiter::Reset()
{
    mStreamer->Reset();
}

void TubeLimiter::SetChannelCount(int inNumChannels)
{
    if (inNumChannels != mNumChannels) {
        mNumChannels = inNumChannels;
        UpdateAudioConfig();
    }
}

void TubeLimiter::SetMaxProcessingBlockSize(int inMaxBlockSize)
{
    if (inMaxBlockSize != mMaxBlockSize) {
        mMaxBlockSize = inMaxBlockSize;
        UpdateAudioConfig();
    }
}

void TubeLimiter::SetSampleRate(float inSampleRate)
{
    if (inSampleRate != mSampleRate) {
        mSampleRate = inSampleRate;
        UpdateAudioConfig();
    }
}

void TubeLimiter::SetThreshold(float inDecibels)
{
    mThreshold = inDecibels;
    mLimiter->SetThreshold(inDecibels);
    UpdateMakeupGain();
}

void TubeLimiter::SetMargin(float inDecibels)
{
    mMargin = inDecibels;
    UpdateMakeupGain();
}

void TubeLimiter::UpdateMakeupGain()
{
    mMakeup = dynamics::LinearFromDecibels(mMargin - mThreshold);
}

void TubeLimiter::SetCharacter(float inCharacter)
{
    mCharacter = inCharacter;
    mLimiter->SetBehavior(inCharacter * kBehaviorPerCharacter);
}

void TubeLimiter::SetPreventIntersampleClips(bool inPrevent)
{
    mPreventsIntersampleClips = inPrevent;
    mLimiter->EnableAnalogDetection(inPrevent);
}

int TubeLimiter::GetSystemDelay() const
{
    return mStreamer->GetSystemDelay();
}

float TubeLimiter::GetReduction() const
{
    return mLimiter->GetReduction();
}

} // namespace tessaro
