#include "PlainGain.h"

#include <algorithm>

namespace tessaro::plain {

void Gain(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inGain)
{
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        float* row = ioRows[channel];
        for (std::size_t i = 0; i < inCount; ++i) {
            row[i] *= inGain;
        }
    }
}

void RampedGain(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inStart, float inEnd)
{
    const float step = (inEnd - inStart) / static_cast<float>(inCount);
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        float* row = ioRows[channel];
        float gain = inStart;
        for (std::size_t i = 0; i < inCount; ++i) {
            row[i] *= gain;
            gain += step;
        }
    }
}

void GainTowards(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inGain,
                 float inStep, float inTarget)
{
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        float* row = ioRows[channel];
        float gain = inGain;
        for (std::size_t i = 0; i < inCount; ++i) {
            gain = std::min(gain + inStep, inTarget);
            row[i] *= gain;
        }
    }
}

} // namespace tessaro::plain
