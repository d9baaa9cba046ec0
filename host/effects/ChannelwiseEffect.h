#pragma once

#include <vector>

#include "effects/Effect.h"

namespace host {

/// An effect over processors of one channel each, which know nothing of silence: a silent row reaches them as
/// zeros, and rows that come out as zeros are flagged.
class ChannelwiseEffect : public Effect
{
public:
    /// Derived classes make their processors and then call this.
    void Configure(const StreamFormat& inFormat) override;

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) final;

protected:
    virtual void ProcessChannel(std::size_t inChannel, const float* inInput, float* outOutput,
                                unsigned inCount) = 0;

private:
    std::size_t mChannelCount = 0;
    std::vector<float> mZeros;
};

/// The channels whose rows hold nothing but zeros. A flag is set if that is so for each channel it stands
/// for.
SilentChannels FindSilentRows(const float* const* inRows, std::size_t inChannelCount, unsigned inCount);

} // namespace host
