#include <tessaro/filters/PoleZeroDesign.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "filters/Identity.h"

namespace tessaro {

namespace {

using Complex = std::complex<double>;
using Roots = std::vector<Complex>;

constexpr int kNumSecondOrderValues = 6;
/// Scale of a design whose own would divide by 0.
constexpr double kFallbackScale = 1e12;
const Complex kDC(1.0, 0.0);
const Complex kNyquist(-1.0, 0.0);

void SolveQuadratic(double inA, double inB, double inC, Roots& outRoots)
{
    outRoots.resize(2);
    const double discriminant = inB * inB - 4.0 * inA * inC;
    if (discriminant < 0.0) {
        const double real = -inB / (2.0 * inA);
        const double imaginary = std::sqrt(std::fabs(discriminant)) / (2.0 * inA);
        outRoots[0] = {real, imaginary};
        outRoots[1] = {real, -imaginary};
    } else {
        const double root = std::sqrt(discriminant);
        outRoots[0] = (-inB + root) / (2.0 * inA);
        outRoots[1] = (-inB - root) / (2.0 * inA);
    }
}

/// Multiplies the polynomial, which starts as 1, by `(z - root)` for each root.
void Expand(Complex* ioPolynomial, const Roots& inRoots)
{
    for (const auto& root : inRoots) {
        for (std::size_t k = inRoots.size(); k > 0; --k) {
            ioPolynomial[k] = ioPolynomial[k - 1] - root * ioPolynomial[k];
        }
        ioPolynomial[0] = -root * ioPolynomial[0];
    }
}

Complex Sum(const Roots& inRoots)
{
    return std::accumulate(inRoots.begin(), inRoots.end(), Complex(0.0));
}

Complex Product(const Roots& inRoots)
{
    return std::accumulate(inRoots.begin(), inRoots.end(), Complex(1.0), std::multiplies<>());
}

/// The scale of low-pass (`inSign` -1) and high-pass (+1) that are not normalised.
Complex PassScale(const Roots& inPoles, double inSign)
{
    const auto sum = Sum(inPoles);
    const auto product = Product(inPoles);
    if (product == 0.0 || sum == 0.0) {
        return kFallbackScale;
    }
    return ((sum * (product + 1.0) + inSign * product) / 4.0) / (sum * product);
}

/// Scales both halves, on purpose: the response is that of the roots whatever the scale.
void ScaledCoefficients(Complex* outCoefficients, const Roots& inPoles, const Roots& inZeros, Complex inScale)
{
    GeneralCoefficients(outCoefficients, inPoles, inZeros);
    std::for_each_n(outCoefficients, kNumSecondOrderValues, [inScale](auto& ioValue) { ioValue *= inScale; });
}

} // namespace

void ComputePolesAndZeros(const double* inCoefficients, std::vector<std::complex<double>>& outPoles,
                          std::vector<std::complex<double>>& outZeros)
{
    SolveQuadratic(inCoefficients[3], inCoefficients[4], inCoefficients[5], outPoles);
    SolveQuadratic(inCoefficients[0], inCoefficients[1], inCoefficients[2], outZeros);
}

void GeneralCoefficients(std::complex<double>* outCoefficients,
                         const std::vector<std::complex<double>>& inPoles,
                         const std::vector<std::complex<double>>& inZeros)
{
    const auto order = std::max(inPoles.size(), inZeros.size());
    if (order == 0) {
        return;
    }
    FillIdentity(outCoefficients, static_cast<int>(order));
    Expand(outCoefficients, inZeros);
    Expand(outCoefficients + order + 1, inPoles);
}

void LowpassCoefficients(std::complex<double>* outCoefficients,
                         const std::vector<std::complex<double>>& inPoles,
                         const std::vector<std::complex<double>>& inZeros, bool inNormalise)
{
    const auto scale =
        inNormalise ? 1.0 / GetAmplitudeResponseAtPoint(kDC, inPoles, inZeros) : PassScale(inPoles, -1.0);
    ScaledCoefficients(outCoefficients, inPoles, inZeros, scale);
}

void HighpassCoefficients(std::complex<double>* outCoefficients,
                          const std::vector<std::complex<double>>& inPoles,
                          const std::vector<std::complex<double>>& inZeros, bool inNormalise)
{
    const auto scale =
        inNormalise ? 1.0 / GetAmplitudeResponseAtPoint(kNyquist, inPoles, inZeros) : PassScale(inPoles, 1.0);
    ScaledCoefficients(outCoefficients, inPoles, inZeros, scale);
}

void LowShelfCoefficients(std::complex<double>* outCoefficients,
                          const std::vector<std::complex<double>>& inPoles,
                          const std::vector<std::complex<double>>& inZeros, bool inNormalise)
{
    const double scale = inNormalise ? 1.0 / GetAmplitudeResponseAtPoint(kNyquist, inPoles, inZeros) : 1.0;
    ScaledCoefficients(outCoefficients, inPoles, inZeros, scale);
}

void HighShelfCoefficients(std::complex<double>* outCoefficients,
                           const std::vector<std::complex<double>>& inPoles,
                           const std::vector<std::complex<double>>& inZeros, bool inNormalise)
{
    const double scale = inNormalise ? 1.0 / GetAmplitudeResponseAtPoint(kDC, inPoles, inZeros) : 1.0;
    ScaledCoefficients(outCoefficients, inPoles, inZeros, scale);
}

void PeakingCoefficients(std::complex<double>* outCoefficients,
                         const std::vector<std::complex<double>>& inPoles,
                         const std::vector<std::complex<double>>& inZeros, bool inNormalise)
{
    Complex scale;
    if (inNormalise) {
        scale = 1.0 / std::sqrt(GetAmplitudeResponseAtPoint(kNyquist, inPoles, inZeros) *
                                GetAmplitudeResponseAtPoint(kDC, inPoles, inZeros));
    } else {
        const auto zeroSum = Sum(inZeros);
        scale = zeroSum == 0.0 ? kFallbackScale : Sum(inPoles) / zeroSum;
    }
    ScaledCoefficients(outCoefficients, inPoles, inZeros, scale);
}

double GetAmplitudeResponseAtPoint(std::complex<double> inPoint,
                                   const std::vector<std::complex<double>>& inPoles,
                                   const std::vector<std::complex<double>>& inZeros)
{
    const auto energy = [inPoint](const Roots& inRoots) {
        double product = 1.0;
        for (const auto& root : inRoots) {
            product *= std::norm(inPoint - root);
        }
        return product;
    };
    return std::sqrt(energy(inZeros) / energy(inPoles));
}

double GetPhaseResponseAtPoint(std::complex<double> inPoint, const std::vector<std::complex<double>>& inPoles,
                               const std::vector<std::complex<double>>& inZeros)
{
    const auto angle = [inPoint](const Roots& inRoots) {
        double sum = 0.0;
        for (const auto& root : inRoots) {
            const auto distance = inPoint - root;
            sum += std::atan(distance.imag() / distance.real());
        }
        return sum;
    };
    return angle(inZeros) - angle(inPoles);
}

} // namespace tessaro
