#pragma once

#include <memory>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>

#include "ChainDescription.h"

namespace host {

/// Effects one behind the other, driven as an engine drives them: in blocks of planar rows, with silence
/// flags.
class EffectChain
{
public:
    /// Creates and configures the effects. Fails when the description does not fit the sampling rate.
    EffectChain(const ChainDescription& inDescription, const StreamFormat& inFormat);

    /// Processes the buffer's use size, and flags the channels that come out silent. Does not allocate.
    void Process(tessaro::AudioBuffer& ioBlock);

    void Reset();

    /// The sum over the effects, in samples.
    std::int64_t GetLatency() const;

    /// The product over the effects; nothing when one has no such function, no phase when one has none.
    std::optional<EffectResponse> GetResponse(double inFrequency) const;

    /// In the order of the chain; the effect must exist.
    Effect& GetEffect(std::size_t inIndex) { return *mEffects[inIndex]; }

    bool IsEmpty() const { return mEffects.empty(); }

private:
    std::vector<std::unique_ptr<Effect>> mEffects;
    tessaro::AudioBuffer mScratch;
};

} // namespace host
