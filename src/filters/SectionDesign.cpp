#include "filters/SectionDesign.h"

#include <cmath>

namespace tessaro::design {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kRoot2 = 1.41421356237;
/// From this gain up or down the band edge lies a fixed distance from the whole gain, in dB.
constexpr double kWideGain = 6.0;
constexpr double kWideEdge = 3.0;
/// Difference of energies up to which a shelf counts as flat.
constexpr double kFlatShelf = 1.65436e-24;

double FromDecibels(double inDecibels)
{
    return std::pow(10.0, inDecibels / 20.0);
}

double EdgeGain(double inGain)
{
    if (inGain > kWideGain) {
        return inGain - kWideEdge;
    }
    if (inGain <= -kWideGain) {
        return inGain + kWideEdge;
    }
    return inGain / 2.0;
}

/// What gives the width its place on the slope: the `R` of the designs.
double EdgeRatio(double inGain)
{
    const double edge = FromDecibels(EdgeGain(inGain));
    const double full = FromDecibels(inGain);
    return std::sqrt((edge * edge - 1.0) / (full * full - edge * edge));
}

/// A polynomial of second order, of which only ratios count.
struct Quadratic
{
    double mE0;
    double mE1;
    double mE2;
};

Quadratic ShelfPrototype(double inN)
{
    const double square = inN * inN;
    return {square + 1.0 + kRoot2 * inN, 2.0 * (square - 1.0), square + 1.0 - kRoot2 * inN};
}

/// Moves a prototype from a quarter of the sample rate by an all-pass substitution.
Quadratic Shift(const Quadratic& inPrototype, double inT)
{
    const auto [e0, e1, e2] = inPrototype;
    return {e0 + e1 * inT + e2 * inT * inT, (e0 + e2) * 2.0 * inT + e1 * (inT * inT + 1.0),
            e0 * inT * inT + e1 * inT + e2};
}

/// Place of the corner on the slope.
double CornerGain(double inGain)
{
    const double full = FromDecibels(inGain);
    if (inGain > -kWideGain && inGain < kWideGain) {
        return std::sqrt(full);
    }
    return full > 1.0 ? full / kRoot2 : full * kRoot2;
}

} // namespace

SectionCoefficients<double> FirstOrderHighShelf(double inFrequency, double inGain)
{
    SectionCoefficients<double> result;
    if (inGain == 0.0) {
        return result;
    }
    const double full = FromDecibels(inGain);
    const double alpha = EdgeRatio(inGain) / std::tan(kPi * inFrequency);
    result.b0 = (1.0 + alpha * full) / (1.0 + alpha);
    result.b1 = (1.0 - alpha * full) / (1.0 + alpha);
    result.a1 = (1.0 - alpha) / (1.0 + alpha);
    return result;
}

SectionCoefficients<double> FirstOrderLowShelf(double inFrequency, double inGain)
{
    SectionCoefficients<double> result;
    if (inGain == 0.0) {
        return result;
    }
    const double full = FromDecibels(inGain);
    const double beta = EdgeRatio(inGain) * std::tan(kPi * inFrequency);
    result.b0 = (1.0 + beta * full) / (1.0 + beta);
    result.b1 = (beta * full - 1.0) / (1.0 + beta);
    result.a1 = (beta - 1.0) / (1.0 + beta);
    return result;
}

SectionCoefficients<double> Peak(double inFrequency, double inBandwidth, double inGain)
{
    SectionCoefficients<double> result;
    if (inGain == 0.0) {
        return result;
    }
    const double full = FromDecibels(inGain);
    const double beta = EdgeRatio(inGain) * std::tan(kPi * inBandwidth);
    result.b0 = (1.0 + full * beta) / (1.0 + beta);
    result.b1 = -2.0 * std::cos(2.0 * kPi * inFrequency) / (1.0 + beta);
    result.b2 = (1.0 - full * beta) / (1.0 + beta);
    result.a1 = result.b1;
    result.a2 = (1.0 - beta) / (1.0 + beta);
    return result;
}

SectionCoefficients<double> SecondOrderLowShelf(double inFrequency, double inGain)
{
    const double t = std::tan((inFrequency - 0.25) * kPi);
    const double full = FromDecibels(inGain);
    const double corner = CornerGain(inGain);
    const double difference = full * full - corner * corner;
    double p = 1.0;
    if (std::fabs(difference) > kFlatShelf) {
        p = std::pow((corner * corner - 1.0) / difference, 0.25);
    }
    const auto numerator = Shift(ShelfPrototype(p * std::sqrt(full)), t);
    const auto denominator = Shift(ShelfPrototype(p), t);
    SectionCoefficients<double> result;
    result.b0 = numerator.mE0 / denominator.mE0;
    result.b1 = numerator.mE1 / denominator.mE0;
    result.b2 = numerator.mE2 / denominator.mE0;
    result.a1 = denominator.mE1 / denominator.mE0;
    result.a2 = denominator.mE2 / denominator.mE0;
    return result;
}

SectionCoefficients<double> SecondOrderHighShelf(double inFrequency, double inGain)
{
    auto result = SecondOrderLowShelf(0.5 - inFrequency, inGain);
    result.b1 = -result.b1;
    result.a1 = -result.a1;
    return result;
}

} // namespace tessaro::design
