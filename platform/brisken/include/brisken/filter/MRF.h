#pragma once

#include <vector>

#include <brisken/Export.h>

namespace brisken {

/// A streaming multi-rate FIR filter with its taps and its past input. Opaque; made by `filter::MRFInit`.
struct MRFState_Float;

} // namespace brisken

/// Multi-rate FIR filters over float rows: rate conversion by `upFactor / downFactor` with the caller's own
/// low-pass.
///
/// Each input is put among `upFactor` values, at place `upPhase`, the others being 0; that row is filtered,
/// `z[p] = sum over k of taps[k] * u[p - k]`; of each `downFactor` values of the result the one at place
/// `downPhase` is kept. Only products that count are computed: an output costs `numTaps / upFactor` of them.
/// Taps are not scaled; for unity gain they sum to `upFactor`.
///
/// A state belongs to one thread at a time. No latency is added to that of the taps. Any split of a stream
/// into calls gives the same output to the last bit. The running sum is kept in single precision, fused where
/// the machine has it: an output is within `n * 2^-24 * sum of |products|` of the exact value, `n` being the
/// number of products.
///
/// A delay line is the past input, the most recent sample first: `line[0]` is `x[-1]`. At most
/// `(numTaps + upFactor - 1) / upFactor` values have any effect.
namespace brisken::filter {

/// Makes a filter with `inNumTaps` taps, which are copied, and puts it where `outState` points; what was
/// there is not looked at. A factor of 0 counts as 1, phases count modulo their factor. `inDelayLine` may be
/// null, meaning zeros, and values missing from it are 0. Without taps the output is 0. Throws
/// `std::bad_alloc`. [control]
BRISKEN_EXPORT void MRFInit(MRFState_Float** outState, unsigned inUpFactor, unsigned inDownFactor,
                            const float* inTaps, unsigned inNumTaps, const float* inDelayLine,
                            unsigned inDelayLineSize, unsigned inUpPhase, unsigned inDownPhase);

/// The same with the delay line, which is copied, in a vector of any allocator. [control]
template <typename Allocator>
void MRFInit(MRFState_Float** outState, unsigned inUpFactor, unsigned inDownFactor, const float* inTaps,
             unsigned inNumTaps, const std::vector<float, Allocator>& inDelayLine, unsigned inUpPhase,
             unsigned inDownPhase)
{
    MRFInit(outState, inUpFactor, inDownFactor, inTaps, inNumTaps, inDelayLine.data(),
            static_cast<unsigned>(inDelayLine.size()), inUpPhase, inDownPhase);
}

/// Null is allowed and does nothing. [control]
BRISKEN_EXPORT void MRFFree(MRFState_Float* inState);

/// Replaces the past input, as at the start. [configured], [real-time]
BRISKEN_EXPORT void MRFSetDlyLine(MRFState_Float* ioState, const float* inDelayLine,
                                  unsigned inDelayLineSize);

/// Runs `inNumIterations` iterations, any number; each takes `downFactor` inputs and gives `upFactor`
/// outputs. `inSource` may equal `outDest`, in a row that holds the longer of the two, but must not overlap
/// it otherwise. [configured], [real-time]
BRISKEN_EXPORT void MRFProcess(const float* inSource, float* outDest, unsigned inNumIterations,
                               MRFState_Float* ioState);

} // namespace brisken::filter
