#pragma once

#include <cstddef>

#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

/// Delays a stream of `AudioBuffer` blocks by a fixed number of samples: a ring, whose reader runs behind its
/// writer.
///
/// Driven in turns, after `Init`: `Write` a block, `Read` a block of the same size. The first `GetDelay()`
/// samples that come out are zeros. Blocks may have any size up to the one given to `Init`, and change from
/// turn to turn.
///
/// The buffer that this class is holds the ring, so its use size is the length of the ring: block and delay.
/// A block that is written above the room left overwrites what was not read yet.
///
/// `Init`, `SetDelay` and copies allocate [control]; `Write` and `Read` do not and do not throw [real-time].
class TESSARO_EXPORT AudioDelayBuffer : public AudioBuffer
{
public:
    /// No channels, delay 0; blocks written get lost, blocks read are zeros.
    AudioDelayBuffer() = default;
    /// A copy with all contents and positions.
    AudioDelayBuffer(const AudioDelayBuffer& inSource) = default;
    ~AudioDelayBuffer() override;

    /// Room for blocks of `inBlockSize` samples, delayed by `inDelay` samples; the ring holds zeros.
    /// [control]
    void Init(std::size_t inChannels, unsigned inBlockSize, unsigned inDelay);

    /// Starts anew with another delay: all contents are lost. The present length of the ring is taken as the
    /// block size, so each call makes the ring longer by the new delay; `Init` sets it back. [control]
    void SetDelay(unsigned inDelay);

    /// Samples
    [[nodiscard]] unsigned GetDelay() const { return mDelay; }

    /// Takes a block, as many samples as it has in use. Channels that are silent, or that the block does not
    /// have, are written as zeros; channels that only the block has are left out.
    void Write(const AudioBuffer& inSource);

    /// Fills a block, as many samples as it has in use, and marks all of its channels not silent, whatever
    /// they hold. Channels that only the block has become zeros.
    void Read(AudioBuffer& outDest);

private:
    void Restart(std::size_t inChannels, unsigned inSize, unsigned inDelay);

    unsigned mDelay = 0;
    unsigned mReadPosition = 0;
    unsigned mWritePosition = 0;
};

} // namespace tessaro
