#include <tessaro/buffering/AudioBufferDiagnostics.h>

#include <algorithm>
#include <fstream>
#include <limits>

#include <brisken/Utility.h>
#include <ombrel/debug/Assert.h>
#include <tessaro/buffering/AudioBuffer.h>

#include "buffering/FloatWaveFile.h"

namespace tessaro::debug {

void AssertAudioBufferInRange(const AudioBuffer* inBuffer, float inLimit)
{
    if (inBuffer == nullptr || inBuffer->GetBufferSize() == 0) {
        return;
    }
    const auto size = inBuffer->GetBufferSize();
    for (std::size_t channel = 0; channel < inBuffer->GetChannelCount(); ++channel) {
        if (inBuffer->IsChannelZero(channel)) {
            continue;
        }
        float least = 0.0f;
        float most = 0.0f;
        unsigned leastIndex = 0;
        unsigned mostIndex = 0;
        brisken::utility::MinMaxIndex(size, (*inBuffer)[channel], least, most, leastIndex, mostIndex);
        OMBREL_ASSERT(least >= -inLimit);
        OMBREL_ASSERT(most <= inLimit);
        // Extremes pass over NaN, a sum does not.
        const float sum = brisken::utility::Sum(size, (*inBuffer)[channel]);
        OMBREL_ASSERT(sum == sum);
    }
}

template <typename T>
void AssertSilence(const T* inSamples, std::size_t inCount)
{
    const bool isSilent =
        std::all_of(inSamples, inSamples + inCount, [](T inSample) { return inSample == 0; });
    OMBREL_ASSERT(isSilent);
}

template TESSARO_EXPORT void AssertSilence<float>(const float*, std::size_t);
template TESSARO_EXPORT void AssertSilence<double>(const double*, std::size_t);

template <typename T>
bool DumpFloatBufferToTextFile(const T* inSamples, std::size_t inCount, const std::filesystem::path& inFile)
{
    std::ofstream stream(inFile, std::ios::trunc);
    stream.precision(std::numeric_limits<T>::max_digits10);
    for (std::size_t i = 0; i < inCount; ++i) {
        stream << inSamples[i] << '\n';
    }
    return stream.flush().good();
}

template TESSARO_EXPORT bool DumpFloatBufferToTextFile<float>(const float*, std::size_t,
                                                              const std::filesystem::path&);
template TESSARO_EXPORT bool DumpFloatBufferToTextFile<double>(const double*, std::size_t,
                                                               const std::filesystem::path&);

bool DumpFloatBufferToAudioFile(const AudioBuffer& inBuffer, unsigned inSampleRate,
                                const std::filesystem::path& inFile)
{
    std::vector<const float*> rows(inBuffer.GetChannelCount());
    for (std::size_t channel = 0; channel < rows.size(); ++channel) {
        rows[channel] = inBuffer.IsChannelZero(channel) ? nullptr : inBuffer[channel];
    }
    return DumpFloatBufferToAudioFile(rows.data(), rows.size(), inBuffer.GetBufferSize(), inSampleRate,
                                      inFile);
}

bool DumpFloatBufferToAudioFile(const float* const* inRows, std::size_t inChannels, std::size_t inCount,
                                unsigned inSampleRate, const std::filesystem::path& inFile)
{
    return FloatWaveFile(inFile, inChannels, inSampleRate).Append(inRows, inCount);
}

bool DumpFloatBufferToAudioFile(const float* inRow, std::size_t inCount, unsigned inSampleRate,
                                const std::filesystem::path& inFile)
{
    return DumpFloatBufferToAudioFile(&inRow, 1, inCount, inSampleRate, inFile);
}

} // namespace tessaro::debug
