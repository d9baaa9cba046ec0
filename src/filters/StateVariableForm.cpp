#include "filters/StateVariableForm.h"

#include <algorithm>
#include <cmath>

namespace tessaro {

namespace {

/// The direct form without its straight path, in the letters of the formulas:
/// `H = b0 + (c1 z + c2) / (z^2 + a1 z + a2)`, and `h` half of `a1`.
struct Residue
{
    explicit Residue(const SectionCoefficients<double>& inSection)
        : a1(inSection.a1),
          a2(inSection.a2),
          c1(inSection.b1 - inSection.b0 * inSection.a1),
          c2(inSection.b2 - inSection.b0 * inSection.a2),
          h(inSection.a1 / 2.0)
    {
    }

    double a1;
    double a2;
    double c1;
    double c2;
    double h;
};

void ClearCoupledForm(SectionCoefficients<double>& ioSection)
{
    for (const auto field : SectionCoefficients<double>::CoupledFields()) {
        ioSection.*field = 0.0;
    }
}

/// The form for real poles, with input into one state only.
void ConvertWithOneInput(const Residue& inResidue, SectionCoefficients<double>& ioSection)
{
    const auto [a1, a2, c1, c2, h] = inResidue;
    ioSection.B1 = 0.0;
    ioSection.A12 = std::sqrt(std::max(0.0, (a2 - 3.0) * h * h / (a2 + 1.0) + 1.0));
    ioSection.A21 = (h * h - a2) / ioSection.A12;
    ioSection.B2 = std::sqrt(std::max(0.0, ((a2 + 1.0) * (a2 + 1.0) - a1 * a1) * (1.0 - a2) /
                                               ((h * h + 1.0) * (a2 + 1.0) - a1 * a1)));
    ioSection.C1 = (c2 - h * c1) / (ioSection.B2 * ioSection.A12);
    ioSection.C2 = c1 / ioSection.B2;
}

/// The form for a pair of conjugate poles; `inT1` and `inT2` are the squares of the two input gains.
void ConvertWithTwoInputs(const Residue& inResidue, double inT1, double inT2,
                          SectionCoefficients<double>& ioSection)
{
    const auto [a1, a2, c1, c2, h] = inResidue;
    const double b1 = std::sqrt(inT1);
    const double b2 = std::sqrt(inT2);
    const double a21 = std::sqrt((b2 * b2 + a2 - 1.0) * (h * h - a2) / (b1 * b1 + a2 - 1.0));
    const double a12 = (h * h - a2) / a21;
    const double out1 = c1 / (2.0 * b1);
    const double out2 = c1 / (2.0 * b2);
    if (c1 < 0.0) {
        ioSection.B1 = -b2;
        ioSection.B2 = b1;
        ioSection.A12 = -a21;
        ioSection.A21 = -a12;
        ioSection.C1 = -out2;
        ioSection.C2 = out1;
    } else {
        ioSection.B1 = b1;
        ioSection.B2 = b2;
        ioSection.A12 = a12;
        ioSection.A21 = a21;
        ioSection.C1 = out1;
        ioSection.C2 = out2;
    }
}

} // namespace

void ConvertToStateVariableForm(SectionCoefficients<double>& ioSection)
{
    const Residue residue(ioSection);
    const auto [a1, a2, c1, c2, h] = residue;
    if (c1 == 0.0 && c2 == 0.0) {
        // Only the straight path is left; the formulas would divide 0 by 0.
        ClearCoupledForm(ioSection);
        ioSection.D = ioSection.b0;
        return;
    }
    ioSection.D = ioSection.b0;
    ioSection.A11 = ioSection.A22 = -h;
    if (a1 * a1 - 4.0 * a2 >= 0.0) {
        ConvertWithOneInput(residue, ioSection);
        return;
    }
    const double r = c2 / c1;
    const double q = std::sqrt(r * r - r * a1 + a2);
    const double e = ((a2 + 1.0) * (a2 + 1.0) - a1 * a1) * (a2 - 1.0);
    const auto squaredInput = [a1 = a1, a2 = a2, e](double inRoot) {
        return e / (2.0 * a1 * inRoot - (inRoot * inRoot + 1.0) * (a2 + 1.0));
    };
    const double t1 = squaredInput(r - q);
    const double t2 = squaredInput(r + q);
    // Written so that a NaN, which an infinite r gives, takes the other form as well.
    if (t1 >= 0.0 && t2 >= 0.0) {
        ConvertWithTwoInputs(residue, t1, t2, ioSection);
    } else {
        ConvertWithOneInput(residue, ioSection);
    }
}

} // namespace tessaro
