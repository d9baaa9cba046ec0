#pragma once

#include <cstddef>

namespace brisken::utility {

/// The power series of the modified Bessel function of order 0, I0(x) = sum over k of ((x / 2)^k / k!)^2, cut
/// where it has converged for all arguments up to alpha.
struct BesselSeries
{
    explicit BesselSeries(double inAlpha);

    static constexpr std::size_t kMaxTerms = 640; // enough for the largest alpha

    double alphaSquared;
    double scale;                  // 1 / I0(alpha)
    std::size_t terms;             // beyond the one of k = 0
    double factors[kMaxTerms + 1]; // 1 / k^2: what each term is of the one before it, times (x / 2)^2
};

} // namespace brisken::utility
