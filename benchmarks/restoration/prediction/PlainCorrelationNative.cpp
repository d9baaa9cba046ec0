#include "PlainCorrelation.h"

namespace tessaro::plain {

namespace {

constexpr unsigned kLanes = 32;

} // namespace

void Correlate(const float* inFrame, unsigned inLength, float* outCorrelation, unsigned inLags)
{
    for (unsigned lag = 0; lag < inLags; ++lag) {
        const unsigned count = inLength - lag;
        const float* const later = inFrame + lag;
        float sums[kLanes] = {};
        unsigned i = 0;
        for (; i + kLanes <= count; i += kLanes) {
            for (unsigned lane = 0; lane < kLanes; ++lane) {
                sums[lane] += inFrame[i + lane] * later[i + lane];
            }
        }
        float sum = 0.0f;
        for (; i < count; ++i) {
            sum += inFrame[i] * later[i];
        }
        for (const float part : sums) {
            sum += part;
        }
        outCorrelation[lag] = sum;
    }
}

} // namespace tessaro::plain
