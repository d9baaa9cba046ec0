#include <tessaro/buffering/AudioBuffer.h>

#include <algorithm>
#include <utility>

#include <brisken/Utility.h>

#include "buffering/AudioBufferLayout.h"

namespace tessaro {

namespace kernels = brisken::utility;

AudioBuffer::AudioBuffer() = default;

AudioBuffer::AudioBuffer(std::size_t inChannels, unsigned inSize)
{
    if (inSize != 0) {
        Init(inChannels, inSize);
    }
}

AudioBuffer::AudioBuffer(const AudioBuffer& inSource) : mAlignment(inSource.mAlignment)
{
    Init(inSource.mChannelCount, inSource.mUseSize);
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        kernels::Copy(mUseSize, inSource.mChannels[channel], mChannels[channel]);
    }
    mSilenceMask = inSource.mSilenceMask;
}

AudioBuffer::~AudioBuffer() = default;

void AudioBuffer::Init(std::size_t inChannels, unsigned inSize)
{
    // Empty until the memory is there: this is what a failed allocation leaves behind.
    const auto oldChannelCount = std::exchange(mChannelCount, 0);
    const auto oldCapacity = std::exchange(mCapacity, 0);
    mUseSize = 0;
    mChannels = nullptr;
    mSilenceMask.Clear();

    const BlockLayout layout(inChannels, mAlignment);
    const auto bytes = layout.GetBytes(inSize);
    if (bytes > mMemory.GetSize()) {
        mMemory.Allocate(bytes);
        mCapacity = inSize;
    } else if (inChannels != oldChannelCount && inChannels != 0) {
        mCapacity = layout.GetCapacity(mMemory.GetSize());
    } else {
        mCapacity = oldCapacity;
    }

    mChannels = mMemory.BufferAs<float*>();
    mChannelCount = inChannels;
    mUseSize = std::min(inSize, mCapacity);
    mIsAligned = mAlignment % 4 == 0;
    layout.FillTable(mChannels, mCapacity);
    mSilenceMask = ~SilenceMask::Below(inChannels);
}

void AudioBuffer::SetUseSize(unsigned inSize)
{
    if (mUseSize != 0 && inSize > mCapacity) {
        const AudioBuffer old(*this);
        Init(mChannelCount, inSize);
        if (old.IsZero()) {
            Zero();
        } else {
            CopyFrom(old, old.GetBufferSize());
        }
    }
    mUseSize = std::min(inSize, mCapacity);
    mIsAligned = mAlignment % 4 == 0;
}

bool AudioBuffer::IsZero() const
{
    return mSilenceMask.AreAllSet(SilenceMask::Below(mChannelCount));
}

bool AudioBuffer::IsChannelZero(std::size_t inChannel) const
{
    return mSilenceMask.GetBit(inChannel);
}

void AudioBuffer::MarkChannelZero(std::size_t inChannel)
{
    if (inChannel < mChannelCount) {
        mSilenceMask.SetBit(inChannel);
    }
}

void AudioBuffer::MarkChannelsZero(const SilenceMask& inMask)
{
    mSilenceMask |= inMask;
}

void AudioBuffer::ClearZeroFlags()
{
    mSilenceMask.Clear(SilenceMask::Below(mChannelCount));
}

void AudioBuffer::ClearChannelZero(std::size_t inChannel)
{
    if (inChannel < mChannelCount) {
        mSilenceMask.ClearBit(inChannel);
    }
}

void AudioBuffer::ClearChannelsZero(const SilenceMask& inMask)
{
    mSilenceMask.Clear(inMask & SilenceMask::Below(mChannelCount));
}

AudioBuffer::SilenceMask AudioBuffer::GetChannelZeroMask() const
{
    return mSilenceMask;
}

std::vector<float*> AudioBuffer::GetBuffersAsFloats(int inOffset) const
{
    std::vector<float*> rows(mChannels != nullptr ? mChannelCount : 0);
    for (std::size_t channel = 0; channel < rows.size(); ++channel) {
        rows[channel] = mChannels[channel] != nullptr ? mChannels[channel] + inOffset : nullptr;
    }
    return rows;
}

std::vector<void*> AudioBuffer::GetBuffersAsVoid(int inOffset) const
{
    const auto rows = GetBuffersAsFloats(inOffset);
    return {rows.begin(), rows.end()};
}

void AudioBuffer::Zero()
{
    if (!IsZero()) {
        ZeroChannelsFrom(0);
    }
    ForceSilenceMask(SilenceMask::All());
}

void AudioBuffer::ZeroBuffers()
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        kernels::Zero(mUseSize, mChannels[channel]);
    }
}

void AudioBuffer::ZeroChannel(std::size_t inChannel, unsigned inCount, bool inForce)
{
    if (inChannel >= mChannelCount || (IsChannelZero(inChannel) && !inForce)) {
        return;
    }
    kernels::Zero(std::min(mUseSize, inCount), mChannels[inChannel]);
    if (inCount >= mUseSize || inForce) {
        MarkChannelZero(inChannel);
    }
}

void AudioBuffer::SetChannelZero(std::size_t inChannel, bool inZero)
{
    inZero ? MarkChannelZero(inChannel) : ClearChannelZero(inChannel);
}

