#pragma once

#include <cstddef>
#include <vector>

#include "filter/AlignedArray.h"

namespace brisken::filter {

/// A recursive filter of any order from 1 on, sample by sample.
class LongRecursion
{
public:
    explicit LongRecursion(std::size_t inOrder);

    /// `inOrder + 1` numerator and as many denominator coefficients.
    void SetTaps(const double* inTaps);

    /// `inOrder` values of past input, then as many of past output; null means zeros.
    void SetDelayLine(const double* inDelayLine);

    void Process(std::size_t inCount, const double* inSource, double* outDest);

private:
    std::size_t mOrder;
    std::vector<double> mFeed;
    std::vector<double> mBack;
    /// Chunks of input and output, each behind its past, oldest first.
    AlignedArray<double> mSource;
    AlignedArray<double> mDest;
};

} // namespace brisken::filter
