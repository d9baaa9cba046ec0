#pragma once

#include <cstdint>
#include <memory>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioSubBuffer.h>

namespace tessaro::async {

/// A new buffer with the given frames of all channels, which must lie within `ioSource`, and with its silence
/// flags.
inline std::shared_ptr<AudioBuffer> CopyFrames(AudioBuffer& ioSource, std::int64_t inStart,
                                               std::int64_t inFrames)
{
    const auto frames = static_cast<unsigned>(inFrames);
    AudioSubBuffer part;
    part.Init(ioSource.GetChannelCount());
    part.Assign(ioSource, static_cast<unsigned>(inStart));
    part.SetUseSize(frames);
    auto copy = std::make_shared<AudioBuffer>(ioSource.GetChannelCount(), frames);
    copy->CopyFrom(part);
    return copy;
}

} // namespace tessaro::async
