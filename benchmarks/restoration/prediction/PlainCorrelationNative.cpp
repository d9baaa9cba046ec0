#include "PlainCorrelation.h"

// The compiler may reorder these sums, which it must not do in the library.
#pragma GCC optimize("fast-math")

namespace tessaro::plain {

void Correlate(const float* inFrame, unsigned inLength, float* outCorrelation, unsigned inLags)
{
    for (unsigned lag = 0; lag < inLags; ++lag) {
        const unsigned count = inLength - lag;
        const float* const later = inFrame + lag;
        float sum = 0.0f;
        for (unsigned i = 0; i < count; ++i) {
            sum += inFrame[i] * later[i];
        }
        outCorrelation[lag] = sum;
    }
}

} // namespace tessaro::plain
