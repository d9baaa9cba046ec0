#pragma once

#include <array>
#include <cstddef>

namespace parametric {

/// Indices of the parameters, and what is the same for each of the five bands.
namespace index {

constexpr std::size_t kLowShelfFrequency = 0;
constexpr std::size_t kLowShelfGain = 1;
constexpr std::size_t kHighShelfFrequency = 2;
constexpr std::size_t kHighShelfGain = 3;
constexpr std::size_t kFirstBand = 4;
constexpr std::size_t kMasterGain = 24;
constexpr std::size_t kConstantQ = 25;
constexpr std::size_t kLowShelfSecondOrder = 26;
constexpr std::size_t kHighShelfSecondOrder = 27;
constexpr std::size_t kStateVariable = 28;
constexpr std::size_t kLowShelfOn = 29;
constexpr std::size_t kHighShelfOn = 30;
constexpr std::size_t kSampleRate = 31;
constexpr std::size_t kFirstBandwidth = 32;
constexpr std::size_t kHighpassOn = 37;
constexpr std::size_t kHighpassCutoff = 38;
constexpr std::size_t kHighpassOrder = 39;
constexpr std::size_t kLowpassOn = 40;
constexpr std::size_t kLowpassCutoff = 41;
constexpr std::size_t kLowpassOrder = 42;
constexpr std::size_t kBypass = 43;
constexpr std::size_t kUnused = 44;

constexpr std::size_t BandFrequency(std::size_t inBand)
{
    return kFirstBand + 4 * inBand;
}
constexpr std::size_t BandQ(std::size_t inBand)
{
    return kFirstBand + 4 * inBand + 1;
}
constexpr std::size_t BandGain(std::size_t inBand)
{
    return kFirstBand + 4 * inBand + 2;
}
constexpr std::size_t BandOn(std::size_t inBand)
{
    return kFirstBand + 4 * inBand + 3;
}
constexpr std::size_t Bandwidth(std::size_t inBand)
{
    return kFirstBandwidth + inBand;
}

/// What is bounded by half the sample rate
constexpr std::array<std::size_t, 9> kFrequencies{0, 2, 4, 8, 12, 16, 20, 38, 41};

/// What is stored as 0 or 1
constexpr std::array<std::size_t, 12> kSwitches{7, 11, 15, 19, 23, 26, 27, 28, 29, 30, 37, 40};

} // namespace index

constexpr float kLowestFrequency = 20.0f;
/// Of Q, and of bandwidth in Hz
constexpr float kSmallestWidth = 0.0001f;
constexpr float kLargestWidth = 10000.0f;
constexpr float kSwitchThreshold = 0.5f;

} // namespace parametric
