#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/Signals.h"

namespace tessaro::testing {

/// What limiters find hard: noise, a square wave, clicks, steps, a sweep, a low and a high tone; up to 4.
inline std::vector<Row> MakeHarshSignals(std::size_t inLength, double inRate)
{
    Row square = MakeSine(inLength, 61.0, inRate), clicks(inLength), steps(inLength);
    for (std::size_t i = 0; i < inLength; ++i) {
        square[i] = square[i] < 0.0f ? -2.0f : 2.0f;
        clicks[i] = i % 397 < 2 ? static_cast<float>(i % 7) * 0.6f : 0.01f;
        steps[i] = static_cast<float>((i / 250 * 5) % 9) * 0.4f;
    }
    return {MakeNoise(inLength, 3, 1.0),
            square,
            clicks,
            steps,
            MakeSweep(inLength, 20.0, 0.48 * inRate, inRate, 4.0),
            MakeSine(inLength, 50.0, inRate, 3.0),
            MakeSine(inLength, 997.0, inRate, 1.0)};
}

inline float FindPeak(const Row& inRow, std::size_t inStart = 0)
{
    float peak = 0.0f;
    for (std::size_t i = inStart; i < inRow.size(); ++i) {
        peak = std::max(peak, std::abs(inRow[i]));
    }
    return peak;
}

} // namespace tessaro::testing
