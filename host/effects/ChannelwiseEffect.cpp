#include "effects/ChannelwiseEffect.h"

#include <algorithm>

namespace host {

SilentChannels FindSilentRows(const float* const* inRows, std::size_t inChannelCount, unsigned inCount)
{
    auto silent = SilentChannels::All();
    for (std::size_t channel = 0; channel < inChannelCount; ++channel) {
        const float* row = inRows[channel];
        if (!std::all_of(row, row + inCount, [](float inSample) { return inSample == 0.0f; })) {
            silent.ClearBit(channel % SilentChannels::kBitCount);
        }
    }
    return silent;
}

void ChannelwiseEffect::Configure(const StreamFormat& inFormat)
{
    mChannelCount = static_cast<std::size_t>(inFormat.mChannelCount);
    mZeros.assign(static_cast<std::size_t>(inFormat.mMaxBlock), 0.0f);
}

SilentChannels ChannelwiseEffect::Process(const float* const* inInput, float* const* outOutput,
                                          unsigned inCount, SilentChannels inSilent)
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        const float* row = inSilent.GetBitModulo(channel) ? mZeros.data() : inInput[channel];
        ProcessChannel(channel, row, outOutput[channel], inCount);
    }
    return FindSilentRows(outOutput, mChannelCount, inCount);
}

} // namespace host
