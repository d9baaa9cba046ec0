#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/utility/DelayBuffer.h>

namespace tessaro {

/// One `DelayBuffer` a channel. Channels are written together or one by one, and may stand at different
/// places; the calls for all channels together report one of them.
///
/// `Init` and `GetWorkChunks` allocate [control]; all else does not and does not throw [real-time]. One
/// thread at a time. Not copied.
class TESSARO_EXPORT MultiChannelDelayBuffer
{
public:
    /// No channels
    MultiChannelDelayBuffer() = default;
    MultiChannelDelayBuffer(const MultiChannelDelayBuffer&) = delete;
    MultiChannelDelayBuffer& operator=(const MultiChannelDelayBuffer&) = delete;
    ~MultiChannelDelayBuffer();

    /// `inChannels` channels with room for `inSize` samples each, none of them valid yet. Throws
    /// `std::bad_alloc`, and then there are no channels. [control]
    void Init(int inChannels, int inSize);

    /// Forgets all samples.
    void Reset();

    /// Appends to one channel; nothing for a channel that does not exist.
    void Write(int inChannel, const float* inSource, int inCount);
    /// Appends a row to each channel.
    void Write(const float* const* inSource, int inCount);

    /// As `DelayBuffer::Read`; 0 for a channel that does not exist and for a null destination.
    int Read(int inChannel, float* outDest, int inCount, int inSkip) const;
    /// Reads a row from each channel. Returns the count of the last one, 0 without channels.
    int Read(float* const* outDest, int inCount, int inSkip) const;

    /// That of the first channel, 0 without channels.
    [[nodiscard]] int GetValidDataSize() const;

    /// The runs of each channel, in a vector that is allocated. [control]
    [[nodiscard]] std::vector<DelayBuffer::WorkChunks> GetWorkChunks(int inSkip) const;

private:
    [[nodiscard]] bool HasChannel(int inChannel) const
    {
        return inChannel >= 0 && static_cast<std::size_t>(inChannel) < mChannelCount;
    }

    std::size_t mChannelCount = 0;
    std::unique_ptr<DelayBuffer[]> mChannels;
};

} // namespace tessaro
