#pragma once

#include <cstdint>

#include <tessaro/buffering/AudioBuffer.h>

namespace host {

/// What an offline task reads from: audio of a fixed length with a read position.
class AudioSource
{
public:
    virtual ~AudioSource() = default;

    virtual int GetSampleRate() const = 0;
    virtual int GetChannelCount() const = 0;
    virtual std::int64_t GetFrameCount() const = 0;

    /// Moves the read position to a frame from 0 to the frame count.
    virtual void Seek(std::int64_t inFrame) = 0;

    /// Reads the next frames, at most the buffer's capacity of `inMaxFrames`, sets the buffer's use size to
    /// their number and flags each channel that is digitally silent. Returns the number, 0 at the end. The
    /// buffer has the source's channel count.
    virtual unsigned Read(tessaro::AudioBuffer& outBuffer, unsigned inMaxFrames) = 0;
};

} // namespace host
