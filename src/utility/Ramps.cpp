#include "utility/Ramps.h"

#include <algorithm>

namespace tessaro::ramps {

namespace {

/// `inBefore(a, b)` is true while `a` has not reached `b`. What it cannot order has arrived.
template <typename Before>
float GenerateUntil(float inCurrent, float inStep, float inTarget, float* outRamp, std::size_t inCount,
                    Before inBefore)
{
    if (inCount == 0) {
        return inCurrent;
    }
    float value = inCurrent + inStep;
    std::size_t i = 0;
    while (i < inCount && inBefore(value, inTarget)) {
        outRamp[i++] = value;
        value += inStep;
    }
    std::fill(outRamp + i, outRamp + inCount, inTarget);
    return outRamp[inCount - 1];
}

} // namespace

float GenerateTowardsTarget(float inCurrent, float inStep, float inTarget, float* outRamp,
                            std::size_t inCount)
{
    if (inStep < 0.0f) {
        return GenerateUntil(inCurrent, inStep, inTarget, outRamp, inCount,
                             [](float inA, float inB) { return inA > inB; });
    }
    return GenerateUntil(inCurrent, inStep, inTarget, outRamp, inCount,
                         [](float inA, float inB) { return inA < inB; });
}

} // namespace tessaro::ramps
