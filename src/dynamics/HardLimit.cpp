#include <tessaro/dynamics/HardLimit.h>

#include <algorithm>
#include <cmath>

#include "dynamics/HardLimitChannel.h"
#include "dynamics/HardLimitParameters.h"

namespace tessaro {

using namespace hardlimit;

namespace {

/// The delay is 20 ms.
constexpr int kDelaysPerSecond = 50;
constexpr unsigned kSmallestDelay = 2;
/// What is left of the envelope after the release time
constexpr double kReleasedTo = 0.15;

} // namespace

HardLimit::HardLimit(bool inWithOversampling) : mWithOversampling(inWithOversampling)
{
    SetDefaultParameters();
}

HardLimit::~HardLimit() = default;

void HardLimit::SetChannels(std::size_t inChannels)
{
    mChannelCount = inChannels;
    Deinitialize();
}

void HardLimit::SetSampleRate(int inSampleRate)
{
    mSampleRate = inSampleRate;
    Deinitialize();
}

void HardLimit::Deinitialize()
{
    mNeedsInitialize = true;
}

void HardLimit::Resume()
{
    mNeedsInitialize = true;
    CatchUp();
    mCurrentGain = mTargetGain;
}

unsigned HardLimit::GetDelaySize() const
{
    return std::max(static_cast<unsigned>(std::max(mSampleRate, 0) / kDelaysPerSecond), kSmallestDelay);
}

unsigned HardLimit::GetCompensation() const
{
    const auto factor = GetTruePeakOversampleFactor(static_cast<float>(mSampleRate));
    const auto latency = static_cast<unsigned>(TruePeakResampler::GetLatency());
    return (latency + factor - 1) / factor + 1;
}

int HardLimit::GetLatency() const
{
    return static_cast<int>(GetDelaySize() + (IsOn(kTruePeak) ? GetCompensation() : 0));
}

void HardLimit::CatchUp()
{
    if (mNeedsInitialize) {
        Initialize();
    }
    if (mParametersChanged) {
        ApplyParameters();
    }
}

double HardLimit::GetInitialEnvelope() const
{
    return IsOn(kTowardsCeiling) ? GetLinear(kCeiling) : 1.0;
}

void HardLimit::Initialize()
{
    mDelaySize = GetDelaySize();
    mMagnitudes.Init(mChannelCount, mDelaySize);
    mSignals.Init(mChannelCount, mDelaySize);
    mMagnitudes.ZeroBuffers();
    mSignals.ZeroBuffers();
    mPiece.Init(mChannelCount, kPiece);
    mArriving.resize(kPiece);
    mInputGains.resize(kPiece);

    const auto rate = static_cast<float>(mSampleRate);
    const unsigned factor = GetTruePeakOversampleFactor(rate);
    mChannels.resize(mChannelCount);
    for (auto& channel : mChannels) {
        channel = std::make_unique<Channel>();
        channel->mEnvelope.Init(mDelaySize);
        channel->mEnvelope.SetHeight(GetInitialEnvelope());
        channel->mGains.resize(kPiece);
        if (mWithOversampling) {
            channel->mResampler.Init(kChunk, rate);
        }
    }
    if (mWithOversampling) {
        mOversampled.Init(mChannelCount, kChunk * factor);
        mAlignment.Init(static_cast<int>(mChannelCount), static_cast<int>(GetCompensation()));
    }

    mWritePosition = 0;
    mLookAhead = 0;
    mIsTruePeak = false;
    mCurrentGain = 1.0;
    mLeastGain = 1.0;
    mIsLimiting = false;
    mLastMask = ChannelMask();
    mNeedsInitialize = false;
    mParametersChanged = true;
}

void HardLimit::ApplyParameters()
{
    const double rate = mSampleRate;
    mTargetGain = GetLinear(kInputGain);
    mCeiling = GetLinear(kCeiling);
    const double releaseSamples = rate * static_cast<double>(mValues[kRelease]) / 1000.0;
    const HardLimitEnvelope::Release release{IsOn(kTowardsCeiling), mCeiling,
                                             std::exp(std::log(kReleasedTo) / releaseSamples)};
    const auto wanted = static_cast<unsigned>(static_cast<double>(mValues[kLookAhead]) / 1000.0 * rate + 0.5);
    const unsigned lookAhead = std::clamp(wanted, 1u, mDelaySize - 1);
    const bool isLookAheadNew = lookAhead != mLookAhead;
    mLookAhead = lookAhead;

    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        auto& envelope = mChannels[i]->mEnvelope;
        envelope.SetRelease(release);
        if (isLookAheadNew) {
            envelope.SetLookAhead(lookAhead, {mMagnitudes[i], mDelaySize, mWritePosition});
        }
        if (IsOn(kTruePeak) && !mIsTruePeak) {
            StartTruePeak(i);
        }
    }
    mIsTruePeak = IsOn(kTruePeak);
    mParametersChanged = false;
}

/// The detector begins from silence, and so does the signal that waits for it.
void HardLimit::StartTruePeak(std::size_t inChannel)
{
    auto& channel = *mChannels[inChannel];
    channel.mResampler.Reset();
    channel.mLastTruePeak = 0.0f;
    for (unsigned i = GetCompensation(); i != 0; --i) {
        constexpr float kSilence = 0.0f;
        mAlignment.Write(static_cast<int>(inChannel), &kSilence, 1);
    }
}

/// Clears the rings of channels that were skipped and come back: what they hold is older than their place.
void HardLimit::FollowMask(ChannelMask inMask)
{
    for (std::size_t i = 0; i < mChannels.size(); ++i) {
        if (mLastMask.GetBitModulo(i) && !inMask.GetBitModulo(i)) {
            std::fill_n(mMagnitudes[i], mDelaySize, 0.0f);
            std::fill_n(mSignals[i], mDelaySize, 0.0f);
            mChannels[i]->mEnvelope.SetLookAhead(mLookAhead, {mMagnitudes[i], mDelaySize, mWritePosition});
            if (mIsTruePeak) {
                StartTruePeak(i);
            }
        }
    }
    mLastMask = inMask;
}

} // namespace tessaro
