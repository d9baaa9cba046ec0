#pragma once

#include "transform/Plan.h"

/// The transforms on the active target. Work memory is aligned to kAlignment and holds the plan's
/// GetWorkElements; it may be null where that is 0. Output may be the same memory as input in any
/// arrangement: everything is read before the first result is stored.
namespace brisken::transform::details {

/// Separate real and imaginary parts, results times inScale. The inverse is the forward transform with the
/// parts exchanged on both sides.
void TransformSplit(const Plan<float>& inPlan, const float* inRe, const float* inIm, float* outRe,
                    float* outIm, float inScale, float* ioWork);
void TransformSplit(const Plan<double>& inPlan, const double* inRe, const double* inIm, double* outRe,
                    double* outIm, double inScale, double* ioWork);

/// Interleaved complex numbers. With inSign -1 the conjugates are transformed and the results conjugated,
/// which is the inverse.
void TransformPairs(const Plan<double>& inPlan, const double* inPairs, double* outPairs, double inSign,
                    double inScale, double* ioWork);

/// Samples to bins; the inverse divides by the length.
void RealForward(const RealPlan<float>& inPlan, const float* inSamples, float* outBins, float* ioWork);
void RealForward(const RealPlan<double>& inPlan, const double* inSamples, double* outBins, double* ioWork);
void RealInverse(const RealPlan<float>& inPlan, const float* inBins, float* outSamples, float* ioWork);
void RealInverse(const RealPlan<double>& inPlan, const double* inBins, double* outSamples, double* ioWork);

} // namespace brisken::transform::details
