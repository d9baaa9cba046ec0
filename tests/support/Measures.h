#pragma once

#include <cstddef>
#include <span>

namespace tessaro::testing {

/// Decibels of a linear amplitude; minus infinity for 0.
[[nodiscard]] double ToDecibels(double inAmplitude);

[[nodiscard]] double Rms(std::span<const float> inRow);

/// Amplitude of the sine of `inFrequency` Hz in the row. Exact when the row holds whole periods; otherwise
/// take many of them.
[[nodiscard]] double AmplitudeAt(std::span<const float> inRow, double inFrequency, double inRate);

/// Gain at a frequency in dB. Leave out the samples in which the output settles.
[[nodiscard]] double GainInDecibels(std::span<const float> inInput, std::span<const float> inOutput,
                                    double inFrequency, double inRate);

/// How many samples the output is late: where its correlation with the input is largest, whatever the sign,
/// among 0 to `inLongest`. Wants noise as input.
[[nodiscard]] std::size_t DelayInSamples(std::span<const float> inInput, std::span<const float> inOutput,
                                         std::size_t inLongest);

/// What is left of the second row when the first is taken away from it, in dB below the first.
[[nodiscard]] double NullDepthInDecibels(std::span<const float> inExpected, std::span<const float> inActual);

[[nodiscard]] bool AreAllFinite(std::span<const float> inRow);

} // namespace tessaro::testing
