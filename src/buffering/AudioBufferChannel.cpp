#include <tessaro/buffering/AudioBufferChannel.h>

#include <algorithm>

namespace tessaro {

AudioBufferChannel::AudioBufferChannel()
{
    mChannels = &mChannel;
    mChannelCount = 1;
    ForceSilenceMask(SilenceMask::All());
}

AudioBufferChannel::AudioBufferChannel(const AudioBufferChannel& inSource)
    : AudioBuffer(), mParent(inSource.mParent), mChannel(inSource.mChannel), mIndex(inSource.mIndex)
{
    mChannels = &mChannel;
    mChannelCount = 1;
    mUseSize = inSource.mUseSize;
    mCapacity = inSource.mCapacity;
    TakeAlignment(inSource);
    ForceSilenceMask(mParent != nullptr ? mParent->GetChannelZeroMask() : SilenceMask::All());
}

AudioBufferChannel::~AudioBufferChannel() = default;

void AudioBufferChannel::Assign(AudioBuffer& inParent, std::size_t inChannel)
{
    if (inChannel >= inParent.GetChannelCount()) {
        mParent = nullptr;
        mChannel = nullptr;
        mIndex = 0;
        mChannels = nullptr;
        mChannelCount = 0;
        mUseSize = 0;
        mCapacity = 0;
        ForceSilenceMask(SilenceMask::All());
        return;
    }
    mParent = &inParent;
    mChannel = inParent[inChannel];
    mIndex = inChannel;
    mChannels = &mChannel;
    mChannelCount = 1;
    mUseSize = inParent.GetBufferSize();
    mCapacity = inParent.GetCapacity();
    TakeAlignment(inParent);
    ForceSilenceMask(inParent.GetChannelZeroMask());
}

void AudioBufferChannel::SetUseSize(unsigned inSize)
{
    mUseSize = std::min(inSize, mCapacity);
    mIsAligned = mAlignment > 0 && mAlignment % 4 == 0;
}

bool AudioBufferChannel::IsZero() const
{
    return mParent == nullptr || mParent->IsChannelZero(mIndex);
}

bool AudioBufferChannel::IsChannelZero(std::size_t /*inIgnoredChannel*/) const
{
    return IsZero();
}

// Behind each mark the view's own word becomes the parent's whole word, in which the bit of this channel need
// not be the first. It comes out of `GetChannelZeroMask` and goes into plain copies of the view; whoever
// wants to know about this channel asks `IsChannelZero`.

void AudioBufferChannel::MarkChannelZero(std::size_t /*inIgnoredChannel*/)
{
    if (mParent != nullptr) {
        mParent->MarkChannelZero(mIndex);
        ForceSilenceMask(mParent->GetChannelZeroMask());
    }
}

void AudioBufferChannel::ClearChannelZero(std::size_t /*inIgnoredChannel*/)
{
    if (mParent != nullptr) {
        mParent->ClearChannelZero(mIndex);
        ForceSilenceMask(mParent->GetChannelZeroMask());
    }
}

void AudioBufferChannel::ClearZeroFlags()
{
    if (mParent != nullptr) {
        mParent->ClearChannelZero(mIndex);
    }
    AudioBuffer::ClearZeroFlags();
}

void AudioBufferChannel::MarkChannelsZero(const SilenceMask& inMask)
{
    if (mParent != nullptr) {
        mParent->MarkChannelsZero(inMask);
        ForceSilenceMask(mParent->GetChannelZeroMask());
    }
}

void AudioBufferChannel::ClearChannelsZero(const SilenceMask& inMask)
{
    if (mParent != nullptr) {
        mParent->ClearChannelsZero(inMask);
        ForceSilenceMask(mParent->GetChannelZeroMask());
    }
}

} // namespace tessaro
