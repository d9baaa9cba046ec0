#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <ombrel/allocator/RecycledMemory.h>
#include <ombrel/utility/Flags.h>
#include <tessaro/Export.h>

namespace tessaro {

/// A block of audio: 32-bit float, planar, one contiguous run of samples a channel, and with each channel a
/// flag that says whether it is silent.
///
/// Silence flags let a whole chain of processors skip silent channels without touching samples. A channel
/// whose flag is set must be read as zeros by everyone, whatever its memory holds: marking a channel does not
/// write to it. A clear flag promises nothing; the channel may hold zeros all the same. Code that hands row
/// pointers to something that knows nothing of flags first calls `ZeroBufferAccordingToSilenceFlags`.
///
/// There are 64 flags. Channels from 64 upward have none and are never silent by themselves; with 64 or more
/// channels the buffer counts as silent when the first 64 are. Flags above the channel count are kept set. A
/// buffer without channels is silent.
///
/// Life cycle: `Init` sizes the block, `SetUseSize` chooses how many samples of it are in use. The block is
/// kept and reused by every later `Init` that fits, so that a buffer which has once been as large as it ever
/// gets does not allocate again. `Init` does not clear samples and leaves all channels marked not silent.
///
/// `AudioSubBuffer`, `AudioBufferChannel` and `AudioBufferShell` are views with the same interface. All
/// operations here reach a view's parent through the virtual flag operations, so they may be used on views.
///
/// A buffer is copied by construction only. It is neither assigned nor moved: its row pointers are handed
/// out, and a view must not turn into an owner. `CopyFrom` copies contents.
///
/// Rows: channel starts lie on 64-byte boundaries, with at least four floats of slack behind each row; the
/// copy of a view takes over the view's weaker alignment. Two buffers in one operation may be the same one or
/// share the same rows in the same channels; rows that overlap otherwise (a view with an offset, and its
/// parent) give unspecified samples. No operation reads beyond the use size of a source.
///
/// Channel indexes out of range are ignored. Nothing throws but what allocates: construction, `Init`, a
/// `SetUseSize` that grows, and the two `GetBuffersAs...`. All else is `[real-time]`. One thread at a time.
class TESSARO_EXPORT AudioBuffer
{
public:
    /// Bit n stands for channel n; set means silent.
    using SilenceMask = ombrel::utility::Flags<std::uint64_t>;

    /// Empty: no channels, no memory.
    AudioBuffer();

    /// As by `Init`; a size of 0 leaves the buffer empty, without channels. [control]
    AudioBuffer(std::size_t inChannels, unsigned inSize);

    /// A copy with a block of its own, of the channels and use size of `inSource`: samples of silent channels
    /// are copied too, and the mask is taken over as it is. The copy of a view is a plain buffer. That of an
    /// `AudioBufferChannel` gets the parent's whole word as its mask, in which bit 0 is the parent's channel
    /// 0: set its flag anew. [control]
    AudioBuffer(const AudioBuffer& inSource);

    AudioBuffer& operator=(const AudioBuffer&) = delete;

    virtual ~AudioBuffer();

    /// Sets the number of samples in use. Shrinking moves nothing and changes no flag. Beyond the capacity
    /// the buffer grows, and keeps its samples and flags: what it gains holds whatever the memory held,
    /// unless the channel is silent. A buffer whose use size is 0 does not grow, it stays at its capacity.
    /// Allocates when it grows, and then invalidates row pointers and views; if memory runs out the buffer is
    /// left as by a failed `Init`, its samples are gone. [control]
    virtual void SetUseSize(unsigned inSize);

    /// True when every channel is silent. [real-time]
    [[nodiscard]] virtual bool IsZero() const;

    /// The flag of a channel. For a channel that does not exist the answer is the flag as it stands, which is
    /// set after `Init`; false from channel 64 upward. [real-time]
    [[nodiscard]] virtual bool IsChannelZero(std::size_t inChannel) const;

    /// Marks a channel silent without writing to it. [real-time]
    virtual void MarkChannelZero(std::size_t inChannel);

    /// Marks every channel silent whose bit is set; the others keep their flags. [real-time]
    virtual void MarkChannelsZero(const SilenceMask& inMask);

    /// Marks every channel not silent. [real-time]
    virtual void ClearZeroFlags();

    /// Marks a channel not silent: whoever calls this has written, or will write, its samples. [real-time]
    virtual void ClearChannelZero(std::size_t inChannel);

    /// Marks every channel not silent whose bit is set; the others keep their flags. [real-time]
    virtual void ClearChannelsZero(const SilenceMask& inMask);

    /// The whole word, in which the bits above the channel count are set. [real-time]
    [[nodiscard]] virtual SilenceMask GetChannelZeroMask() const;

    /// Makes room for `inChannels` channels of `inSize` samples and puts all of them in use, not silent and
    /// not cleared. Allocates only if the held block is too small. With as many channels as before the
    /// capacity stays; with another number it becomes what the held block can carry.
    ///
    /// If memory runs out the exception passes through; the buffer is then empty, still holds its previous
    /// block, and can be initialised again. [control]
    void Init(std::size_t inChannels, unsigned inSize);

