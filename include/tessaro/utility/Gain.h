#pragma once

#include <cstddef>
#include <cstdint>

#include <tessaro/Export.h>

/// Fixed and linearly ramped gain over a range of samples.
///
/// Rows are planar; `inOffset` and `inCount` choose samples `inOffset` to `inOffset + inCount - 1` of each
/// row, and a count of 0 or below does nothing. Gains are linear. For float and double. `[real-time]`,
/// `[any thread]`; nothing throws.
namespace tessaro {

/// Multiplies by `inGain`. A gain of exactly 0 writes zeros, which also ends NaN and infinity; a gain of
/// exactly 1 does nothing.
template <typename T>
TESSARO_EXPORT void ApplyGain(T* const* ioChannels, std::size_t inNumChannels, std::int64_t inOffset,
                              std::int64_t inCount, T inGain);

/// Multiplies by a gain that goes from `inStartGain` to `inEndGain` in equal steps. The first sample gets
/// exactly the start gain and the last falls one step short of the end gain: that belongs to the next block.
///
/// Sample `i` gets `inStartGain` with the step added `i` times over, in `T`, the same for each channel; the
/// rounding of this sum is part of the result. Equal gains multiply by a constant, or do nothing at 1.
template <typename T>
TESSARO_EXPORT void ApplyGainWithRamping(T* const* ioChannels, std::size_t inNumChannels,
                                         std::int64_t inOffset, std::int64_t inCount, T inStartGain,
                                         T inEndGain);

/// The same from the first sample.
template <typename T>
TESSARO_EXPORT void ApplyGainWithRamping(T* const* ioChannels, std::size_t inNumChannels,
                                         std::int64_t inCount, T inStartGain, T inEndGain);

/// The same from source to destination; equal gains of 1 copy. A destination row may be the source row, rows
/// may not overlap otherwise.
template <typename T>
TESSARO_EXPORT void ApplyGainWithRamping(const T* const* inSource, T* const* outDest,
                                         std::size_t inNumChannels, std::int64_t inOffset,
                                         std::int64_t inCount, T inStartGain, T inEndGain);

template <typename T>
TESSARO_EXPORT void ApplyGainWithRamping(const T* const* inSource, T* const* outDest,
                                         std::size_t inNumChannels, std::int64_t inCount, T inStartGain,
                                         T inEndGain);

} // namespace tessaro
