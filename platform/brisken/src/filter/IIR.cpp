#include <brisken/filter/IIR.h>

#include <memory>
#include <variant>

#include "filter/BiquadCascade.h"
#include "filter/LongRecursion.h"

namespace brisken {

struct IIRState_Double
{
    std::variant<filter::BiquadCascade, filter::LongRecursion> mFilter;
};

} // namespace brisken

namespace brisken::filter {

namespace {

template <typename Filter>
void Init(IIRState_Double** outState, Filter inFilter, const double* inTaps, const double* inDelayLine)
{
    auto state = std::make_unique<IIRState_Double>(IIRState_Double{std::move(inFilter)});
    IIRSetTaps(state.get(), inTaps);
    IIRSetDlyLine(state.get(), inDelayLine);
    *outState = state.release();
}

} // namespace

void IIRInit(IIRState_Double** outState, const double* inTaps, unsigned inOrder, const double* inDelayLine)
{
    if (inOrder <= 2) {
        Init(outState, BiquadCascade(inOrder, 1), inTaps, inDelayLine);
    } else {
        Init(outState, LongRecursion(inOrder), inTaps, inDelayLine);
    }
}

void IIRInit_BiQuad(IIRState_Double** outState, const double* inTaps, unsigned inNumBiquads,
                    const double* inDelayLine)
{
    Init(outState, BiquadCascade(2, inNumBiquads), inTaps, inDelayLine);
}

void IIRFree(IIRState_Double* inState)
{
    delete inState;
}

void IIRSetTaps(IIRState_Double* ioState, const double* inTaps)
{
    std::visit([inTaps](auto& ioFilter) { ioFilter.SetTaps(inTaps); }, ioState->mFilter);
}

void IIRSetDlyLine(IIRState_Double* ioState, const double* inDelayLine)
{
    std::visit([inDelayLine](auto& ioFilter) { ioFilter.SetDelayLine(inDelayLine); }, ioState->mFilter);
}

void IIR(unsigned inCount, const double* inSource, double* outDest, IIRState_Double* ioState)
{
    std::visit([=](auto& ioFilter) { ioFilter.Process(inCount, inSource, outDest); }, ioState->mFilter);
}

void IIR_InPlace(unsigned inCount, double* ioData, IIRState_Double* ioState)
{
    IIR(inCount, ioData, ioData, ioState);
}

} // namespace brisken::filter
