#include <tessaro/buffering/AudioSubBuffer.h>

#include <algorithm>
#include <cstdint>

#include <brisken/Utility.h>

#include "buffering/AudioBufferLayout.h"

namespace tessaro {

namespace {

constexpr int kVectorAlignment = 4; // floats: 16 bytes
constexpr int kNoAlignment = 1;

bool IsVectorAligned(const float* inRow)
{
    return reinterpret_cast<std::uintptr_t>(inRow) % (kVectorAlignment * sizeof(float)) == 0;
}

/// Channels that have a flag.
std::size_t CountFlagged(std::size_t inChannels)
{
    return std::min(inChannels, AudioBuffer::SilenceMask::kBitCount);
}

} // namespace

AudioSubBuffer::AudioSubBuffer() = default;
AudioSubBuffer::~AudioSubBuffer() = default;

void AudioSubBuffer::Init(std::size_t inChannels)
{
    mParent = nullptr;
    ResetView(nullptr, 0);
    mTable.Allocate(BlockLayout::GetTableBytes(inChannels));
    ResetView(mTable.BufferAs<float*>(), inChannels);
}

void AudioSubBuffer::Assign(AudioBuffer& inParent, unsigned inOffset)
{
    if (mChannelCount > inParent.GetChannelCount() || mChannels == nullptr) {
        return;
    }
    mParent = &inParent;
    if (inOffset >= inParent.GetCapacity()) {
        mUseSize = 0;
        mCapacity = 0;
        return;
    }
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        mChannels[channel] = inParent[channel] + inOffset;
    }
    mCapacity = inParent.GetCapacity() - inOffset;
    mUseSize = inParent.GetBufferSize() - std::min(inOffset, inParent.GetBufferSize());

    // Here sizes in fours count as aligned, after a change of size or place only those in sixteens do
    // (`UpdateAlignment`). The two tests are meant to differ.
    TakeAlignment(inParent);
    if (mAlignment <= 0) {
        mAlignment = kUnknownAlignment;
        mIsAligned = false;
    } else if (IsVectorAligned(mChannels[0])) {
        mAlignment = kVectorAlignment;
        mIsAligned = mUseSize % 4 == 0;
    } else {
        mAlignment = kNoAlignment;
        mIsAligned = false;
    }
    MarkChannelsZero(inParent.GetChannelZeroMask());
}

void AudioSubBuffer::ShiftOffset(unsigned inSamples)
{
    if (inSamples >= mCapacity) {
        mUseSize = 0;
        mCapacity = 0;
        return;
    }
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        mChannels[channel] += inSamples;
    }
    mCapacity -= inSamples;
    mUseSize -= std::min(inSamples, mUseSize);
    UpdateAlignment();
    if (mParent != nullptr) {
        MarkChannelsZero(mParent->GetChannelZeroMask());
    }
}

void AudioSubBuffer::SetUseSize(unsigned inSize)
{
    mUseSize = std::min(inSize, mCapacity);
    UpdateAlignment();
}

void AudioSubBuffer::UpdateAlignment()
{
    if (mAlignment > 0 && mChannelCount > 0) {
        mIsAligned = IsVectorAligned(mChannels[0]) && mUseSize % 16 == 0;
        mAlignment = mIsAligned ? kVectorAlignment : kNoAlignment;
    }
}

void AudioSubBuffer::MarkChannelZero(std::size_t inChannel)
{
    if (mParent != nullptr && mUseSize == mParent->GetBufferSize() && inChannel < mChannelCount) {
        mParent->MarkChannelZero(inChannel);
    }
    AudioBuffer::MarkChannelZero(inChannel);
}

void AudioSubBuffer::ClearChannelZero(std::size_t inChannel)
{
    if (mParent != nullptr && inChannel < mChannelCount && mParent->IsChannelZero(inChannel)) {
        ZeroParentAround(inChannel);
        mParent->ClearChannelZero(inChannel);
    }
    AudioBuffer::ClearChannelZero(inChannel);
}

/// The view's range is about to hold data, so the parent's flag must go; the rest of the parent's channel has
/// been silence and stays so, in zeros.
void AudioSubBuffer::ZeroParentAround(std::size_t inChannel)
{
    float* row = (*mParent)[inChannel];
    const std::ptrdiff_t length = mParent->GetBufferSize();
    std::ptrdiff_t begin = length;
    std::ptrdiff_t end = length;
    if (mUseSize != 0) {
        begin = std::clamp<std::ptrdiff_t>(mChannels[inChannel] - row, 0, length);
        end = std::clamp<std::ptrdiff_t>(mChannels[inChannel] - row + mUseSize, 0, length);
    }
    brisken::utility::Zero(static_cast<unsigned>(begin), row);
    brisken::utility::Zero(static_cast<unsigned>(length - end), row + end);
}

void AudioSubBuffer::ClearZeroFlags()
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        ClearChannelZero(channel);
    }
}

void AudioSubBuffer::MarkChannelsZero(const SilenceMask& inMask)
{
    const auto mask = inMask; // may be the parent's own word, which changes below
    if (mParent != nullptr) {
        if (mUseSize == mParent->GetBufferSize()) {
            mParent->MarkChannelsZero(mask);
        } else {
            for (std::size_t channel = 0; channel < CountFlagged(mChannelCount); ++channel) {
                SetChannelZero(channel, mask.GetBit(channel));
            }
        }
    }
    ForceSilenceMask(mask);
}

void AudioSubBuffer::ClearChannelsZero(const SilenceMask& inMask)
{
    if (!inMask.IsAnySet()) {
        MarkChannelsZero(SilenceMask::All());
        return;
    }
    const auto mask = inMask;
    for (std::size_t channel = 0; channel < CountFlagged(mChannelCount); ++channel) {
        SetChannelZero(channel, !mask.GetBit(channel));
    }
}

void AudioSubBuffer::Zero()
{
    if (IsZero()) {
        return;
    }
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        MarkChannelZero(channel);
    }
}

void AudioSubBuffer::ZeroChannel(std::size_t inChannel, unsigned /*inIgnoredCount*/)
{
    MarkChannelZero(inChannel);
}

} // namespace tessaro
