#include "effects/LinkedEffect.h"

#include "effects/ChannelwiseEffect.h"

namespace host {

void LinkedEffect::Configure(const StreamFormat& inFormat)
{
    mFormat = inFormat;
    mZeros.assign(static_cast<std::size_t>(inFormat.mMaxBlock), 0.0f);
    mRows.resize(static_cast<std::size_t>(inFormat.mChannelCount));
    Reset();
}

SilentChannels LinkedEffect::Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                                     SilentChannels inSilent)
{
    for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
        mRows[channel] = inSilent.GetBitModulo(channel) ? mZeros.data() : inInput[channel];
    }
    ProcessRows(mRows.data(), outOutput, inCount);
    return FindSilentRows(outOutput, mRows.size(), inCount);
}

} // namespace host
