#include "transform/Kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "transform/KernelsDouble.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"
#include "transform/Real-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::transform {
namespace HWY_NAMESPACE {

void TransformSplitDouble(const details::Plan<double>& inPlan, const double* inRe, const double* inIm,
                          double* outRe, double* outIm, double inScale, double* ioWork)
{
    Transform(inPlan, SplitInput<double>{inRe, inIm}, SplitOutput<double>{outRe, outIm, inScale}, ioWork);
}

void TransformPairsDouble(const details::Plan<double>& inPlan, const double* inPairs, double* outPairs,
                          double inSign, double inScale, double* ioWork)
{
    Transform(inPlan, PairInput<double>{inPairs, inSign},
              PairOutput<double>{outPairs, inScale, inSign * inScale}, ioWork);
}

void RealForwardDouble(const details::RealPlan<double>& inPlan, const double* inSamples, double* outBins,
                       double* ioWork)
{
    SamplesToBins(inPlan, inSamples, outBins, ioWork);
}

void RealInverseDouble(const details::RealPlan<double>& inPlan, const double* inBins, double* outSamples,
                       double* ioWork)
{
    BinsToSamples(inPlan, inBins, outSamples, ioWork);
}

} // namespace HWY_NAMESPACE
} // namespace brisken::transform
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace brisken::transform {

HWY_EXPORT(TransformSplitDouble);
HWY_EXPORT(TransformPairsDouble);
HWY_EXPORT(RealForwardDouble);
HWY_EXPORT(RealInverseDouble);

namespace details {

void TransformSplit(const Plan<double>& inPlan, const double* inRe, const double* inIm, double* outRe,
                    double* outIm, double inScale, double* ioWork)
{
    BRISKEN_DISPATCH(TransformSplitDouble)(inPlan, inRe, inIm, outRe, outIm, inScale, ioWork);
}

void TransformPairs(const Plan<double>& inPlan, const double* inPairs, double* outPairs, double inSign,
                    double inScale, double* ioWork)
{
    BRISKEN_DISPATCH(TransformPairsDouble)(inPlan, inPairs, outPairs, inSign, inScale, ioWork);
}

void RealForward(const RealPlan<double>& inPlan, const double* inSamples, double* outBins, double* ioWork)
{
    BRISKEN_DISPATCH(RealForwardDouble)(inPlan, inSamples, outBins, ioWork);
}

void RealInverse(const RealPlan<double>& inPlan, const double* inBins, double* outSamples, double* ioWork)
{
    BRISKEN_DISPATCH(RealInverseDouble)(inPlan, inBins, outSamples, ioWork);
}

} // namespace details

} // namespace brisken::transform

#endif
