#include "EffectChain.h"

#include <algorithm>
#include <stdexcept>

namespace host {

namespace {

/// A flag of a processing call speaks for every 64th channel, of which a buffer flags the first only.
SilentChannels GetSilentChannels(const tessaro::AudioBuffer& inBuffer)
{
    auto silent = inBuffer.GetChannelZeroMask();
    if (inBuffer.GetChannelCount() > SilentChannels::kBitCount) {
        silent.Clear(SilentChannels::Below(inBuffer.GetChannelCount() - SilentChannels::kBitCount));
    }
    return silent;
}

void MarkSilentChannels(SilentChannels inSilent, tessaro::AudioBuffer& ioBuffer)
{
    ioBuffer.ClearZeroFlags();
    ioBuffer.MarkChannelsZero(inSilent);
    for (std::size_t channel = SilentChannels::kBitCount; channel < ioBuffer.GetChannelCount(); ++channel) {
        if (inSilent.GetBitModulo(channel)) {
            ioBuffer.ZeroChannel(channel, ioBuffer.GetBufferSize(), true);
        }
    }
}

} // namespace

EffectChain::EffectChain(const ChainDescription& inDescription, const StreamFormat& inFormat)
    : mScratch(static_cast<std::size_t>(inFormat.mChannelCount), static_cast<unsigned>(inFormat.mMaxBlock))
{
    for (const auto& setting : inDescription.mEffects) {
        setting.CheckRate(inDescription.mSource, inFormat.mSampleRate);
        mEffects.push_back(setting.GetEntry().mCreate());
        mEffects.back()->SetParameters(setting.GetValues());
        try {
            mEffects.back()->Configure(inFormat);
        } catch (const std::invalid_argument& error) {
            inDescription.mSource.Fail(setting.GetEntry().mName + ": " + error.what());
        }
    }
}

void EffectChain::Process(tessaro::AudioBuffer& ioBlock)
{
    mScratch.SetUseSize(ioBlock.GetBufferSize());
    tessaro::AudioBuffer* source = &ioBlock;
    tessaro::AudioBuffer* destination = &mScratch;
    for (const auto& effect : mEffects) {
        const auto silent = effect->Process(source->GetFloatBuffers(), destination->GetFloatBuffers(),
                                            source->GetBufferSize(), GetSilentChannels(*source));
        MarkSilentChannels(silent, *destination);
        std::swap(source, destination);
    }
    if (source != &ioBlock) {
        ioBlock.CopyFrom(*source);
    }
}

void EffectChain::Reset()
{
    for (const auto& effect : mEffects) {
        effect->Reset();
    }
}

std::int64_t EffectChain::GetLatency() const
{
    std::int64_t latency = 0;
    for (const auto& effect : mEffects) {
        latency += effect->GetLatency();
    }
    return latency;
}

std::optional<EffectResponse> EffectChain::GetResponse(double inFrequency) const
{
    EffectResponse product{1.0, 0.0};
    for (const auto& effect : mEffects) {
        const auto response = effect->GetResponse(inFrequency);
        if (!response) {
            return std::nullopt;
        }
        product.mMagnitude *= response->mMagnitude;
        if (product.mPhase && response->mPhase) {
            *product.mPhase += *response->mPhase;
        } else {
            product.mPhase.reset();
        }
    }
    return product;
}

} // namespace host
