#pragma once

/// The plain loop that the gain computers are compared with.
namespace plain {

/// 4:1 from -30 dB, attack 10 ms, release 100 ms, as `DynamicsBand` counts them at 48 kHz
struct Compressor
{
    float mPeak = 0.0f;
    float mGain = 1.0f;
    float mDelay[2][47] = {};
    unsigned mPlace = 0;
};

void Compress(unsigned inCount, const float* const* inInput, float* const* outOutput, Compressor& ioState);

} // namespace plain
