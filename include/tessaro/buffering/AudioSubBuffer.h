#pragma once

#include <cstddef>

#include <ombrel/allocator/RecycledMemory.h>
#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

/// A range of samples of another buffer, to be used where a buffer is wanted.
///
/// `Init` makes the table of row pointers once; `Assign` and `ShiftOffset` then move the view about.
///
/// Silence. A view that covers a part of its parent cannot say anything about the parent's whole channel, so
/// it has flags of its own, taken from the parent at `Assign` and `ShiftOffset`, and forwards them with care:
/// - A channel marked silent is marked in the parent only if the view is as long as the parent.
/// - A channel marked not silent is so in the parent too. If the parent's channel was silent, zeros are
///   written to it around the view first, so that it still reads as silence everywhere else. Within the view
///   the memory is left as it is: whoever clears a flag writes the samples.
/// - `Zero` and `ZeroChannel` set flags only and write no sample.
///
/// The parent must outlive the view and must not be initialised or grown under it. A view of a view is fine.
/// `Init` allocates and may throw, all else is `[real-time]`. One thread at a time, parent included.
class TESSARO_EXPORT AudioSubBuffer : public AudioBuffer
{
public:
    AudioSubBuffer();
    AudioSubBuffer(const AudioSubBuffer&) = delete;
    AudioSubBuffer& operator=(const AudioSubBuffer&) = delete;
    ~AudioSubBuffer() override;

    /// Makes the table for `inChannels` rows; the view covers nothing yet. [control]
    void Init(std::size_t inChannels);

    /// Covers `inParent` from sample `inOffset` to its end, in its first channels. Nothing changes if the
    /// view has more channels than the parent, or none yet. An offset past the parent's capacity leaves the
    /// view with no samples; one between its use size and its capacity too, but with room to grow.
    void Assign(AudioBuffer& inParent, unsigned inOffset);

    /// Moves the start forward by `inSamples`; past the capacity no samples are left. Takes the parent's
    /// flags again.
    void ShiftOffset(unsigned inSamples);

    /// Sets the number of samples in use, at most the capacity. The parent is not touched.
    void SetUseSize(unsigned inSize) override;

    void MarkChannelZero(std::size_t inChannel) override;
    void ClearChannelZero(std::size_t inChannel) override;
    void ClearZeroFlags() override;

    /// Takes the mask as the new flags: unlike that of a plain buffer this also clears.
    void MarkChannelsZero(const SilenceMask& inMask) override;

    /// Takes the inverted mask as the new flags: a channel whose bit is clear is marked silent, and a mask of
    /// 0 marks all.
    void ClearChannelsZero(const SilenceMask& inMask) override;

    /// Marks all channels silent, unless they are; writes no sample.
    virtual void Zero();

    /// Marks a channel silent; writes no sample and ignores the count.
    virtual void ZeroChannel(std::size_t inChannel, unsigned inIgnoredCount);
    using AudioBuffer::ZeroChannel;

private:
    void UpdateAlignment();
    void ZeroParentAround(std::size_t inChannel);

    AudioBuffer* mParent = nullptr;
    ombrel::allocator::RecycledMemory mTable;
};

} // namespace tessaro
