#include <tessaro/filters/ButterworthCascade.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessaro {

namespace {

constexpr double kHighestCutoff = 0.49;

/// Ascending powers, of `s` or of `1/z`; at most 4.
struct Polynomial
{
    std::size_t mDegree = 0;
    std::array<double, ButterworthCascade::kMostTerms> mTerms{};
};

Polynomial operator*(const Polynomial& inFirst, const Polynomial& inSecond)
{
    Polynomial product{inFirst.mDegree + inSecond.mDegree, {}};
    for (std::size_t i = 0; i <= inFirst.mDegree; ++i) {
        for (std::size_t k = 0; k <= inSecond.mDegree; ++k) {
            product.mTerms[i + k] += inFirst.mTerms[i] * inSecond.mTerms[k];
        }
    }
    return product;
}

Polynomial operator*(double inFactor, Polynomial inPolynomial)
{
    for (auto& term : inPolynomial.mTerms) {
        term *= inFactor;
    }
    return inPolynomial;
}

Polynomial operator+(Polynomial inFirst, const Polynomial& inSecond)
{
    inFirst.mDegree = std::max(inFirst.mDegree, inSecond.mDegree);
    for (std::size_t i = 0; i < inFirst.mTerms.size(); ++i) {
        inFirst.mTerms[i] += inSecond.mTerms[i];
    }
    return inFirst;
}

/// The frequency transformation: the prototype's variable becomes `mAbove / mBelow`.
struct Transformation
{
    Polynomial mAbove;
    Polynomial mBelow;
    std::size_t mDegree; ///< of the pair
};

Transformation MakeTransformation(int inType, double inEdge, double inUpperEdge)
{
    const Polynomial s{1, {0.0, 1.0}};
    const Polynomial edge{0, {inEdge}};
    const Polynomial width{1, {0.0, inUpperEdge - inEdge}};
    const Polynomial resonance{2, {inEdge * inUpperEdge, 0.0, 1.0}};
    switch (inType) {
    case ButterworthCascade::kHighpass:
        return {edge, s, 1};
    case ButterworthCascade::kBandpass:
        return {resonance, width, 2};
    case ButterworthCascade::kBandstop:
        return {width, resonance, 2};
    default:
        return {s, edge, 1};
    }
}

/// Puts `(1 - 1/z) / (1 + 1/z)` in place of the variable and multiplies by `(1 + 1/z)` to the given degree.
Polynomial Bilinear(const Polynomial& inAnalog, std::size_t inDegree)
{
    Polynomial digital{inDegree, {}};
    for (std::size_t power = 0; power <= inDegree; ++power) {
        Polynomial term{0, {inAnalog.mTerms[power]}};
        for (std::size_t factor = 0; factor < inDegree; ++factor) {
            term = term * Polynomial{1, {1.0, factor < power ? -1.0 : 1.0}};
        }
        digital = digital + term;
    }
    return digital;
}

ButterworthCascade::Section MakeSection(const Polynomial& inNumerator, const Polynomial& inDenominator,
                                        std::size_t inDegree)
{
    const auto numerator = Bilinear(inNumerator, inDegree);
    const auto denominator = Bilinear(inDenominator, inDegree);
    ButterworthCascade::Section section;
    for (std::size_t i = 0; i < section.mFeed.size(); ++i) {
        section.mFeed[i] = numerator.mTerms[i] / denominator.mTerms[0];
    }
    for (std::size_t i = 0; i < section.mBack.size(); ++i) {
        section.mBack[i] = denominator.mTerms[i + 1] / denominator.mTerms[0];
    }
    return section;
}

double LimitCutoff(double inCutoff)
{
    return inCutoff > kHighestCutoff ? kHighestCutoff : inCutoff;
}

} // namespace

ButterworthCascade::DesignError ButterworthCascade::Design(int inOrder, int inType, double inCutoff,
                                                           double inUpperCutoff, Section* outSections)
{
    if (inType < kLowpass || inType > kBandstop) {
        return kBadType;
    }
    if (inOrder < 1) {
        return kBadOrder;
    }
    const double cutoff = LimitCutoff(inCutoff);
    const double upperCutoff = LimitCutoff(inUpperCutoff);
    const bool isBand = inType == kBandpass || inType == kBandstop;
    if (!(cutoff > 0.0) || (isBand && !(upperCutoff > cutoff))) {
        return kBadFrequency;
    }

    const auto transformation = MakeTransformation(inType, std::tan(std::numbers::pi * cutoff),
                                                   std::tan(std::numbers::pi * upperCutoff));
    const auto& above = transformation.mAbove;
    const auto& below = transformation.mBelow;
    const int numSections = (inOrder + 1) / 2;
    for (int i = 1; i <= numSections; ++i) {
        if (2 * i == inOrder + 1) { // the real pole: s + 1
            outSections[i - 1] = MakeSection(below, above + below, transformation.mDegree);
        } else { // s^2 - 2 cos(angle) s + 1
            const double angle = (inOrder + 2 * i - 1) * std::numbers::pi / (2 * inOrder);
            outSections[i - 1] = MakeSection(
                below * below, above * above + -2.0 * std::cos(angle) * (above * below) + below * below,
                2 * transformation.mDegree);
        }
    }
    return kNoError;
}

} // namespace tessaro
