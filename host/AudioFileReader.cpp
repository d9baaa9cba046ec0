#include "AudioFileReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <brisken/Utility.h>
#include <unistd.h>

#include "ContainerCheck.h"
#include "HostError.h"

namespace host {

namespace {

constexpr const char* kReadable = "; WAV, FLAC, OGG and AIFF files can be read";

void CheckReadable(const std::filesystem::path& inPath)
{
    std::error_code error;
    const auto status = std::filesystem::status(inPath, error);
    const auto name = inPath.string();
    if (!std::filesystem::exists(status)) {
        throw FileError(name, "cannot be read: " + (error ? error.message() : "No such file or directory"));
    }
    if (std::filesystem::is_directory(status)) {
        throw FileError(name, "is a directory; name an audio file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        throw FileError(name, "is not a regular file; name an audio file");
    }
    if (access(inPath.c_str(), R_OK) != 0) {
        throw FileError(name, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (std::filesystem::file_size(inPath, error) == 0) {
        throw FileError(name, "is empty; name an audio file");
    }
}

bool IsFloat(int inFormat)
{
    switch (inFormat & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
        return true;
    default:
        return false;
    }
}

} // namespace

AudioFileReader::AudioFileReader(const std::filesystem::path& inPath) : mPath(inPath.string())
{
    CheckReadable(inPath);
    mFile.reset(sf_open(mPath.c_str(), SFM_READ, &mInfo));
    if (!mFile) {
        std::string reason = sf_strerror(nullptr);
        reason.erase(reason.find_last_not_of(" .\n") + 1);
        throw FileError(mPath, "is not audio that can be read (" + reason + ")" + kReadable);
    }
    CheckContainer(inPath);
    if (mInfo.channels < 1 || mInfo.samplerate < 1 || mInfo.frames < 0) {
        throw FileError(mPath, std::string("has no sensible rate, channel count or length") + kReadable);
    }
}

std::string AudioFileReader::GetFormatName() const
{
    SF_FORMAT_INFO major{mInfo.format & SF_FORMAT_TYPEMASK, nullptr, nullptr};
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &major, sizeof major);
    SF_FORMAT_INFO minor{mInfo.format & SF_FORMAT_SUBMASK, nullptr, nullptr};
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &minor, sizeof minor);
    return std::string(major.name ? major.name : "unknown container") + ", " +
           (minor.name ? minor.name : "unknown coding");
}

int AudioFileReader::GetBits() const
{
    switch (mInfo.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
        return 16;
    default:
        return IsFloat(mInfo.format) ? 32 : 24;
    }
}

void AudioFileReader::Seek(std::int64_t inFrame)
{
    if (inFrame == mPosition) {
        return;
    }
    if (sf_seek(mFile.get(), inFrame, SEEK_SET) != inFrame) {
        throw FileError(mPath, "cannot be read again from frame " + std::to_string(inFrame) +
                                   "; convert it to WAV or FLAC");
    }
    mPosition = inFrame;
}

unsigned AudioFileReader::Read(tessaro::AudioBuffer& outBuffer, unsigned inMaxFrames)
{
    const auto channels = static_cast<unsigned>(mInfo.channels);
    const auto frames = static_cast<unsigned>(std::min<std::int64_t>(inMaxFrames, mInfo.frames - mPosition));
    mInterleaved.resize(static_cast<std::size_t>(frames) * channels);
    const auto got = sf_readf_float(mFile.get(), mInterleaved.data(), frames);
    if (got != frames) {
        const bool isDamaged = sf_error(mFile.get()) != SF_ERR_NO_ERROR;
        throw FileError(mPath, "is " + std::string(isDamaged ? "damaged" : "truncated") + " at frame " +
                                   std::to_string(mPosition + std::max<sf_count_t>(got, 0)) + " of " +
                                   std::to_string(mInfo.frames) + "; get a complete copy");
    }
    mPosition += frames;

    outBuffer.SetUseSize(frames);
    outBuffer.ClearZeroFlags();
    brisken::utility::Deinterleave(frames, channels, mInterleaved.data(), outBuffer.GetFloatBuffers());
    for (unsigned channel = 0; channel < channels; ++channel) {
        const float* row = outBuffer[channel];
        // A block that holds a NaN has no peak above 0 perhaps, but its sum is not 0.
        if (brisken::utility::MaxAbs(row, frames) == 0.0f && brisken::utility::Sum(frames, row) == 0.0f) {
            outBuffer.MarkChannelZero(channel);
        }
    }
    return frames;
}

} // namespace host
