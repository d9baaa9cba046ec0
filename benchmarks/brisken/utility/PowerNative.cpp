#include "PowerNative.h"

#include <cmath>

namespace plain {

void PowerFloat(unsigned inCount, const float* inA, double inExponent, float* out)
{
    const auto exponent = static_cast<float>(inExponent);
    for (unsigned i = 0; i < inCount; ++i) {
        out[i] = std::pow(inA[i], exponent);
    }
}

void PowerDouble(unsigned inCount, const float* inA, double inExponent, float* out)
{
    for (unsigned i = 0; i < inCount; ++i) {
        out[i] = static_cast<float>(std::pow(static_cast<double>(inA[i]), inExponent));
    }
}

} // namespace plain
