#include <brisken/filter/LowpassDesign.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace brisken::filter {

namespace {

constexpr double kPi = std::numbers::pi;

/// Weight at `inPosition` from 0 to 1 across the window.
double BlackmanWeight(double inPosition)
{
    const auto weight =
        0.42 - 0.5 * std::cos(2.0 * kPi * inPosition) + 0.08 * std::cos(4.0 * kPi * inPosition);
    // The ends are 0, which rounding would miss by either sign.
    return std::abs(weight) < 1e-15 ? 0.0 : weight;
}

double IdealLowpass(double inCutoff, double inDistance)
{
    const auto angle = 2.0 * kPi * inCutoff * inDistance;
    return inDistance == 0.0 ? 2.0 * inCutoff : std::sin(angle) / (kPi * inDistance);
}

} // namespace

unsigned FIRGetWorkBufferSize(unsigned inNumTaps)
{
    return inNumTaps * static_cast<unsigned>(sizeof(double));
}

void GenerateLowpassFIRCoefficients(double inCutoff, unsigned inNumTaps, double* outTaps,
                                    utility::DSPWindowType, bool inNormalize, unsigned char*)
{
    const auto cutoff = std::clamp(inCutoff, 0.0, 0.5);
    const auto last = static_cast<double>(inNumTaps) - 1.0;
    for (unsigned i = 0; i < (inNumTaps + 1) / 2; ++i) {
        const auto position = static_cast<double>(i);
        const auto weight = inNumTaps > 1 ? BlackmanWeight(position / last) : 1.0;
        const auto tap = weight * IdealLowpass(cutoff, position - 0.5 * last);
        outTaps[i] = tap;
        outTaps[inNumTaps - 1 - i] = tap;
    }
    const auto sum = std::accumulate(outTaps, outTaps + inNumTaps, 0.0);
    if (inNormalize && sum != 0.0) {
        std::for_each(outTaps, outTaps + inNumTaps, [sum](double& ioTap) { ioTap /= sum; });
    }
}

} // namespace brisken::filter
