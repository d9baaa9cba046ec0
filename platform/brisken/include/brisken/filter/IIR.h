#pragma once

#include <brisken/Export.h>

namespace brisken {

/// A streaming recursive filter with its taps and its past input and output. Opaque; made by
/// `filter::IIRInit` or `filter::IIRInit_BiQuad`.
struct IIRState_Double;

} // namespace brisken

/// Recursive filters over double rows, single or as a cascade of second-order sections.
///
/// `a0 y[n] = b0 x[n] + b1 x[n-1] + ... - a1 y[n-1] - a2 y[n-2] - ...`
///
/// A state belongs to one thread at a time. The filters add no latency. Any split of a stream into rows gives
/// the same output to the last bit. An input that is not finite stays in the recursion until `IIRSetDlyLine`
/// replaces the past.
///
/// The memory of a filter is its past input and output themselves, as in direct form I. New taps therefore go
/// on from the signal as it was, with no jump beyond what the new response brings. The delay line holds, the
/// most recent sample first:
/// - single filter: `order` values of past input, then `order` values of past output;
/// - cascade: two values of past input, then for each section in order two values of its past output, which
///   are the past input of the next: `2 * (numBiquads + 1)` values.
///
/// Sections run several samples at once, by scattered look-ahead (Parhi and Messerschmitt, "Pipeline
/// interleaving and parallelism in recursive digital filters", 1989): numerator and denominator are both
/// multiplied by the polynomial that turns the denominator into one of every second or fourth power, whose
/// extra poles lie at the radius of the filter's own and are cancelled. The response is that of taps changed
/// by a few units in their last place: with full-scale noise through a resonance of unity gain, output is
/// within `2^-50 / (1 - radius)` of exact arithmetic, -220 dB for a pole radius of 0.9999. Zeros on the unit
/// circle are as deep as those taps make them: a constant of 1 leaves less than `2^-52 / (1 - radius)^2` of
/// itself behind a high-pass with unity gain, -180 dB at 20 Hz and a rate of 192 kHz.
namespace brisken::filter {

/// Makes a filter of order `inOrder`, which may be 0, and puts it where `outState` points; what was there is
/// not looked at. `inTaps` holds `inOrder + 1` numerator and then `inOrder + 1` denominator coefficients, all
/// of which are divided by the leading denominator coefficient. That must not be 0. `inDelayLine` may be
/// null, meaning zeros. Orders above 2 run sample by sample; high orders are better split into sections.
/// Throws `std::bad_alloc`. [control]
BRISKEN_EXPORT void IIRInit(IIRState_Double** outState, const double* inTaps, unsigned inOrder,
                            const double* inDelayLine);

/// Makes a cascade of `inNumBiquads` sections of six taps each: `b0 b1 b2 a0 a1 a2`, divided by `a0`, which
/// must not be 0. No section at all passes the input on. Otherwise as `IIRInit`. [control]
BRISKEN_EXPORT void IIRInit_BiQuad(IIRState_Double** outState, const double* inTaps, unsigned inNumBiquads,
                                   const double* inDelayLine);

/// Null is allowed and does nothing. [control]
BRISKEN_EXPORT void IIRFree(IIRState_Double* inState);

/// Replaces the taps by as many others, in the form given at the start; past input and output stay.
/// [configured], [real-time]
BRISKEN_EXPORT void IIRSetTaps(IIRState_Double* ioState, const double* inTaps);

/// Replaces past input and output; null means zeros. [configured], [real-time]
BRISKEN_EXPORT void IIRSetDlyLine(IIRState_Double* ioState, const double* inDelayLine);

/// Filters `inCount` samples, any number. `inSource` may equal `outDest`, but must not overlap it otherwise.
/// [configured], [real-time]
BRISKEN_EXPORT void IIR(unsigned inCount, const double* inSource, double* outDest, IIRState_Double* ioState);

/// `IIR` with `ioData` as source and destination. [configured], [real-time]
BRISKEN_EXPORT void IIR_InPlace(unsigned inCount, double* ioData, IIRState_Double* ioState);

/// Filters rows in place, each by `inNumStates` filters one after the other; the states lie row by row. Does
/// what `IIR_InPlace` with each state in turn does, and differs from it by rounding only. Filters of one
/// section run side by side in a single pass (`RunSectionCascade`), which is several times as fast; their
/// own recursion then goes sample by sample. Rows and states are distinct. [configured], [real-time]
BRISKEN_EXPORT void IIRSeries_InPlace(unsigned inCount, unsigned inNumRows, double* const* ioRows,
                                      unsigned inNumStates, IIRState_Double* const* ioStates);

} // namespace brisken::filter
