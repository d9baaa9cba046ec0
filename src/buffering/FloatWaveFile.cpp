#include "buffering/FloatWaveFile.h"

#include <bit>
#include <limits>
#include <string_view>

#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro::debug {

namespace {

constexpr std::uint32_t kHeaderBytes = 58;
constexpr std::uint32_t kFormatBytes = 18;
constexpr std::uint16_t kIeeeFloat = 3;

void PutText(std::vector<unsigned char>& ioBytes, std::string_view inText)
{
    ioBytes.insert(ioBytes.end(), inText.begin(), inText.end());
}

void PutNumber(std::vector<unsigned char>& ioBytes, std::uint32_t inNumber, int inBytes)
{
    for (int byte = 0; byte < inBytes; ++byte) {
        ioBytes.push_back(static_cast<unsigned char>(inNumber >> (8 * byte)));
    }
}

bool WriteBytes(std::ofstream& ioStream, const std::vector<unsigned char>& inBytes)
{
    ioStream.write(reinterpret_cast<const char*>(inBytes.data()),
                   static_cast<std::streamsize>(inBytes.size()));
    return ioStream.good();
}

} // namespace

FloatWaveFile::FloatWaveFile(const std::filesystem::path& inFile, std::size_t inChannels,
                             unsigned inSampleRate)
    : mStream(inFile, std::ios::binary | std::ios::trunc), mChannels(inChannels), mSampleRate(inSampleRate)
{
}

bool FloatWaveFile::Append(const float* const* inRows, std::size_t inCount)
{
    constexpr std::uint64_t mostBytes = std::numeric_limits<std::uint32_t>::max() - kHeaderBytes;
    const std::uint64_t frameBytes = mChannels * sizeof(float);
    if (mChannels > std::numeric_limits<std::uint16_t>::max() / sizeof(float) ||
        (frameBytes != 0 && inCount > mostBytes / frameBytes - mFrames)) {
        return false;
    }
    mInterleaved.clear();
    for (std::size_t i = 0; i < inCount; ++i) {
        for (std::size_t channel = 0; channel < mChannels; ++channel) {
            const float sample = inRows[channel] != nullptr ? inRows[channel][i] : 0.0f;
            PutNumber(mInterleaved, std::bit_cast<std::uint32_t>(sample), sizeof(float));
        }
    }
    // Samples first: a header never speaks of samples that are not there.
    const auto frames = mFrames + static_cast<std::uint32_t>(inCount);
    if (mFrames == 0 && !WriteHeader(0)) {
        return false;
    }
    mStream.seekp(static_cast<std::streamoff>(kHeaderBytes + mFrames * frameBytes));
    if (!WriteBytes(mStream, mInterleaved) || !WriteHeader(frames)) {
        return false;
    }
    mFrames = frames;
    return mStream.flush().good();
}

bool FloatWaveFile::Append(const AudioBuffer& inBuffer)
{
    std::vector<const float*> rows(mChannels);
    for (std::size_t channel = 0; channel < rows.size(); ++channel) {
        rows[channel] = inBuffer.IsChannelZero(channel) ? nullptr : inBuffer[channel];
    }
    return Append(rows.data(), inBuffer.GetBufferSize());
}

bool FloatWaveFile::WriteHeader(std::uint32_t inFrames)
{
    const auto frameBytes = static_cast<std::uint32_t>(mChannels * sizeof(float));
    const auto dataBytes = inFrames * frameBytes;
    std::vector<unsigned char> header;
    PutText(header, "RIFF");
    PutNumber(header, kHeaderBytes - 8 + dataBytes, 4);
    PutText(header, "WAVEfmt ");
    PutNumber(header, kFormatBytes, 4);
    PutNumber(header, kIeeeFloat, 2);
    PutNumber(header, static_cast<std::uint32_t>(mChannels), 2);
    PutNumber(header, mSampleRate, 4);
    PutNumber(header, mSampleRate * frameBytes, 4);
    PutNumber(header, frameBytes, 2);
    PutNumber(header, 32, 2); // bits a sample
    PutNumber(header, 0, 2);  // no extension
    PutText(header, "fact");
    PutNumber(header, 4, 4);
    PutNumber(header, inFrames, 4);
    PutText(header, "data");
    PutNumber(header, dataBytes, 4);
    mStream.seekp(0);
    return WriteBytes(mStream, header);
}

} // namespace tessaro::debug
