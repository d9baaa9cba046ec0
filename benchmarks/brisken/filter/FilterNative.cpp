#include "FilterNative.h"

#include <algorithm>

namespace brisken::native {

void FIR(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
         float* outDest)
{
    std::fill_n(outDest, inCount, 0.0f);
    for (std::size_t k = 0; k < inNumTaps; ++k) {
        const float tap = inTaps[k];
        const float* source = inSource - k;
        for (std::size_t n = 0; n < inCount; ++n) {
            outDest[n] += tap * source[n];
        }
    }
}

void BiquadCascade(double* ioData, std::size_t inCount, const double* inTaps, std::size_t inNumSections,
                   double* ioState)
{
    for (std::size_t section = 0; section < inNumSections; ++section, inTaps += 6, ioState += 2) {
        const double b0 = inTaps[0], b1 = inTaps[1], b2 = inTaps[2], a1 = inTaps[4], a2 = inTaps[5];
        double s0 = ioState[0];
        double s1 = ioState[1];
        for (std::size_t n = 0; n < inCount; ++n) {
            const double x = ioData[n];
            const double y = b0 * x + s0;
            s0 = b1 * x - a1 * y + s1;
            s1 = b2 * x - a2 * y;
            ioData[n] = y;
        }
        ioState[0] = s0;
        ioState[1] = s1;
    }
}

void Interpolate(const float* inSource, std::size_t inCount, std::size_t inFactor, const float* inTaps,
                 std::size_t inNumTaps, float* outDest)
{
    for (std::size_t n = 0; n < inCount; ++n) {
        for (std::size_t phase = 0; phase < inFactor; ++phase) {
            float sum = 0.0f;
            for (std::size_t k = phase, m = 0; k < inNumTaps; k += inFactor, ++m) {
                sum += inTaps[k] * *(inSource + n - m);
            }
            *outDest++ = sum;
        }
    }
}

void Decimate(const float* inSource, std::size_t inOutputs, std::size_t inFactor, const float* inTaps,
              std::size_t inNumTaps, float* outDest)
{
    for (std::size_t n = 0; n < inOutputs; ++n) {
        float sum = 0.0f;
        for (std::size_t k = 0; k < inNumTaps; ++k) {
            sum += inTaps[k] * *(inSource + n * inFactor - k);
        }
        outDest[n] = sum;
    }
}

} // namespace brisken::native
