#include "PlainFIR.h"

#include <algorithm>

namespace plain {

void RunFIR(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
            float* __restrict outDest)
{
    std::fill_n(outDest, inCount, 0.0f);
    for (std::size_t k = 0; k < inNumTaps; ++k) {
        const float tap = inTaps[k];
        const float* __restrict const past = inSource - k;
        for (std::size_t n = 0; n < inCount; ++n) {
            outDest[n] += tap * past[n];
        }
    }
}

} // namespace plain
