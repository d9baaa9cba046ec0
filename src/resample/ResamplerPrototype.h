#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro::utility {

/// The low-pass of a `Resampler` before it is split into phases: an odd number of taps, `inPhases` of them to
/// a sample of the source, of a sinc whose zeros lie `inScale` samples apart, under a Kaiser window. They sum
/// to `inPhases`.
[[nodiscard]] std::vector<float> MakeResamplerPrototype(std::size_t inTaps, std::int32_t inPhases,
                                                        double inScale);

} // namespace tessaro::utility
