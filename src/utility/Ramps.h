#pragma once

#include <cstddef>

/// The generators behind the gain ramps. Each value is the one before plus a step, rounded: a chain that
/// cannot be split up without changing the result, so it is run once and its values serve all channels.
namespace tessaro::ramps {

/// Writes `inStart`, `inStart + inStep` and so on. Returns the value behind the last one, with which the next
/// run goes on.
template <typename T>
T GenerateLinear(T inStart, T inStep, T* outRamp, std::size_t inCount)
{
    T value = inStart;
    for (std::size_t i = 0; i < inCount; ++i) {
        outRamp[i] = value;
        value += inStep;
    }
    return value;
}

/// Writes `inCurrent + inStep` and so on, until `inTarget` would be passed, and `inTarget` from there on: the
/// step's sign tells from which side it is reached. Returns the last value, `inCurrent` for a count of 0.
float GenerateTowardsTarget(float inCurrent, float inStep, float inTarget, float* outRamp,
                            std::size_t inCount);

} // namespace tessaro::ramps
