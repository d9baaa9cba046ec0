#pragma once

#include <cstddef>
#include <filesystem>

#include <tessaro/Export.h>

namespace tessaro {

class AudioBuffer;

} // namespace tessaro

/// Looking at audio while developing: checks that throw and dumps into files. `[control]`; not for release
/// paths. A dump replaces the file and returns whether it was written whole.
namespace tessaro::debug {

/// A level that no sound audio reaches, 60 dB above full scale.
inline constexpr float kImplausibleLevel = 1000.0f;

/// Throws the `ombrel_exception` of a failed assert if a sample of a channel that is not silent is NaN or
/// lies outside plus and minus `inLimit` (linear). Null passes.
TESSARO_EXPORT void AssertAudioBufferInRange(const AudioBuffer* inBuffer, float inLimit = kImplausibleLevel);

/// Throws the same if one of `inCount` samples is not 0. For float and double.
template <typename T>
TESSARO_EXPORT void AssertSilence(const T* inSamples, std::size_t inCount);

/// One sample a line, with as many digits as tell it apart from every other. For float and double.
template <typename T>
TESSARO_EXPORT bool DumpFloatBufferToTextFile(const T* inSamples, std::size_t inCount,
                                              const std::filesystem::path& inFile);

/// As a WAV file of 32-bit floats: a buffer, with its silent channels as zeros; planar rows; one row. The
/// sample rate in Hz. The format ends at 4 GiB.
TESSARO_EXPORT bool DumpFloatBufferToAudioFile(const AudioBuffer& inBuffer, unsigned inSampleRate,
                                               const std::filesystem::path& inFile);
TESSARO_EXPORT bool DumpFloatBufferToAudioFile(const float* const* inRows, std::size_t inChannels,
                                               std::size_t inCount, unsigned inSampleRate,
                                               const std::filesystem::path& inFile);
TESSARO_EXPORT bool DumpFloatBufferToAudioFile(const float* inRow, std::size_t inCount, unsigned inSampleRate,
                                               const std::filesystem::path& inFile);

} // namespace tessaro::debug
