#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>

#include "chain/EffectChain.h"

namespace host {

/// Plays through one chain and goes over to another without a click.
///
/// The new chain first runs beside the old one, unheard, so that its memory fills with the sound that it is
/// to take over, and then takes over in a short cosine fade. While that goes on, both cost their time.
/// Everything but construction and destruction is for the thread that plays, and does not allocate or free.
class ChainCrossfade
{
public:
    static constexpr double kWarmUpSeconds = 0.05; ///< on top of the chain's latency
    static constexpr double kFadeSeconds = 0.02;

    ChainCrossfade(std::unique_ptr<EffectChain> inChain, const StreamFormat& inFormat);

    /// Begins to go over to the chain. Only once what the last change left has been taken.
    void Begin(std::unique_ptr<EffectChain> inNext);

    /// The chain that has been left, for whoever may free it; null while there is none.
    std::unique_ptr<EffectChain> TakeOld() { return std::move(mOld); }

    void Process(tessaro::AudioBuffer& ioBlock);

private:
    void Fade(tessaro::AudioBuffer& ioBlock);

    std::unique_ptr<EffectChain> mCurrent;
    std::unique_ptr<EffectChain> mNext;
    std::unique_ptr<EffectChain> mOld;
    tessaro::AudioBuffer mNextBlock;
    std::vector<float> mWeights; ///< of the new chain, over the fade
    std::int64_t mWarmUp;        ///< frames
    std::int64_t mToWait = 0;    ///< frames until the fade
    std::size_t mFaded = 0;      ///< frames of the fade that are done
};

} // namespace host
