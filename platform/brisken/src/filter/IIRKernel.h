#pragma once

#include <array>
#include <cstddef>

namespace brisken::filter {

/// Samples that the recursion may run ahead by, and what it then looks back on: twice as many.
inline constexpr std::size_t kMostLookAhead = 4;
inline constexpr std::size_t kSectionPast = 2 * kMostLookAhead;

/// `y[n] = sum over k of mFeed[k] x[n - k] - mBack1 y[n - s] - mBack2 y[n - 2 s]`, `s` being the look-ahead.
struct LookAheadForm
{
    std::array<double, kSectionPast + 1> mFeed{};
    double mBack1 = 0.0;
    double mBack2 = 0.0;
};

/// One second-order section in its forms with a look-ahead of 1 (the plain recursion), 2 and 4 samples.
using SectionForms = std::array<LookAheadForm, 3>;

/// Forms of the section with the taps `b0 b1 b2` and, for a leading denominator coefficient of 1, `a1 a2`.
SectionForms MakeSectionForms(double inB0, double inB1, double inB2, double inA1, double inA2);

/// The most recent samples of a signal, oldest first.
using SectionPast = std::array<double, kSectionPast>;

/// Filters `inCount` samples. `inSource` is readable from `kSectionPast` values before it to `kMostLookAhead`
/// values behind its end, and does not overlap `outDest`. `inPast` is what the section gave before. The first
/// `inPlain` samples take the plain recursion, as must the first eight after a change of taps, when past
/// input and output do not obey the recursion yet.
void SectionRow(const SectionForms& inForms, const double* inSource, std::size_t inCount, std::size_t inPlain,
                const SectionPast& inPast, double* outDest);

/// `ioDest[n] = inFeed * x - inBack * y` for a filter of order `inOrder`, the denominator's leading
/// coefficient being left out of `inBack`. Both rows are readable from `inOrder` values before their start,
/// and do not overlap.
void RecursionRow(const double* inFeed, const double* inBack, std::size_t inOrder, const double* inSource,
                  std::size_t inCount, double* ioDest);

} // namespace brisken::filter
