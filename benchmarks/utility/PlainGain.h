#pragma once

#include <cstddef>

/// The loops that one would write without the library, compiled for the machine at hand.
namespace tessaro::plain {

void Gain(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inGain);

/// Repeated addition, begun anew in each channel.
void RampedGain(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inStart,
                float inEnd);

/// A step toward a target for each sample, with a clamp, in each channel.
void GainTowards(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inGain,
                 float inStep, float inTarget);

} // namespace tessaro::plain
