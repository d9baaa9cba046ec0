#include <tessaro/buffering/AudioBufferShell.h>

#include <algorithm>

namespace tessaro {

AudioBufferShell::AudioBufferShell()
{
    mAlignment = kUnknownAlignment;
    mIsAligned = false;
}

AudioBufferShell::~AudioBufferShell() = default;

void AudioBufferShell::Init(std::size_t inChannels)
{
    ResetView(nullptr, 0);
    mTable.Allocate(inChannels * sizeof(float*));
    ResetView(mTable.BufferAs<float*>(), inChannels);
}

void AudioBufferShell::Assign(float* const* inChannels, unsigned inSize)
{
    std::copy_n(inChannels, mChannelCount, mChannels);
    mUseSize = inSize;
    mCapacity = inSize;
    ClearZeroFlags();
}

void AudioBufferShell::SetUseSize(unsigned inSize)
{
    mUseSize = std::min(inSize, mCapacity);
}

} // namespace tessaro
