#include <tessaro/buffering/AudioBufferHelpers.h>

#include <algorithm>

#include <brisken/Utility.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

using ombrel::allocator::RecycledMemory;

std::shared_ptr<RecycledMemory> GetAudioBufferMemory(const AudioBuffer& inBuffer)
{
    const auto size = inBuffer.GetBufferSize();
    auto memory = RecycledMemory::Create(inBuffer.GetChannelCount() * size * sizeof(float));
    auto* row = memory->BufferAs<float>();
    for (std::size_t channel = 0; channel < inBuffer.GetChannelCount(); ++channel, row += size) {
        if (inBuffer.IsChannelZero(channel)) {
            brisken::utility::Zero(size, row);
        } else {
            brisken::utility::Copy(size, inBuffer[channel], row);
        }
    }
    return memory;
}

void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer)
{
    ZeroBufferAccordingToSilenceFlags(ioBuffer, ioBuffer.GetChannelCount());
}

void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer, std::size_t inChannels)
{
    const auto channels = std::min(ioBuffer.GetChannelCount(), inChannels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        if (ioBuffer.IsChannelZero(channel)) {
            brisken::utility::Zero(ioBuffer.GetBufferSize(), ioBuffer[channel]);
        }
    }
}

} // namespace tessaro
