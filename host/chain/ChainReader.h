#pragma once

#include <cstdint>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioSubBuffer.h>

#include "AudioSource.h"
#include "EffectChain.h"

namespace host {

/// Reads audio through a chain and makes up for the chain's latency: what comes out lines up with the source
/// and has its length.
///
/// The chain gets as many silent samples behind the end as it is late, and as many of its first samples are
/// dropped.
class ChainReader
{
public:
    /// `inBlock` is the largest block in frames. Both must outlive the reader.
    ChainReader(AudioSource& ioSource, EffectChain& ioChain, unsigned inBlock);

    /// The next block, which may be changed in place and is valid until the next call; null at the end.
    tessaro::AudioBuffer* Read();

private:
    bool FillBlock();

    AudioSource& mSource;
    EffectChain& mChain;
    unsigned mMaxBlock;
    std::int64_t mToFeed;
    std::int64_t mToDrop;
    tessaro::AudioBuffer mBlock;
    tessaro::AudioSubBuffer mKept;
};

} // namespace host
