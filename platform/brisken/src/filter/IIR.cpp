#include <brisken/filter/IIR.h>

#include <algorithm>
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

/// Rows and filters a row that run in one pass
constexpr unsigned kMostRows = 2;
constexpr unsigned kMostStates = 8;

BiquadCascade* FindSingle(IIRState_Double* inState)
{
    auto* const cascade = std::get_if<BiquadCascade>(&inState->mFilter);
    return cascade != nullptr && cascade->IsSingle() ? cascade : nullptr;
}

/// States of a row lie `inPitch` behind those of the row before.
void RunPass(unsigned inCount, unsigned inNumRows, double* const* ioRows, unsigned inNumStates,
             IIRState_Double* const* ioStates, unsigned inPitch)
{
    SectionTaps taps[kMostRows * kMostStates];
    SectionMemory memories[kMostRows * kMostStates];
    for (unsigned i = 0; i < inNumRows * inNumStates; ++i) {
        const auto* const single = FindSingle(ioStates[i / inNumStates * inPitch + i % inNumStates]);
        taps[i] = single->GetSingleTaps();
        memories[i] = single->GetSingleMemory();
    }
    RunSectionCascade(inNumRows, inCount, ioRows, inNumStates, taps, memories);
    for (unsigned i = 0; i < inNumRows * inNumStates; ++i) {
        FindSingle(ioStates[i / inNumStates * inPitch + i % inNumStates])->SetSingleMemory(memories[i]);
    }
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

void IIRSeries_InPlace(unsigned inCount, unsigned inNumRows, double* const* ioRows, unsigned inNumStates,
                       IIRState_Double* const* ioStates)
{
    const auto numAll = std::size_t{inNumRows} * inNumStates;
    if (!std::all_of(ioStates, ioStates + numAll, FindSingle)) {
        for (std::size_t i = 0; i < numAll; ++i) {
            IIR_InPlace(inCount, ioRows[i / inNumStates], ioStates[i]);
        }
        return;
    }
    for (unsigned row = 0; row < inNumRows; row += kMostRows) {
        for (unsigned state = 0; state < inNumStates; state += kMostStates) {
            RunPass(inCount, std::min(kMostRows, inNumRows - row), ioRows + row,
                    std::min(kMostStates, inNumStates - state), ioStates + row * inNumStates + state,
                    inNumStates);
        }
    }
}

} // namespace brisken::filter
