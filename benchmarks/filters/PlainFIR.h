#pragma once

#include <cstddef>

namespace plain {

/// Tap by tap over the whole row, the order that the compiler can vectorise. `inSource` has `inNumTaps - 1`
/// values of past before it.
void RunFIR(const float* inSource, std::size_t inCount, const float* inTaps, std::size_t inNumTaps,
            float* outDest);

} // namespace plain
