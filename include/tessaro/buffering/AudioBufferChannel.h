#pragma once

#include <cstddef>

#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

/// One channel of another buffer, to be used where a buffer is wanted.
///
/// It shares the parent's samples and asks the parent about silence: a view has one channel, and every
/// question about it is answered for that one, whatever index is asked for. Marks go to the parent.
///
/// The parent must outlive the view and must not be initialised or grown under it. The view owns no samples:
/// its size stays within what the parent had when the view was assigned. Nothing allocates or throws;
/// `[real-time]` throughout. One thread at a time, parent included.
class TESSARO_EXPORT AudioBufferChannel : public AudioBuffer
{
public:
    /// A view of nothing: one channel without samples, silent.
    AudioBufferChannel();

    /// Another view of the same channel.
    AudioBufferChannel(const AudioBufferChannel& inSource);

    AudioBufferChannel& operator=(const AudioBufferChannel&) = delete;
    ~AudioBufferChannel() override;

    /// Makes this a view of channel `inChannel`. A channel that does not exist leaves a view without
    /// channels.
    void Assign(AudioBuffer& inParent, std::size_t inChannel);

    /// A view has its samples from its parent and cannot be sized by itself.
    void Init(std::size_t inChannels, unsigned inSize) = delete;

    /// Sets the number of samples in use, at most the capacity.
    void SetUseSize(unsigned inSize) override;

    /// The parent's flag of the channel; true without a parent. The index is ignored.
    [[nodiscard]] bool IsZero() const override;
    [[nodiscard]] bool IsChannelZero(std::size_t inIgnoredChannel) const override;

    /// Mark the parent's channel, whatever the index.
    void MarkChannelZero(std::size_t inIgnoredChannel) override;
    void ClearChannelZero(std::size_t inIgnoredChannel) override;
    void ClearZeroFlags() override;

    /// Go to the parent as they are: a mask speaks of all channels of the parent, not only of this one.
    void MarkChannelsZero(const SilenceMask& inMask) override;
    void ClearChannelsZero(const SilenceMask& inMask) override;

private:
    AudioBuffer* mParent = nullptr;
    float* mChannel = nullptr;
    std::size_t mIndex = 0;
};

} // namespace tessaro
