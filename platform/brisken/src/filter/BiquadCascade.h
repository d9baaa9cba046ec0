#pragma once

#include <cstddef>
#include <vector>

#include <brisken/filter/SectionCascade.h>

#include "filter/AlignedArray.h"
#include "filter/IIRKernel.h"

namespace brisken::filter {

/// Sections of an order up to 2, one after the other over chunks of the row.
class BiquadCascade
{
public:
    BiquadCascade(std::size_t inOrder, std::size_t inNumSections);

    /// `inOrder + 1` numerator and as many denominator coefficients a section.
    void SetTaps(const double* inTaps);

    /// `inOrder` values of past input, then as many of past output a section; null means zeros.
    void SetDelayLine(const double* inDelayLine);

    void Process(std::size_t inCount, const double* inSource, double* outDest);

    /// A cascade of one section can run as part of a longer one, which takes its memory and brings it back.
    [[nodiscard]] bool IsSingle() const { return mSections.size() == 1; }
    [[nodiscard]] SectionTaps GetSingleTaps() const;
    [[nodiscard]] SectionMemory GetSingleMemory() const;
    void SetSingleMemory(const SectionMemory& inMemory);

private:
    void ProcessChunk(std::size_t inCount, const double* inSource, double* outDest);

    std::size_t mOrder;
    std::vector<SectionForms> mSections;
    /// Past input, and past output of each section.
    std::vector<SectionPast> mPasts;
    /// Samples until past and taps belong together again.
    std::size_t mPlainLeft = 0;
    /// A chunk of signal behind its past, from one section to the next.
    AlignedArray<double> mWindows[2];
};

} // namespace brisken::filter
