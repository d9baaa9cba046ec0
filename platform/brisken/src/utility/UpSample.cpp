#include <brisken/utility/Convolution.h>

#include <cstddef>

#include <brisken/utility/Fill.h>

namespace brisken::utility {

namespace {

template <class T>
void Spread(unsigned inCount, const T* inA, T* out, unsigned inFactor, unsigned* ioPhase)
{
    if (inFactor == 0) {
        return;
    }
    const unsigned phase = ioPhase != nullptr ? *ioPhase % inFactor : 0;
    if (ioPhase != nullptr) {
        *ioPhase = phase;
    }
    T* group = out;
    for (unsigned i = 0; i < inCount; ++i, group += inFactor) {
        for (unsigned k = 0; k < inFactor; ++k) {
            group[k] = 0;
        }
        group[phase] = inA[i];
    }
}

} // namespace

void UpSample(unsigned inCount, const float* inA, float* out, unsigned inFactor, unsigned* ioPhase)
{
    Spread(inCount, inA, out, inFactor, ioPhase);
}

void UpSample(unsigned inCount, const double* inA, double* out, unsigned inFactor, unsigned* ioPhase)
{
    Spread(inCount, inA, out, inFactor, ioPhase);
}

} // namespace brisken::utility
