#include "PlainGains.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace plain {

void Compress(unsigned inCount, const float* const* inInput, float* const* outOutput, Compressor& ioState)
{
    constexpr float kThreshold = 0.0316227766f;
    constexpr float kDecay = 0.99854f;
    constexpr float kAttackStep = 0.004158f;
    constexpr float kReleaseStep = 0.000416580f;
    for (unsigned i = 0; i < inCount; ++i) {
        const float peak = std::max(std::abs(inInput[0][i]), std::abs(inInput[1][i]));
        ioState.mPeak = peak > ioState.mPeak ? peak : ioState.mPeak * kDecay;
        const float level = std::max(1e-5f, ioState.mPeak);
        const float target = level >= kThreshold ? std::pow(level / kThreshold, -0.75f) : 1.0f;
        if (ioState.mGain > target) {
            ioState.mGain += (target - ioState.mGain) * kAttackStep;
        } else {
            ioState.mGain = ioState.mGain * (1.0f - kReleaseStep) + kReleaseStep;
        }
        for (unsigned channel = 0; channel < 2; ++channel) {
            const float delayed = std::exchange(ioState.mDelay[channel][ioState.mPlace], inInput[channel][i]);
            outOutput[channel][i] = delayed * ioState.mGain;
        }
        ioState.mPlace = ioState.mPlace == 46 ? 0 : ioState.mPlace + 1;
    }
}

} // namespace plain
