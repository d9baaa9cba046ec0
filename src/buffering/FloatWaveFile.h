#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace tessaro {

class AudioBuffer;

} // namespace tessaro

namespace tessaro::debug {

/// Writes a WAV file of 32-bit floats, piece by piece. The header is brought up to date with each piece, so
/// that the file is whole whenever the writing ends.
class FloatWaveFile
{
public:
    FloatWaveFile(const std::filesystem::path& inFile, std::size_t inChannels, unsigned inSampleRate);

    /// Appends `inCount` samples of each row; a null row is silence. Returns false when the file could not be
    /// written, or would become longer than the format can say; the piece is then left out.
    bool Append(const float* const* inRows, std::size_t inCount);

    /// Appends a buffer; silent channels, and those that it does not have, become zeros.
    bool Append(const AudioBuffer& inBuffer);

private:
    bool WriteHeader(std::uint32_t inFrames);

    std::ofstream mStream;
    std::size_t mChannels;
    unsigned mSampleRate;
    std::uint32_t mFrames = 0;
    std::vector<unsigned char> mInterleaved;
};

} // namespace tessaro::debug
