#pragma once

#include "transform/Plan.h"

/// The transforms on the active target. Work memory is aligned to kAlignment and holds the plan's
/// GetWorkElements; it may be null where that is 0. Output may be the same memory as input in any
/// arrangement: everything is read before the first result is stored.
namespace brisken::transform::detail {

/// Rows of a complex transform in separate parts. The inverse is the forward transform with the parts
/// exchanged on both sides.
template <class T>
struct SplitRows
{
    const T* re;
    const T* im;
    T* outRe;
    T* outIm;
    T scale;
};

/// Rows of interleaved complex numbers. With sign -1 the conjugates are transformed and the results
/// conjugated, which is the inverse.
template <class T>
struct PairRows
{
    const T* pairs;
    T* outPairs;
    T sign;
    T scale;
};

void TransformSplit(const Plan<float>& inPlan, const SplitRows<float>& inRows, float* ioWork);
void TransformSplit(const Plan<double>& inPlan, const SplitRows<double>& inRows, double* ioWork);

void TransformPairs(const Plan<float>& inPlan, const PairRows<float>& inRows, float* ioWork);
void TransformPairs(const Plan<double>& inPlan, const PairRows<double>& inRows, double* ioWork);

/// Samples to bins; the inverse divides by the length.
void RealForward(const RealPlan<float>& inPlan, const float* inSamples, float* outBins, float* ioWork);
void RealForward(const RealPlan<double>& inPlan, const double* inSamples, double* outBins, double* ioWork);
void RealInverse(const RealPlan<float>& inPlan, const float* inBins, float* outSamples, float* ioWork);
void RealInverse(const RealPlan<double>& inPlan, const double* inBins, double* outSamples, double* ioWork);

} // namespace brisken::transform::detail
