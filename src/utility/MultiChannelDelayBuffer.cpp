#include <tessaro/utility/MultiChannelDelayBuffer.h>

#include <algorithm>

namespace tessaro {

MultiChannelDelayBuffer::~MultiChannelDelayBuffer() = default;

void MultiChannelDelayBuffer::Init(int inChannels, int inSize)
{
    mChannelCount = 0;
    mChannels.reset();
    const auto count = static_cast<std::size_t>(std::max(inChannels, 0));
    auto channels = std::make_unique<DelayBuffer[]>(count);
    for (std::size_t channel = 0; channel < count; ++channel) {
        channels[channel].Init(inSize);
    }
    mChannels = std::move(channels);
    mChannelCount = count;
}

void MultiChannelDelayBuffer::Reset()
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        mChannels[channel].Reset();
    }
}

void MultiChannelDelayBuffer::Write(int inChannel, const float* inSource, int inCount)
{
    if (HasChannel(inChannel)) {
        mChannels[static_cast<std::size_t>(inChannel)].Write(inSource, inCount);
    }
}

void MultiChannelDelayBuffer::Write(const float* const* inSource, int inCount)
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        mChannels[channel].Write(inSource[channel], inCount);
    }
}

int MultiChannelDelayBuffer::Read(int inChannel, float* outDest, int inCount, int inSkip) const
{
    if (!HasChannel(inChannel) || outDest == nullptr) {
        return 0;
    }
    return mChannels[static_cast<std::size_t>(inChannel)].Read(outDest, inCount, inSkip);
}

int MultiChannelDelayBuffer::Read(float* const* outDest, int inCount, int inSkip) const
{
    int read = 0;
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        read = mChannels[channel].Read(outDest[channel], inCount, inSkip);
    }
    return read;
}

int MultiChannelDelayBuffer::GetValidDataSize() const
{
    return mChannelCount != 0 ? mChannels[0].GetValidDataSize() : 0;
}

std::vector<DelayBuffer::WorkChunks> MultiChannelDelayBuffer::GetWorkChunks(int inSkip) const
{
    std::vector<DelayBuffer::WorkChunks> chunks;
    chunks.reserve(mChannelCount);
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        chunks.push_back(mChannels[channel].GetWorkChunks(inSkip));
    }
    return chunks;
}

} // namespace tessaro
