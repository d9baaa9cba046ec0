#include <algorithm>
#include <cmath>

#include <tessaro/resample/Resampler.h>

namespace tessaro::utility {

namespace {

constexpr std::int32_t kPhases = 8192;
constexpr float kDefaultQuality = 0.5f;
constexpr float kLeastZeroCrossings = 4.0f;
constexpr float kMoreZeroCrossings = 24.0f;

Resampler MakeResampler(unsigned inSourceRate, unsigned inDestinationRate,
                        const ombrel::checked_value<float>& inQuality)
{
    const float quality = std::clamp(inQuality.GetValueOr(kDefaultQuality), 0.0f, 1.0f);
    Resampler resampler(kPhases);
    resampler.SetOptimalKernel(quality * kMoreZeroCrossings + kLeastZeroCrossings,
                               static_cast<float>(inSourceRate), static_cast<float>(inDestinationRate));
    return resampler;
}

std::size_t ConvertedLength(unsigned inSourceRate, unsigned inDestinationRate, unsigned inCount)
{
    if (inSourceRate == 0) {
        return 0;
    }
    return static_cast<std::size_t>(
        std::round(static_cast<float>(inCount) * static_cast<float>(inDestinationRate) /
                   static_cast<float>(inSourceRate)));
}

} // namespace

void Resample(unsigned inSourceRate, unsigned inDestinationRate, unsigned inCount, unsigned inChannels,
              const float* const* inInput, std::vector<std::vector<float>>& outOutput,
              const ombrel::checked_value<float>& inQuality)
{
    outOutput.resize(inChannels);
    if (inSourceRate == inDestinationRate) {
        for (unsigned channel = 0; channel < inChannels; ++channel) {
            outOutput[channel].assign(inInput[channel], inInput[channel] + inCount);
        }
        return;
    }
    const std::size_t length = ConvertedLength(inSourceRate, inDestinationRate, inCount);
    std::vector<float*> rows;
    rows.reserve(inChannels);
    for (auto& row : outOutput) {
        row.resize(length);
        rows.push_back(row.data());
    }
    if (length != 0) {
        const double step = static_cast<double>(inSourceRate) / inDestinationRate;
        MakeResampler(inSourceRate, inDestinationRate, inQuality)
            .InterpolateNSamples(inInput, inChannels, inCount, 0.0, rows.data(), 0,
                                 static_cast<unsigned>(length), step, true);
    }
}

void Resample(unsigned inSourceRate, unsigned inDestinationRate, unsigned inCount, const float* inInput,
              std::vector<float>& outOutput, const ombrel::checked_value<float>& inQuality)
{
    std::vector<std::vector<float>> rows(1);
    rows.front().swap(outOutput);
    Resample(inSourceRate, inDestinationRate, inCount, 1, &inInput, rows, inQuality);
    outOutput.swap(rows.front());
}

} // namespace tessaro::utility
