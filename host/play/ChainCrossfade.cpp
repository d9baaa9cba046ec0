#include "play/ChainCrossfade.h"

#include <algorithm>
#include <cmath>

namespace host {

ChainCrossfade::ChainCrossfade(std::unique_ptr<EffectChain> inChain, const StreamFormat& inFormat)
    : mCurrent(std::move(inChain)),
      mNextBlock(static_cast<std::size_t>(inFormat.mChannelCount), static_cast<unsigned>(inFormat.mMaxBlock)),
      mWeights(static_cast<std::size_t>(std::max(1.0, std::round(kFadeSeconds * inFormat.mSampleRate)))),
      mWarmUp(std::llround(kWarmUpSeconds * inFormat.mSampleRate))
{
    const auto count = static_cast<double>(mWeights.size());
    for (std::size_t i = 0; i < mWeights.size(); ++i) {
        mWeights[i] = static_cast<float>(0.5 - 0.5 * std::cos(M_PI * (static_cast<double>(i) + 0.5) / count));
    }
}

void ChainCrossfade::Begin(std::unique_ptr<EffectChain> inNext)
{
    mNext = std::move(inNext);
    mToWait = mWarmUp + mNext->GetLatency();
    mFaded = 0;
}

void ChainCrossfade::Process(tessaro::AudioBuffer& ioBlock)
{
    if (mNext == nullptr) {
        mCurrent->Process(ioBlock);
        return;
    }
    mNextBlock.SetUseSize(ioBlock.GetBufferSize());
    mNextBlock.CopyFrom(ioBlock);
    mCurrent->Process(ioBlock);
    mNext->Process(mNextBlock);
    if (mToWait >= ioBlock.GetBufferSize()) {
        mToWait -= ioBlock.GetBufferSize();
        return;
    }
    Fade(ioBlock);
    mToWait = 0;
    if (mFaded == mWeights.size()) {
        mOld = std::move(mCurrent); // empty until now
        mCurrent = std::move(mNext);
    }
}

void ChainCrossfade::Fade(tessaro::AudioBuffer& ioBlock)
{
    const auto first = static_cast<std::size_t>(mToWait);
    const std::size_t count = ioBlock.GetBufferSize();
    const std::size_t faded = std::min(mWeights.size() - mFaded, count - first);
    for (std::size_t channel = 0; channel < ioBlock.GetChannelCount(); ++channel) {
        const bool isCurrentSilent = ioBlock.IsChannelZero(channel);
        const bool isNextSilent = mNextBlock.IsChannelZero(channel);
        if (isCurrentSilent && isNextSilent) {
            continue;
        }
        float* const row = ioBlock[channel];
        const float* const next = mNextBlock[channel];
        if (isCurrentSilent) {
            std::fill_n(row, count, 0.0f);
        }
        for (std::size_t i = 0; i < faded; ++i) {
            const float to = isNextSilent ? 0.0f : next[first + i];
            row[first + i] += mWeights[mFaded + i] * (to - row[first + i]);
        }
        for (std::size_t i = first + faded; i < count; ++i) {
            row[i] = isNextSilent ? 0.0f : next[i];
        }
        ioBlock.ClearChannelZero(channel);
    }
    mFaded += faded;
}

} // namespace host
