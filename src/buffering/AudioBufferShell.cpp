#include <tessaro/buffering/AudioBufferShell.h>

#include <algorithm>

#include "buffering/AudioBufferLayout.h"

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
    mTable.Allocate(BlockLayout::GetTableBytes(inChannels));
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
    mIsAligned = mAlignment > 0 && mAlignment % 4 == 0;
}

} // namespace tessaro
