#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/resample/Resample.h>

namespace tessaro {

template <typename T>
class RingBuffer;

/// Makes a source of samples of another rate out of a `Resample` and a callback that gives its input: whoever
/// wants output samples asks for them, and the wrapper fetches input as it needs it, in chunks of a fixed
/// size. What a chunk gives beyond what was asked for is kept for the next call.
///
///     auto resample = std::make_shared<Resample>();
///     resample->SetSampleRates(44100, 48000);
///     ResamplerPullModelWrapper source(resample, [&](float* const* outRows, std::int64_t inCount) {
///         reader.Read(outRows[0], inCount);
///     });
///     source.Process(row, 512);
///
/// The stream is late by `Resample::GetLatency`. Copies share everything with their source: resampler,
/// buffers and what is left over. Processing is `[real-time]` as far as the callback is and the `Resample`
/// was initialized. One channel; one thread at a time, for all copies together.
class TESSARO_EXPORT ResamplerPullModelWrapper
{
public:
    /// Samples that each call of the callback asks for
    static constexpr int kInternalChunksize = 8192;

    /// Fills row 0 with that many samples; for a source that has ended, with zeros.
    using PullCallback = std::function<void(float* const* outRows, std::int64_t inCount)>;

    /// `inResample` has its rates already, and keeps them. Allocates. [control]
    ResamplerPullModelWrapper(std::shared_ptr<Resample> inResample, PullCallback inCallback);

    /// Writes `inCount` samples. Throws `std::bad_function_call` when it needs input and there is no
    /// callback, and passes on what the callback throws; what it wrote by then is lost. A resampler
    /// that was never given rates gives zeros.
    void Process(float* outOutput, std::int64_t inCount);

    [[nodiscard]] float GetSrcSampleRate() const { return mResample->GetSourceSampleRate(); }
    [[nodiscard]] float GetDstSampleRate() const { return mResample->GetDestSampleRate(); }

private:
    bool Refill();

    PullCallback mCallback;
    std::shared_ptr<Resample> mResample;
    std::shared_ptr<RingBuffer<float>> mRing;
    std::shared_ptr<AudioBuffer> mInput;
    std::shared_ptr<AudioBuffer> mOutput;
};

} // namespace tessaro
