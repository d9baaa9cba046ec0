#include "transform/Kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "transform/KernelsFloat.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"
#include "transform/Real-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::transform {
namespace HWY_NAMESPACE {

void TransformSplitFloat(const details::Plan<float>& inPlan, const float* inRe, const float* inIm,
                         float* outRe, float* outIm, float inScale, float* ioWork)
{
    Transform(inPlan, SplitInput<float>{inRe, inIm}, SplitOutput<float>{outRe, outIm, inScale}, ioWork);
}

void RealForwardFloat(const details::RealPlan<float>& inPlan, const float* inSamples, float* outBins,
                      float* ioWork)
{
    SamplesToBins(inPlan, inSamples, outBins, ioWork);
}

void RealInverseFloat(const details::RealPlan<float>& inPlan, const float* inBins, float* outSamples,
                      float* ioWork)
{
    BinsToSamples(inPlan, inBins, outSamples, ioWork);
}

} // namespace HWY_NAMESPACE
} // namespace brisken::transform
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace brisken::transform {

HWY_EXPORT(TransformSplitFloat);
HWY_EXPORT(RealForwardFloat);
HWY_EXPORT(RealInverseFloat);

namespace details {

void TransformSplit(const Plan<float>& inPlan, const float* inRe, const float* inIm, float* outRe,
                    float* outIm, float inScale, float* ioWork)
{
    BRISKEN_DISPATCH(TransformSplitFloat)(inPlan, inRe, inIm, outRe, outIm, inScale, ioWork);
}

void RealForward(const RealPlan<float>& inPlan, const float* inSamples, float* outBins, float* ioWork)
{
    BRISKEN_DISPATCH(RealForwardFloat)(inPlan, inSamples, outBins, ioWork);
}

void RealInverse(const RealPlan<float>& inPlan, const float* inBins, float* outSamples, float* ioWork)
{
    BRISKEN_DISPATCH(RealInverseFloat)(inPlan, inBins, outSamples, ioWork);
}

} // namespace details

} // namespace brisken::transform

#endif
