#pragma once

#include <tessaro/Export.h>

namespace tessaro {

/// Coefficients of `H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2)`.
struct SecondOrderIIRCoefficients
{
    double a1;
    double a2;
    double b0;
    double b1;
    double b2;
};

/// One second-order section in direct form II, for measuring filters such as a loudness weighting.
///
/// Give it coefficients, then process rows of any size; the output does not depend on how a stream is split.
/// It computes in double precision, yet rounds its state to single precision at every sample, which measured
/// figures are calibrated with. Without coefficients it puts out silence. New coefficients take effect at
/// once, the state stays.
///
/// Latency 0. A NaN or infinite input stays until `Reset`. Nothing allocates or throws: `[real-time]`
/// throughout. One thread at a time; a plain value, freely copied.
class TESSARO_EXPORT SecondOrderIIRFilter
{
public:
    SecondOrderIIRFilter();

    /// Filters `inCount` samples. Input and output may be the same row.
    void Process(unsigned inCount, const float* inInput, float* outOutput);

    /// Forgets the past; the coefficients stay.
    void Reset();

    void SetCoefficients(const SecondOrderIIRCoefficients& inCoefficients);

private:
    double mState1;
    double mState2;
    SecondOrderIIRCoefficients mCoefficients;
};

} // namespace tessaro
