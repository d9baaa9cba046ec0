#pragma once

#include <cstddef>
#include <memory>

#include <ombrel/allocator/RecycledMemory.h>
#include <tessaro/Export.h>

/// From flags to plain memory: for samples that leave the world of `AudioBuffer`.
namespace tessaro {

class AudioBuffer;

/// The samples in use as one block of floats, channel behind channel. Silent channels come out as zeros,
/// whatever their memory holds. Throws when memory runs out. [control]
TESSARO_EXPORT std::shared_ptr<ombrel::allocator::RecycledMemory>
GetAudioBufferMemory(const AudioBuffer& inBuffer);

/// Writes zeros to every channel that is marked silent, so that the row pointers can be handed to code that
/// knows nothing of flags. The flags stay. [real-time]
TESSARO_EXPORT void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer);

/// The same for the first `inChannels` channels. [real-time]
TESSARO_EXPORT void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer, std::size_t inChannels);

} // namespace tessaro
