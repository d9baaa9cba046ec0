#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <brisken/filter/MRF.h>
#include <tessaro/Export.h>

namespace tessaro {

/// How many times a signal is oversampled to find its true peak: 8 up to 24000 Hz, 4 below 96000 Hz, 2 from
/// there on. [any thread]
[[nodiscard]] TESSARO_EXPORT unsigned GetTruePeakOversampleFactor(float inSampleRate);

/// The oversampler of true-peak measurement: a low-pass of 71 taps, Blackman window, at 0.96 of the original
/// band.
///
/// `Init`, then `Process` blocks of any length; the output does not depend on the split. Latency `GetLatency`
/// samples of the oversampled rate. `Process` is `[real-time]`. A NaN or infinity is gone after as many
/// samples as the filter is long. One thread at a time; can be moved, not copied.
class TESSARO_EXPORT TruePeakResampler
{
public:
    TruePeakResampler() = default;

    /// Sets the factor from the rate in Hz and clears the past. Until then the factor is 1, and `Process`
    /// writes zeros. [control]
    void Init(unsigned inBlockFrames, float inSampleRate);

    /// Writes `inFrames` times the factor samples. The rows may not overlap. [real-time]
    void Process(const float* inInput, float* outOutput, unsigned inFrames);

    /// Forgets the past. [real-time]
    void Reset();

    [[nodiscard]] unsigned GetOversampleFactor() const { return mFactor; }

    /// Samples at the oversampled rate
    [[nodiscard]] static constexpr int GetLatency() { return 35; }

private:
    struct FreeFilter
    {
        void operator()(brisken::MRFState_Float* inState) const { brisken::filter::MRFFree(inState); }
    };

    unsigned mFactor = 1;
    std::unique_ptr<brisken::MRFState_Float, FreeFilter> mFilter;
};

/// The true peak of one channel: the largest magnitude of its samples and of the samples between them, and
/// where it stands (ITU-R BS.1770, annex 2).
///
/// `Init`, then `Process` blocks. Up to the block size of `Init` nothing allocates: `[real-time]`. Samples
/// that are NaN are passed over. One thread at a time.
class TESSARO_EXPORT TruePeak
{
public:
    /// Starts a measurement: peak, position and count are 0. The rate in Hz. [control]
    void Init(unsigned inBlockFrames, float inSampleRate);

    /// Measures `inFrames` samples. A block above the size given to `Init` makes the work buffer grow.
    void Process(const float* inInput, unsigned inFrames);

    /// The peak in dB, -300 for silence, and the sample at which it was found, counted from `Init`. A peak
    /// between samples is found as late as the filter is long: 35 samples of the oversampled rate.
    void GetPeakValue(float& outDecibels, std::int64_t& outPosition) const;

    [[nodiscard]] unsigned GetResampleFactor() const { return mResampler.GetOversampleFactor(); }

private:
    bool TakePeak(const float* inRow, unsigned inCount, unsigned& outIndex);

    TruePeakResampler mResampler;
    std::vector<float> mWork;
    float mPeak = 0.0f;
    std::int64_t mCount = 0;
    std::int64_t mPosition = 0;
};

} // namespace tessaro