    [[nodiscard]] std::size_t GetChannelCount() const { return mChannelCount; }

    /// Samples a channel in use.
    [[nodiscard]] unsigned GetBufferSize() const { return mUseSize; }

    /// Samples a channel that there is room for.
    [[nodiscard]] unsigned GetCapacity() const { return mCapacity; }

    /// The table of row pointers, null for a buffer that was never initialised.
    [[nodiscard]] float** GetFloatBuffers() { return mChannels; }
    [[nodiscard]] const float* const* GetFloatBuffers() const { return mChannels; }

    /// A row, null for a channel that does not exist.
    [[nodiscard]] float* operator[](std::size_t inChannel) { return GetRow(inChannel); }
    [[nodiscard]] const float* operator[](std::size_t inChannel) const { return GetRow(inChannel); }

    /// Row pointers advanced by `inOffset` samples. Allocates the vector. [control]
    [[nodiscard]] std::vector<float*> GetBuffersAsFloats(int inOffset) const;
    [[nodiscard]] std::vector<void*> GetBuffersAsVoid(int inOffset) const;

    /// Makes the buffer silent, in samples and in flags: writes zeros to the channels that are not silent
    /// yet.
    void Zero();

    /// Writes zeros to every channel and leaves the flags alone.
    void ZeroBuffers();

    /// Writes zeros to the first `inCount` samples of a channel, unless it is silent already. The channel is
    /// marked silent when that was all of it. `inForce` writes to a silent channel too, and marks the channel
    /// silent even if only a part of it was written.
    void ZeroChannel(std::size_t inChannel, unsigned inCount, bool inForce);

    /// `MarkChannelZero` or `ClearChannelZero`.
    void SetChannelZero(std::size_t inChannel, bool inZero);

    /// Copies one channel, of another buffer or of this one. A source channel that is silent or does not
    /// exist makes the destination channel silent, in samples and flag.
    void CopyChannel(const AudioBuffer& inSource, std::size_t inSourceChannel, std::size_t inDestChannel);
    void CopyChannel(std::size_t inSourceChannel, std::size_t inDestChannel);

    /// Copies all channels. Channels that are silent in the source, or that it does not have, become silent
    /// as a whole, in samples and flag.
    void CopyFrom(const AudioBuffer& inSource);

    /// Copies the first `inCount` samples; the samples behind them stay, or are zeros if the channel was
    /// silent. Silent channels as above.
    void CopyFrom(const AudioBuffer& inSource, unsigned inCount);

    /// The same: the offset has no effect. Both buffers are read and written from their first sample, and
    /// callers rely on it.
    void CopyFrom(const AudioBuffer& inSource, std::size_t inUnusedOffset, unsigned inCount);

    /// As `CopyFrom`, but channels whose bit in `inChannels` is clear are taken as silent in the source.
    /// Channel 64 goes by bit 0 again.
    void CopyCertainChannelsFrom(const AudioBuffer& inSource, unsigned inCount,
                                 const SilenceMask& inChannels);

    /// Copies all channels times `inScale` (linear). A scale of exactly 0 is `Zero`.
    void CopyFromScale(const AudioBuffer& inSource, float inScale);

    /// Adds all channels. Channels that are silent here are copied, channels that are silent in the source
    /// cost nothing.
    void Mix(const AudioBuffer& inSource);

    /// Turns every channel end for end.
    void Reverse();

    /// Multiplies every channel that is not silent (linear). No flag changes, not even for a scale of 0.
    AudioBuffer& operator*=(float inScale);

protected:
    /// What to assume of a view whose rows come from elsewhere.
    static constexpr int kUnknownAlignment = -1;

    /// Stores the word as it is, past all that the views do with flags.
    void ForceSilenceMask(const SilenceMask& inMask) { mSilenceMask = inMask; }

    /// Alignment of channel starts in float samples. Views have 4 (16 bytes), 1 (none) or -1 (not known).
    [[nodiscard]] int GetAlignment() const { return mAlignment; }

    /// True when rows and sizes suit vector code of 16 bytes.
    [[nodiscard]] bool IsAligned() const { return mIsAligned; }

    /// Takes the alignment of the buffer that a view looks at.
    void TakeAlignment(const AudioBuffer& inParent);

    /// Makes a view empty, with a table of null rows: sizes 0, and the flags as after `Init`.
    void ResetView(float** inTable, std::size_t inChannels);

    float** mChannels = nullptr;
    std::size_t mChannelCount = 0;
    unsigned mUseSize = 0;
    unsigned mCapacity = 0;
    int mAlignment = 16;
    bool mIsAligned = true;

private:
    [[nodiscard]] float* GetRow(std::size_t inChannel) const
    {
        return mChannels != nullptr && inChannel < mChannelCount ? mChannels[inChannel] : nullptr;
    }
    void CopyRow(const AudioBuffer& inSource, std::size_t inSourceChannel, std::size_t inDestChannel,
                 unsigned inCount);
    void MarkWritten(std::size_t inChannel, unsigned inCount);
    void ZeroChannelsFrom(std::size_t inChannel);

    SilenceMask mSilenceMask;
    ombrel::allocator::RecycledMemory mMemory;
};

} // namespace tessaro
