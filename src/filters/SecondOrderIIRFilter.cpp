#include <tessaro/filters/SecondOrderIIRFilter.h>

namespace tessaro {

SecondOrderIIRFilter::SecondOrderIIRFilter() : mState1(0.0), mState2(0.0), mCoefficients{} {}

void SecondOrderIIRFilter::Process(unsigned inCount, const float* inInput, float* outOutput)
{
    const auto [a1, a2, b0, b1, b2] = mCoefficients;
    double s1 = mState1;
    double s2 = mState2;
    for (unsigned i = 0; i < inCount; ++i) {
        // The term of the newest state, on which the chain of samples hangs, comes in last.
        const double w = (inInput[i] - a2 * s2) - a1 * s1;
        outOutput[i] = static_cast<float>(b0 * w + b1 * s1 + b2 * s2);
        s2 = s1;
        s1 = static_cast<float>(w);
    }
    mState1 = s1;
    mState2 = s2;
}

void SecondOrderIIRFilter::Reset()
{
    mState1 = 0.0;
    mState2 = 0.0;
}

void SecondOrderIIRFilter::SetCoefficients(const SecondOrderIIRCoefficients& inCoefficients)
{
    mCoefficients = inCoefficients;
}

} // namespace tessaro
