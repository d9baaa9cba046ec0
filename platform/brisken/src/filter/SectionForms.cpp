#include <cstddef>

#include "filter/IIRKernel.h"

namespace brisken::filter {

namespace {

/// With `A(z) = 1 + a1 z^-s + a2 z^-2s`, multiplies numerator and denominator by `A` with its odd power
/// negated. The product `A(z) A(-z)` has even powers only, so the look-ahead doubles.
LookAheadForm Double(const LookAheadForm& inForm, std::size_t inLookAhead)
{
    const auto a1 = inForm.mBack1;
    const auto a2 = inForm.mBack2;
    LookAheadForm doubled;
    for (std::size_t k = 0; k <= 2 * inLookAhead; ++k) {
        doubled.mFeed[k] += inForm.mFeed[k];
        doubled.mFeed[k + inLookAhead] -= a1 * inForm.mFeed[k];
        doubled.mFeed[k + 2 * inLookAhead] += a2 * inForm.mFeed[k];
    }
    doubled.mBack1 = 2.0 * a2 - a1 * a1;
    doubled.mBack2 = a2 * a2;
    return doubled;
}

} // namespace

SectionForms MakeSectionForms(double inB0, double inB1, double inB2, double inA1, double inA2)
{
    SectionForms forms;
    forms[0] = {{inB0, inB1, inB2}, inA1, inA2};
    forms[1] = Double(forms[0], 1);
    forms[2] = Double(forms[1], 2);
    return forms;
}

} // namespace brisken::filter
