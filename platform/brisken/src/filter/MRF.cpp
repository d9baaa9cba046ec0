#include <brisken/filter/MRF.h>

#include <algorithm>
#include <memory>

#include "filter/MultiRateFilter.h"

namespace brisken {

struct MRFState_Float
{
    filter::MultiRateFilter mFilter;
};

} // namespace brisken

namespace brisken::filter {

void MRFInit(MRFState_Float** outState, unsigned inUpFactor, unsigned inDownFactor, const float* inTaps,
             unsigned inNumTaps, const float* inDelayLine, unsigned inDelayLineSize, unsigned inUpPhase,
             unsigned inDownPhase)
{
    const auto up = std::max(inUpFactor, 1u);
    const auto down = std::max(inDownFactor, 1u);
    auto state = std::make_unique<MRFState_Float>(
        MRFState_Float{MultiRateFilter(up, down, inTaps, inNumTaps, inUpPhase % up, inDownPhase % down)});
    MRFSetDlyLine(state.get(), inDelayLine, inDelayLineSize);
    *outState = state.release();
}

void MRFFree(MRFState_Float* inState)
{
    delete inState;
}

void MRFSetDlyLine(MRFState_Float* ioState, const float* inDelayLine, unsigned inDelayLineSize)
{
    ioState->mFilter.SetDelayLine(inDelayLine, inDelayLineSize);
}

void MRFProcess(const float* inSource, float* outDest, unsigned inNumIterations, MRFState_Float* ioState)
{
    ioState->mFilter.Process(inSource, outDest, inNumIterations);
}

} // namespace brisken::filter
