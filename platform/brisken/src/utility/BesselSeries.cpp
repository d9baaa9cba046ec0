#include "utility/BesselSeries.h"

#include <algorithm>
#include <cmath>

namespace brisken::utility {

namespace {

constexpr double kMaxAlpha = 700.0;   // I0 of more leaves the range of double
constexpr double kNegligible = 1e-18; // of the sum

} // namespace

BesselSeries::BesselSeries(double inAlpha)
{
    const double alpha = std::min(std::abs(inAlpha), kMaxAlpha);
    alphaSquared = alpha * alpha;
    double term = 1.0;
    double sum = 1.0;
    terms = 0;
    while (term > sum * kNegligible && terms < kMaxTerms) {
        ++terms;
        factors[terms] = 1.0 / (static_cast<double>(terms) * static_cast<double>(terms));
        term *= 0.25 * alphaSquared * factors[terms];
        sum += term;
    }
    scale = 1.0 / sum;
}

} // namespace brisken::utility
