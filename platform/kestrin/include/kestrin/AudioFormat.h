#pragma once

#include <utility>
#include <vector>

#include <kestrin/AudioChannelDescription.h>
#include <kestrin/FrameRate.h>

namespace kestrin {

/// What a stream of audio is: its sample rate and its channels. A value; copying allocates. `[any thread]`
class AudioFormat
{
public:
    /// 0 Hz and no channel.
    AudioFormat() = default;

    /// `inSampleRate` in Hz.
    AudioFormat(float inSampleRate, std::vector<AudioChannelDescription> inChannelLayout)
        : mSampleRate(inSampleRate), mChannelLayout(std::move(inChannelLayout))
    {
    }

    /// In Hz.
    float GetSampleRate() const { return mSampleRate; }

    /// The sample rate as the length of a sample in ticks; invalid unless the rate is above 0.
    FrameRate GetFrameRate() const
    {
        return FrameRate::FromFramesPerSecond(static_cast<double>(mSampleRate));
    }

    unsigned GetChannelCount() const { return static_cast<unsigned>(mChannelLayout.size()); }

    const std::vector<AudioChannelDescription>& GetChannelLayout() const { return mChannelLayout; }

    friend bool operator==(const AudioFormat&, const AudioFormat&) = default;

private:
    float mSampleRate = 0.0f;
    std::vector<AudioChannelDescription> mChannelLayout;
};

} // namespace kestrin
