#pragma once

#include <cstddef>

/// The loops that one would write without the library, compiled for the machine at hand.
namespace tessaro::plain {

void Copy(const float* const* inSource, float* const* outDest, std::size_t inChannels, std::size_t inCount);
void Mix(const float* const* inSource, float* const* ioDest, std::size_t inChannels, std::size_t inCount);
void Scale(float* const* ioRows, std::size_t inChannels, std::size_t inCount, float inScale);
void To16Bit(const float* inSource, short* outDest, std::size_t inCount);

} // namespace tessaro::plain
