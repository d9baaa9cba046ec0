#include "PlainLoops.h"

namespace tessaro::plain {

void Copy(const float* const* inSource, float* const* outDest, std::size_t inChannels, std::size_t inCount)
{
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        const float* source = inSource[channel];
        float* dest = outDest[channel];
        for (std::size_t i = 0; i < inCount; ++i) {
            dest[i] = source[i];
        }
    }
}

void Mix(const float* const* inSource, float* const* ioDest, std::size_t inChannels, std::size_t inCount)
{
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        const float* source = inSource[channel];
        float* dest = ioDest[channel];
        for (std::size_t i = 0; i < inCount; ++i) {
            dest[i] += source[i];
        }
    }
}

void Scale(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inScale)
{
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        float* row = ioRows[channel];
        for (std::size_t i = 0; i < inCount; ++i) {
            row[i] *= inScale;
        }
    }
}

void To16Bit(const float* inSource, short* outDest, std::size_t inCount)
{
    for (std::size_t i = 0; i < inCount; ++i) {
        const float value = inSource[i];
        if (value >= 1.0f) {
            outDest[i] = 32767;
        } else if (value <= -1.0f) {
            outDest[i] = -32768;
        } else {
            outDest[i] = static_cast<short>(value * 32768.0f);
        }
    }
}

} // namespace tessaro::plain
