#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <tessaro/frame/AudioProcessor.h>

namespace tessaro::testing {

/// A processor that needs samples behind the block: divides each sample by one more than the largest
/// magnitude among it and its look-ahead. No memory of its own.
class PeakAhead : public AudioProcessor
{
public:
    explicit PeakAhead(int inLookAhead, int inSystemDelay = 0)
    {
        SetLookAhead(inLookAhead);
        SetSystemDelay(inSystemDelay);
    }

    void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                 ombrel::utility::Flags<std::uint64_t> inSilentChannels) override
    {
        AudioProcessor::Process(inInput, inNumSamples, outOutput, inSilentChannels);
        mSilentChannels = inSilentChannels;
        for (int channel = 0; channel < GetNumChannels(); ++channel) {
            const float* const input = inInput[channel];
            const bool isSilent = inSilentChannels.GetBitModulo(static_cast<std::size_t>(channel));
            for (int i = 0; i < inNumSamples; ++i) {
                outOutput[channel][i] = isSilent ? 0.0f : input[i] / (1.0f + PeakFrom(input + i));
            }
        }
    }

    /// What the last block was flagged with
    [[nodiscard]] ombrel::utility::Flags<std::uint64_t> GetSilentChannels() const { return mSilentChannels; }

private:
    [[nodiscard]] float PeakFrom(const float* inInput) const
    {
        float peak = 0.0f;
        for (int i = 0; i <= GetLookAhead(); ++i) {
            peak = std::max(peak, std::abs(inInput[i]));
        }
        return peak;
    }

    ombrel::utility::Flags<std::uint64_t> mSilentChannels;
};

} // namespace tessaro::testing
