#pragma once

#include <tessaro/Export.h>

namespace tessaro {

/// Converts the sample rate of one stream by straight lines between its samples: cheap, with images and
/// aliases to be heard, for control signals and for rates that change while it runs.
///
/// Construct with the rates, or give rates and `Reset`; process. `UpdateSampleRatesWhileProcessing` bends the
/// rate of a running stream without a jump. Rates within 1e-5 Hz of each other make it a copy.
///
/// Each output lies between the current input sample and one before it. A stream's very first output, which
/// would lie before its first sample, is left out unless `SetEatLatency(false)`. Where a step takes two
/// input samples or more, the line begins at the sample from which the step was taken, not at the one just
/// before the current sample; and what a step reaches beyond the end of a block is not taken off the next
/// block. So splits of a stream agree up to a ratio of 1, and wherever no step crosses the end of a block.
///
/// The position counts input samples from the start of the stream in an int: `Reset` a stream before it is
/// 2^31 samples long. Nothing allocates, blocks or throws: `[real-time]`. One channel; one thread at a time.
class TESSARO_EXPORT LinearResample
{
public:
    /// No rates: copies until it gets some.
    LinearResample() = default;
    /// Rates in Hz
    LinearResample(float inInputRate, float inOutputRate);

    /// Starts anew, with the ratio of the rates as they now are.
    void Reset();

    /// Converts `inCount` samples and returns how many came out, up to `GetOutputBufferSize`. The rows may
    /// not overlap. Nothing comes out while the ratio is not positive and finite.
    int Process(const float* inInput, float* outOutput, int inCount);

    /// The same for a stream whose state lies with the caller; all three are 0 at its start. The object's own
    /// state stays as it is.
    int Process(const float* inInput, float* outOutput, int inCount, double& ioLastSample, double& ioPosition,
                int& ioIndex) const;

    /// The sample from which the next line begins.
    void SetState(double inLastSample) { mLastSample = inLastSample; }

    void SetEatLatency(bool inEatLatency) { mEatLatency = inEatLatency; }
    [[nodiscard]] bool GetEatLatency() const { return mEatLatency; }

    /// Stored, but not in force before `Reset`, except that equal rates copy from then on.
    void SetInputSampleRate(float inRate) { mInputRate = inRate; }
    void SetOutputSampleRate(float inRate) { mOutputRate = inRate; }

    /// In force from the next sample on; the stream goes on.
    void UpdateSampleRatesWhileProcessing(float inInputRate, float inOutputRate);

    /// Input rate over output rate, as stored; NaN without rates.
    [[nodiscard]] double GetRatio() const;

    /// In input samples
    [[nodiscard]] static constexpr int GetLatency() { return 1; }

    /// Room for the output of `inCount` input samples at the ratio in force.
    [[nodiscard]] int GetOutputBufferSize(int inCount) const;

    /// Input samples that are enough for `inCount` outputs at the ratio in force.
    [[nodiscard]] int GetInputBufferSizeForOutput(int inCount) const;

private:
    [[nodiscard]] bool IsCopy() const;
    [[nodiscard]] double GetUsableRatio() const;

    bool mEatLatency = true;
    float mInputRate = 0.0f;
    float mOutputRate = 0.0f;
    double mPosition = 0.0; ///< of the next output in the stream, in input samples
    double mRatio = 0.0;    ///< in force
    int mIndex = 0;         ///< of the current input sample
    double mLastSample = 0.0;
};

} // namespace tessaro
