#include <tessaro/filters/FilterResponse.h>

#include <cmath>
#include <complex>
#include <limits>

namespace tessaro {

namespace {

using Complex = std::complex<double>;

constexpr double kTwoPi = 6.283185307179586;
constexpr double kPi = 3.141592653589793;
/// Radians between the two phases of a group delay, and its inverse.
constexpr double kDelayStep = 0.0001;
constexpr double kDelayStepsPerRadian = 10000.0;
constexpr double kDelayFloor = 1e-6;
/// Share of the peak delay that an all-pass section has at the edges of its stretch, as single precision has
/// 0.9, and what is left of 1.
constexpr double kAllpassEdge = 0.8999999761581421;
constexpr double kAllpassEdgeRest = 0.10000002384185791;

/// A polynomial in `z^-1` on the unit circle.
Complex Evaluate(const double* inPolynomial, int inOrder, double inRadians)
{
    Complex sum = 0.0;
    for (int k = 0; k <= inOrder; ++k) {
        sum += inPolynomial[k] * std::polar(1.0, -inRadians * k);
    }
    return sum;
}

struct Response
{
    Response(const double* inSection, int inOrder, double inRadians)
        : mNumerator(Evaluate(inSection, inOrder, inRadians)),
          mDenominator(Evaluate(inSection + inOrder + 1, inOrder, inRadians))
    {
    }

    /// The quotient with the floor beside the denominator's energy and each term.
    Complex GetFlooredQuotient() const
    {
        const auto terms = mNumerator * std::conj(mDenominator);
        const double energy = std::norm(mDenominator) + kDelayFloor;
        return {(terms.real() + kDelayFloor) / energy, (terms.imag() + kDelayFloor) / energy};
    }

    Complex mNumerator;
    Complex mDenominator;
};

bool HasNaN(Complex inValue)
{
    return std::isnan(inValue.real()) || std::isnan(inValue.imag());
}

Complex CarefulQuotient(Complex inDividend, Complex inDivisor)
{
    if (HasNaN(inDividend) || HasNaN(inDivisor) || inDivisor == 0.0) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan};
    }
    return inDividend / inDivisor;
}

} // namespace

double GetMagnitudeResponse(double inRadians, const double* inSections, int inOrder, int inSectionCount)
{
    double product = 1.0;
    for (int i = 0; i < inSectionCount; ++i) {
        const Response response(inSections + i * 2 * (inOrder + 1), inOrder, inRadians);
        product *= std::abs(response.mNumerator) / std::abs(response.mDenominator);
    }
    return product;
}

double GetPhaseResponse(double inRadians, const double* inSections, int inOrder, int inSectionCount)
{
    double sum = 0.0;
    for (int i = 0; i < inSectionCount; ++i) {
        const Response response(inSections + i * 2 * (inOrder + 1), inOrder, inRadians);
        const auto quotient = response.mNumerator / response.mDenominator;
        sum += std::atan2(quotient.imag(), quotient.real());
    }
    return sum;
}

double GetGroupDelay(double inRadians, const double* inSections, int inOrder, int inSectionCount)
{
    double sum = 0.0;
    for (int i = 0; i < inSectionCount; ++i) {
        const double* section = inSections + i * 2 * (inOrder + 1);
        const auto here = Response(section, inOrder, inRadians).GetFlooredQuotient();
        const auto beyond = Response(section, inOrder, inRadians + kDelayStep).GetFlooredQuotient();
        const auto turn = CarefulQuotient(here, beyond);
        sum += kDelayStepsPerRadian * std::atan2(turn.imag(), turn.real());
    }
    return sum;
}

void DesignAllpassIIR(const double* inDelays, int inPointCount, int inSectionCount, double* outSections)
{
    // The curve counts once a point up to half the sample rate and once more on the way back, less both ends.
    const double length = 2.0 * inPointCount - 2.0;
    double delaySum = 0.0;
    for (int k = 0; k < inPointCount; ++k) {
        delaySum += inDelays[k];
    }
    const double missing = inSectionCount - delaySum / length;
    const auto bias = static_cast<float>(missing * kTwoPi / inPointCount * length / kTwoPi);

    int begin = 0;
    for (int section = 0; section < inSectionCount; ++section, outSections += 6) {
        int end = begin;
        for (double share = 0.0; end < inPointCount; ++end) {
            share += inDelays[end] + bias;
            if (!(share < length)) {
                break;
            }
        }
        const auto center = static_cast<float>((begin + end) * 0.5 * 2.0 * kPi / length);
        const double span = (end - begin) * kPi / length;
        const auto q = static_cast<float>((1.0 - kAllpassEdge * std::cos(span)) / kAllpassEdgeRest);
        const double wideQ = q;
        const double r = wideQ - std::sqrt(wideQ * wideQ - 1.0);
        const double middle = -2.0 * r * std::cos(static_cast<double>(center));
        outSections[0] = outSections[5] = r * r;
        outSections[1] = outSections[4] = middle;
        outSections[2] = outSections[3] = 1.0;
        begin = end;
    }
}

} // namespace tessaro
