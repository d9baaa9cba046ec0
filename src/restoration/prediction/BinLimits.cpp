#include "restoration/prediction/BinLimits.h"

#include <algorithm>

namespace tessaro {

namespace {

constexpr float kRise = 1.0352649238413775f; ///< 2^(1/20)
constexpr float kFall = 0.9170040432046712f; ///< 2^(-1/8)
/// Bins below it are never limited.
constexpr float kSmallestMagnitude = 1e-10f;

} // namespace

void LimitBins(unsigned inCount, float inLimit, const BinRows& ioRows)
{
    const float* __restrict const magnitudes = ioRows.mMagnitudes;
    const float* __restrict const steps = ioRows.mReferenceSteps;
    float* __restrict const references = ioRows.mReference;
    float* __restrict const gains = ioRows.mGains;
    for (unsigned bin = 0; bin < inCount; ++bin) {
        const float magnitude = magnitudes[bin];
        const float allowed = inLimit * references[bin];
        const float ratio = allowed / std::max(magnitude, kSmallestMagnitude);
        const float target = magnitude > std::max(allowed, kSmallestMagnitude) ? ratio : 1.0f;
        const float risen = gains[bin] * kRise;
        const float fallen = std::max(target, gains[bin] * kFall);
        gains[bin] = risen < target ? risen : fallen;
        references[bin] += steps[bin];
    }
}

} // namespace tessaro
