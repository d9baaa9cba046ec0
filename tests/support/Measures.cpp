#include "support/Measures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace tessaro::testing {

namespace {

double Energy(std::span<const float> inRow)
{
    double energy = 0.0;
    for (const double sample : inRow) {
        energy += sample * sample;
    }
    return energy;
}

} // namespace

double ToDecibels(double inAmplitude)
{
    return 20.0 * std::log10(inAmplitude);
}

double Rms(std::span<const float> inRow)
{
    return inRow.empty() ? 0.0 : std::sqrt(Energy(inRow) / static_cast<double>(inRow.size()));
}

double AmplitudeAt(std::span<const float> inRow, double inFrequency, double inRate)
{
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < inRow.size(); ++i) {
        const double phase = 2.0 * std::numbers::pi * inFrequency / inRate * static_cast<double>(i);
        sum += static_cast<double>(inRow[i]) * std::polar(1.0, -phase);
    }
    return 2.0 * std::abs(sum) / static_cast<double>(inRow.size());
}

double GainInDecibels(std::span<const float> inInput, std::span<const float> inOutput, double inFrequency,
                      double inRate)
{
    return ToDecibels(AmplitudeAt(inOutput, inFrequency, inRate) / AmplitudeAt(inInput, inFrequency, inRate));
}

std::size_t DelayInSamples(std::span<const float> inInput, std::span<const float> inOutput,
                           std::size_t inLongest)
{
    const auto length = std::min(inInput.size(), inOutput.size());
    std::size_t best = 0;
    double largest = -1.0;
    for (std::size_t delay = 0; delay <= inLongest && delay < length; ++delay) {
        double correlation = 0.0;
        for (std::size_t i = 0; i + delay < length; ++i) {
            correlation += static_cast<double>(inInput[i]) * static_cast<double>(inOutput[i + delay]);
        }
        if (std::abs(correlation) > largest) {
            largest = std::abs(correlation);
            best = delay;
        }
    }
    return best;
}

double NullDepthInDecibels(std::span<const float> inExpected, std::span<const float> inActual)
{
    double difference = 0.0;
    for (std::size_t i = 0; i < inExpected.size(); ++i) {
        const double left = static_cast<double>(inActual[i]) - static_cast<double>(inExpected[i]);
        difference += left * left;
    }
    return 10.0 * std::log10(difference / Energy(inExpected));
}

bool AreAllFinite(std::span<const float> inRow)
{
    return std::all_of(inRow.begin(), inRow.end(), [](float inSample) { return std::isfinite(inSample); });
}

} // namespace tessaro::testing
