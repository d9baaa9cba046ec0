#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sndfile.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace host {

/// Reads an audio file block by block: WAV, FLAC, OGG and AIFF.
class AudioFileReader
{
public:
    /// Throws `FileError` for a file that is missing, empty, truncated, or not audio that can be read.
    explicit AudioFileReader(const std::filesystem::path& inPath);

    int GetSampleRate() const { return mInfo.samplerate; }
    int GetChannelCount() const { return mInfo.channels; }
    std::int64_t GetFrameCount() const { return mInfo.frames; }
    double GetSeconds() const { return static_cast<double>(mInfo.frames) / mInfo.samplerate; }

    /// "FLAC, 16 bit" and the like.
    std::string GetFormatName() const;

    /// The word length that keeps what the file holds when written again: 16, 24, or 32 for floats.
    int GetBits() const;

    /// Reads the next frames, at most the buffer's capacity of `inMaxFrames`, sets the buffer's use size to
    /// their number and flags each channel that is digitally silent. Returns the number, 0 at the end. Throws
    /// `FileError` when the file ends early or is damaged. The buffer has the file's channel count.
    unsigned Read(tessaro::AudioBuffer& outBuffer, unsigned inMaxFrames);

private:
    struct Closer
    {
        void operator()(SNDFILE* inFile) const { sf_close(inFile); }
    };

    std::string mPath;
    SF_INFO mInfo{};
    std::unique_ptr<SNDFILE, Closer> mFile;
    std::int64_t mPosition = 0;
    std::vector<float> mInterleaved;
};

} // namespace host
