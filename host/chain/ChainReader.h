#pragma once

#include <cstdint>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioSubBuffer.h>

#include "AudioSource.h"
#include "ChainMeters.h"
#include "EffectChain.h"

namespace host {

/// Reads audio through a chain and makes up for the chain's latency: what comes out lines up with the source
/// and has its length, plus a tail in which effects may ring out.
///
/// The chain gets as many silent samples behind the end as it is late and the tail is long, and as many of
/// its first samples are dropped.
class ChainReader
{
public:
    /// `inBlock` is the largest block and `inTail` the tail in frames. Source and chain must outlive the
    /// reader.
    ChainReader(AudioSource& ioSource, EffectChain& ioChain, unsigned inBlock, std::int64_t inTail);

    /// The next block, which may be changed in place and is valid until the next call; null at the end.
    tessaro::AudioBuffer* Read();

    /// Shows the meters all that goes into the chain and comes out of it. They outlive the reader.
    void SetMeters(ChainMeters* inMeters) { mMeters = inMeters; }

private:
    bool FillBlock();

    AudioSource& mSource;
    EffectChain& mChain;
    ChainMeters* mMeters = nullptr;
    unsigned mMaxBlock;
    std::int64_t mToFeed;
    std::int64_t mToDrop;
    tessaro::AudioBuffer mBlock;
    tessaro::AudioSubBuffer mKept;
};

} // namespace host
