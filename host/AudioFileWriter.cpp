#include "AudioFileWriter.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include <brisken/Utility.h>

#include "HostError.h"

namespace host {

namespace {

constexpr std::int64_t kLargestWave =
    0xFFFFFFFFll - 4096; // what a 32-bit RIFF length can say, less the header
constexpr int kMostFlacChannels = 8;

sf_count_t GetOutputLength(void* inOutput)
{
    return static_cast<OutputFile*>(inOutput)->GetSize();
}
sf_count_t SeekOutput(sf_count_t inOffset, int inWhence, void* inOutput)
{
    return static_cast<OutputFile*>(inOutput)->Seek(inOffset, inWhence);
}
sf_count_t ReadOutput(void* outData, sf_count_t inCount, void* inOutput)
{
    return static_cast<OutputFile*>(inOutput)->Read(outData, inCount);
}
sf_count_t WriteOutput(const void* inData, sf_count_t inCount, void* inOutput)
{
    return static_cast<OutputFile*>(inOutput)->Write(inData, inCount);
}
sf_count_t TellOutput(void* inOutput)
{
    return static_cast<OutputFile*>(inOutput)->Seek(0, SEEK_CUR);
}

std::string LowerExtension(const std::filesystem::path& inPath)
{
    auto extension = inPath.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char inByte) { return static_cast<char>(std::tolower(inByte)); });
    return extension;
}

int ContainerOf(const std::filesystem::path& inPath, const AudioFileFormat& inFormat)
{
    const auto extension = LowerExtension(inPath);
    if (extension == ".flac") {
        if (inFormat.mBits == 32) {
            throw UsageError("--bits", "FLAC holds 16 or 24 bits; write a .wav file for 32-bit floats");
        }
        if (inFormat.mChannelCount > kMostFlacChannels) {
            throw UsageError(inPath.string(), "FLAC holds 8 channels at the most; write a .wav file");
        }
        return SF_FORMAT_FLAC;
    }
    if (extension != ".wav") {
        throw UsageError(inPath.string(), "the name must end with .wav or .flac");
    }
    const auto bytes = inFormat.mFrameCount * inFormat.mChannelCount * (inFormat.mBits / 8);
    if (bytes > kLargestWave) {
        return SF_FORMAT_RF64;
    }
    return inFormat.mChannelCount > 2 ? SF_FORMAT_WAVEX : SF_FORMAT_WAV;
}

int CodingOf(int inBits)
{
    switch (inBits) {
    case 16:
        return SF_FORMAT_PCM_16;
    case 24:
        return SF_FORMAT_PCM_24;
    default:
        return SF_FORMAT_FLOAT;
    }
}

} // namespace

AudioFileWriter::AudioFileWriter(const std::filesystem::path& inPath, const AudioFileFormat& inFormat)
    : mPath(inPath.string()),
      mFormat(inFormat),
      mSampleType(tessaro::GetSampleTypeFromBitsPerSample(inFormat.mBits)),
      mOutput((ContainerOf(inPath, inFormat), inPath))
{
    SF_INFO info{};
    info.samplerate = inFormat.mSampleRate;
    info.channels = inFormat.mChannelCount;
    info.format = ContainerOf(inPath, inFormat) | CodingOf(inFormat.mBits);
    SF_VIRTUAL_IO io{GetOutputLength, SeekOutput, ReadOutput, WriteOutput, TellOutput};
    mFile.reset(sf_open_virtual(&io, SFM_WRITE, &info, &mOutput));
    mOutput.ThrowIfFailed();
    if (!mFile) {
        throw FileError(mPath, std::string("cannot be written: ") + sf_strerror(nullptr));
    }
}

void AudioFileWriter::Write(const tessaro::AudioBuffer& inBuffer)
{
    const unsigned frames = inBuffer.GetBufferSize();
    Interleave(inBuffer);
    if (mFormat.mBits == 32) {
        sf_writef_float(mFile.get(), mInterleaved.data(), frames);
    } else {
        RoundAndClip();
        WriteIntegers(frames);
    }
    mOutput.ThrowIfFailed();
}

void AudioFileWriter::Interleave(const tessaro::AudioBuffer& inBuffer)
{
    const unsigned frames = inBuffer.GetBufferSize();
    const auto channels = static_cast<unsigned>(mFormat.mChannelCount);
    mSilence.resize(std::max<std::size_t>(mSilence.size(), frames), 0.0f);
    mRows.resize(channels);
    for (unsigned channel = 0; channel < channels; ++channel) {
        mRows[channel] = inBuffer.IsChannelZero(channel) ? mSilence.data() : inBuffer[channel];
    }
    mInterleaved.resize(static_cast<std::size_t>(frames) * channels);
    brisken::utility::Interleave(frames, channels, mRows.data(), mInterleaved.data());
}

/// The conversion that follows cuts toward zero, so half a step outward makes it round to the nearest.
void AudioFileWriter::RoundAndClip()
{
    const float halfStep = std::ldexp(0.5f, 1 - mFormat.mBits);
    const float highest = 1.0f - 2.0f * halfStep;
    std::int64_t clipped = 0;
    for (auto& sample : mInterleaved) {
        clipped += sample > highest || sample < -1.0f;
        // A NaN has no place on the integer scale.
        sample = std::isnan(sample) ? 0.0f : sample + std::copysign(halfStep, sample);
    }
    mClippedCount += clipped;
}

void AudioFileWriter::WriteIntegers(unsigned inFrames)
{
    const auto count = mInterleaved.size();
    const auto width = static_cast<std::size_t>(tessaro::GetBytesPerSampleFromSampleType(mSampleType));
    mPacked.resize(count * width);
    mIntegers.resize(count);
    tessaro::ConvertBufferFromFloats(mInterleaved.data(), mPacked.data(), static_cast<int>(count),
                                     mSampleType);
    // The file library takes integers with full scale at 32 bits.
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t value = 0;
        if (mSampleType == tessaro::GetSampleTypeFromBitsPerSample(16)) {
            std::uint16_t packed;
            std::memcpy(&packed, mPacked.data() + 2 * i, sizeof packed);
            value = static_cast<std::uint32_t>(packed) << 16;
        } else {
            const auto* packed = mPacked.data() + 3 * i;
            value = static_cast<std::uint32_t>(packed[0]) << 8 | static_cast<std::uint32_t>(packed[1]) << 16 |
                    static_cast<std::uint32_t>(packed[2]) << 24;
        }
        mIntegers[i] = static_cast<int>(value);
    }
    sf_writef_int(mFile.get(), mIntegers.data(), inFrames);
}

void AudioFileWriter::Commit()
{
    mFile.reset(); // writes the final header
    mOutput.Commit();
}

} // namespace host
