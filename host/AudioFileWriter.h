#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sndfile.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioSampleType.h>

#include "OutputFile.h"

namespace host {

/// What a file is to hold. WAV holds 16, 24 or 32 (float) bits, FLAC 16 or 24.
struct AudioFileFormat
{
    int mSampleRate = 0;
    int mChannelCount = 0;
    int mBits = 16;
    std::int64_t mFrameCount = 0;
};

/// Writes a WAV or FLAC file block by block, to a temporary file until `Commit`. The name's extension
/// chooses.
///
/// Integer samples are rounded to the nearest step and clipped at full scale; `GetClippedCount` tells how
/// many were.
class AudioFileWriter
{
public:
    /// Throws `UsageError` for a name or word length that cannot be, and `FileError` where nothing can be
    /// written.
    AudioFileWriter(const std::filesystem::path& inPath, const AudioFileFormat& inFormat);

    /// Appends the buffer's use size. Channels flagged silent are written as zeros, whatever their memory
    /// holds.
    void Write(const tessaro::AudioBuffer& inBuffer);

    /// Finishes the file and gives it its name.
    void Commit();

    std::int64_t GetClippedCount() const { return mClippedCount; }

private:
    struct Closer
    {
        void operator()(SNDFILE* inFile) const { sf_close(inFile); }
    };

    void Interleave(const tessaro::AudioBuffer& inBuffer);
    void RoundAndClip();
    void WriteIntegers(unsigned inFrames);

    std::string mPath;
    AudioFileFormat mFormat;
    tessaro::AudioSampleType mSampleType;
    OutputFile mOutput;
    std::unique_ptr<SNDFILE, Closer> mFile; // closes before mOutput goes
    std::int64_t mClippedCount = 0;
    std::vector<float> mInterleaved;
    std::vector<float> mSilence;
    std::vector<const float*> mRows;
    std::vector<unsigned char> mPacked;
    std::vector<int> mIntegers;
};

} // namespace host
