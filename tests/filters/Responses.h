#pragma once

#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace tessaro::testing {

inline constexpr std::array<double, 4> kSampleRates{44100.0, 48000.0, 96000.0, 192000.0};

inline double Decibels(double inAmplitude)
{
    return 20.0 * std::log10(inAmplitude);
}

inline double Amplitude(double inDecibels)
{
    return std::pow(10.0, inDecibels / 20.0);
}

/// Magnitude at a frequency given in cycles a sample of the filter whose impulse response this is.
template <typename T>
double MagnitudeOfImpulse(const std::vector<T>& inImpulse, double inFrequency)
{
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < inImpulse.size(); ++n) {
        const double turns = std::fmod(inFrequency * static_cast<double>(n), 1.0);
        sum += static_cast<double>(inImpulse[n]) * std::polar(1.0, -2.0 * std::numbers::pi * turns);
    }
    return std::abs(sum);
}

} // namespace tessaro::testing
