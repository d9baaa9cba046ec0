#pragma once

#include <cmath>

/// Conversions that the gain computers share.
namespace tessaro::dynamics {

constexpr double kNaturalFromDecibels = 0.115129255;
constexpr double kDecibelsFromNatural = 8.685889;

inline float LinearFromDecibels(float inDecibels)
{
    return static_cast<float>(std::exp(static_cast<double>(inDecibels) * kNaturalFromDecibels));
}

/// What a one-pole smoother keeps of its state in a sample; 0, which is an instant step, for times of 0 and
/// below. Times count at half the sampling rate, so that a step takes half as long as its figure says: part
/// of how these processors sound, and settings are made by ear to fit it.
inline float OnePoleKept(double inMillis, double inSampleRate)
{
    return inMillis > 0.0 ? static_cast<float>(std::exp(-1000.0 / inMillis / (inSampleRate * 0.5))) : 0.0f;
}

/// What a peak detector keeps of its level in a sample: 3 % are left after 50 ms.
inline float PeakDecay(float inSampleRate)
{
    return static_cast<float>(std::pow(0.03, 1.0 / (static_cast<double>(inSampleRate) * 0.05)));
}

/// Exponent of level / threshold that gives the gain of a compressor
inline double CompressionExponent(float inRatio)
{
    return 1.0 / static_cast<double>(inRatio) - 1.0;
}

} // namespace tessaro::dynamics