void AudioBuffer::CopyChannel(const AudioBuffer& inSource, std::size_t inSourceChannel,
                              std::size_t inDestChannel)
{
    if (inDestChannel >= mChannelCount) {
        return;
    }
    if (inSourceChannel >= inSource.mChannelCount || inSource.IsChannelZero(inSourceChannel)) {
        ZeroChannel(inDestChannel, mUseSize, false);
        return;
    }
    CopyRow(inSource, inSourceChannel, inDestChannel, mUseSize);
}

void AudioBuffer::CopyChannel(std::size_t inSourceChannel, std::size_t inDestChannel)
{
    CopyChannel(*this, inSourceChannel, inDestChannel);
}

void AudioBuffer::CopyFrom(const AudioBuffer& inSource)
{
    if (inSource.IsZero()) {
        Zero();
    } else {
        CopyFrom(inSource, inSource.mUseSize);
    }
}

void AudioBuffer::CopyFrom(const AudioBuffer& inSource, unsigned inCount)
{
    CopyCertainChannelsFrom(inSource, inCount, SilenceMask::All());
}

void AudioBuffer::CopyFrom(const AudioBuffer& inSource, std::size_t /*inUnusedOffset*/, unsigned inCount)
{
    CopyFrom(inSource, inCount);
}

void AudioBuffer::CopyCertainChannelsFrom(const AudioBuffer& inSource, unsigned inCount,
                                          const SilenceMask& inChannels)
{
    const auto common = std::min(mChannelCount, inSource.mChannelCount);
    for (std::size_t channel = 0; channel < common; ++channel) {
        if (inSource.IsChannelZero(channel) || !inChannels.GetBitModulo(channel)) {
            ZeroChannel(channel, mUseSize, false);
        } else {
            CopyRow(inSource, channel, channel, inCount);
        }
    }
    ZeroChannelsFrom(common);
}

void AudioBuffer::CopyFromScale(const AudioBuffer& inSource, float inScale)
{
    if (inScale == 1.0f) {
        CopyFrom(inSource);
        return;
    }
    if (inScale == 0.0f) {
        Zero();
        return;
    }
    const auto common = std::min(mChannelCount, inSource.mChannelCount);
    const auto count = std::min(mUseSize, inSource.mUseSize);
    for (std::size_t channel = 0; channel < common; ++channel) {
        if (inSource.IsChannelZero(channel)) {
            ZeroChannel(channel, mUseSize, false);
        } else {
            kernels::MulConstant(count, inSource.mChannels[channel], mChannels[channel], inScale);
            MarkWritten(channel, count);
        }
    }
    ZeroChannelsFrom(common);
}

void AudioBuffer::Mix(const AudioBuffer& inSource)
{
    if (inSource.IsZero()) {
        return;
    }
    if (IsZero()) {
        CopyFrom(inSource, mUseSize);
        return;
    }
    const auto common = std::min(mChannelCount, inSource.mChannelCount);
    const auto count = std::min(mUseSize, inSource.mUseSize);
    for (std::size_t channel = 0; channel < common; ++channel) {
        if (inSource.IsChannelZero(channel)) {
            continue;
        }
        if (IsChannelZero(channel)) {
            CopyChannel(inSource, channel, channel);
        } else {
            kernels::Add_InPlace(count, inSource.mChannels[channel], mChannels[channel]);
        }
    }
}

void AudioBuffer::Reverse()
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        if (!IsChannelZero(channel)) {
            kernels::Flip_InPlace(mUseSize, mChannels[channel]);
        }
    }
}

AudioBuffer& AudioBuffer::operator*=(float inScale)
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        if (!IsChannelZero(channel)) {
            kernels::MulConstant_InPlace(mUseSize, mChannels[channel], inScale);
        }
    }
    return *this;
}

void AudioBuffer::TakeAlignment(const AudioBuffer& inParent)
{
    mAlignment = inParent.mAlignment;
    mIsAligned = inParent.mIsAligned;
}

void AudioBuffer::ResetView(float** inTable, std::size_t inChannels)
{
    std::fill_n(inTable, inChannels, nullptr);
    mChannels = inTable;
    mChannelCount = inChannels;
    mUseSize = 0;
    mCapacity = 0;
    mSilenceMask = ~SilenceMask::Below(inChannels);
}

void AudioBuffer::CopyRow(const AudioBuffer& inSource, std::size_t inSourceChannel, std::size_t inDestChannel,
                          unsigned inCount)
{
    const float* source = inSource.mChannels[inSourceChannel];
    float* dest = mChannels[inDestChannel];
    if (source == dest) {
        ClearChannelZero(inDestChannel);
        return;
    }
    const auto count = std::min({inCount, mUseSize, inSource.mUseSize});
    kernels::Copy(count, source, dest);
    MarkWritten(inDestChannel, count);
}

void AudioBuffer::MarkWritten(std::size_t inChannel, unsigned inCount)
{
    if (inCount < mUseSize && IsChannelZero(inChannel)) {
        // What read as silence so far must not uncover old samples behind the new ones.
        kernels::Zero(mUseSize - inCount, mChannels[inChannel] + inCount);
    }
    ClearChannelZero(inChannel);
}

void AudioBuffer::ZeroChannelsFrom(std::size_t inChannel)
{
    for (auto channel = inChannel; channel < mChannelCount; ++channel) {
        ZeroChannel(channel, mUseSize, false);
    }
}

} // namespace tessaro
