#pragma once

#include <brisken/Export.h>

namespace brisken {

/// A streaming FIR filter with its taps and its past input. Opaque; made by `filter::FIRInit`.
struct FIRState_Float;

} // namespace brisken

/// Direct-form FIR filters over float rows: `y[n] = sum over k of taps[k] * x[n - k]`.
///
/// A state belongs to one thread at a time. The filter itself adds no latency; the output starts with the
/// first input. Any split of a stream into rows gives the same output to the last bit. The running sum is
/// kept in single precision, fused where the machine has it, so an output is within `numTaps * 2^-24 * sum of
/// |taps[k] * x[n - k]|` of the exact value. An input that is not finite is gone from the output after
/// `numTaps` samples.
///
/// A delay line is the past input, the most recent sample first: `numTaps - 1` values, of which `line[0]` is
/// `x[-1]`.
namespace brisken::filter {

/// Makes a filter with `inNumTaps` taps, which are copied, and puts it where `outState` points; what was
/// there is not looked at. `inDelayLine` may be null, meaning zeros. A filter without taps gives zeros.
/// Throws `std::bad_alloc`. [control]
BRISKEN_EXPORT void FIRInit(FIRState_Float** outState, const float* inTaps, unsigned inNumTaps,
                            const float* inDelayLine);

/// Null is allowed and does nothing. [control]
BRISKEN_EXPORT void FIRFree(FIRState_Float* inState);

/// Replaces the taps by as many others; the past input stays. [configured], [real-time]
BRISKEN_EXPORT void FIRSetTaps(FIRState_Float* ioState, const float* inTaps);

/// Replaces the past input; null means zeros. [configured], [real-time]
BRISKEN_EXPORT void FIRSetDlyLine(FIRState_Float* ioState, const float* inDelayLine);

/// Filters `inCount` samples, any number. `inSource` may equal `outDest`, but must not overlap it otherwise.
/// [configured], [real-time]
BRISKEN_EXPORT void FIR(FIRState_Float* ioState, unsigned inCount, const float* inSource, float* outDest);

/// Filters one sample, of the same stream as the rows. For short calls this is much quicker than a row of
/// one; it sums in another order, so that results agree within the bound above and not to the bit.
/// [configured], [real-time]
BRISKEN_EXPORT float FIR(FIRState_Float* ioState, float inSample);

} // namespace brisken::filter
