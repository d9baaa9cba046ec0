#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sndfile.h>
#include <tessaro/buffering/AudioBuffer.h>

#include "AudioSource.h"

namespace host {

/// Reads an audio file block by block: WAV, FLAC, OGG and AIFF.
class AudioFileReader : public AudioSource
{
public:
    /// Throws `FileError` for a file that is missing, empty, truncated, or not audio that can be read.
    explicit AudioFileReader(const std::filesystem::path& inPath);

    int GetSampleRate() const override { return mInfo.samplerate; }
    int GetChannelCount() const override { return mInfo.channels; }
    std::int64_t GetFrameCount() const override { return mInfo.frames; }
    double GetSeconds() const { return static_cast<double>(mInfo.frames) / mInfo.samplerate; }

    /// "FLAC, 16 bit" and the like.
    std::string GetFormatName() const;

    /// The word length that keeps what the file holds when written again: 16, 24, or 32 for floats.
    int GetBits() const;

    void Seek(std::int64_t inFrame) override;

    /// Throws `FileError` when the file ends early or is damaged.
    unsigned Read(tessaro::AudioBuffer& outBuffer, unsigned inMaxFrames) override;

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
