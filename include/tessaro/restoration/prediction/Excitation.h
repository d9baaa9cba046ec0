#pragma once

#include <cstdint>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/frame/DataTail.h>
#include <tessaro/restoration/prediction/Autocorr.h>
#include <tessaro/restoration/prediction/LpcCoeffs.h>

namespace tessaro {

/// What a stream does that could not be expected: the residual of linear prediction from both sides, which
/// peaks at the pulses of a voice and at other onsets, and is small where the sound goes on as it was.
///
/// `StartNewStream` and `SetMode` in any order, then `Process` blocks of any length; the output does not
/// depend on the split. Every hop, a predictor is fitted to the frame around the current sample, for each
/// channel on its own: autocorrelation of the Hann-windowed frame, then Levinson's recursion. A predictor
/// with a coefficient above 10 in magnitude is fitted anew at lower and lower order; one that stays so high,
/// or is no number, is dropped, and the residual is 0 up to the next fit.
///
/// With `f` the residual of the prediction from the past and `b` of that from the future, the result is
/// `2 |f| |b| / (|f| + |b|)`: a sample stands out only where both fail. It is not negative.
///
/// All outputs are late by `GetLatency` samples: half a frame, or the order if that is more, and the delay
/// asked for. The first samples of a stream see silence before them. A NaN or infinity lasts for one frame
/// and hop behind it; `Reset` forgets it. `Process` is `[real-time]`. One thread at a time; can be moved, not
/// copied.
class TESSARO_EXPORT Excitation
{
public:
    Excitation() = default;

    /// Frame in seconds, at least 8 samples when rounded; order of the prediction, at least 2; hop in
    /// seconds, at least 1 sample. The next sample is fitted anew. The past is forgotten. [control]
    void SetMode(float inFrameSeconds, unsigned inOrder, float inHopSeconds);

    /// Number of channels, rate in Hz, and further samples of delay for all outputs. Forgets the past.
    /// [control]
    void StartNewStream(unsigned inNumChannels, float inSampleRate, unsigned inDelay);

    /// Takes `inNumFrames` samples of each row, from `inInputOffset` on, and writes as many at
    /// `inOutputOffset` of every output that is not null: the result, the residuals `f` and `b` with their
    /// sign (predicted less actual), and the input as late as these. Output rows may be input rows if the
    /// offsets are equal. Bit c of `inSilentChannels` says that channel c (up to 31) is silent and must not
    /// be read. Nothing is written before both calls above. [real-time]
    void Process(const float* const* inInput, unsigned inNumFrames, float* const* outExcitation,
                 float* const* outForwardError = nullptr, float* const* outBackwardError = nullptr,
                 float* const* outDelayed = nullptr, unsigned inInputOffset = 0, unsigned inOutputOffset = 0,
                 unsigned inSilentChannels = 0);

    /// Forgets the past: the next sample is the first of a stream. [real-time]
    void Reset();

    /// Samples. 0 before both calls above. [configured]
    [[nodiscard]] unsigned GetLatency() const;

    /// Never less than the latency without delay: the larger of frame, in samples, and order; at least 8. For
    /// sizing buffers ahead of time. [any thread]
    [[nodiscard]] static unsigned GetLatencySafe(float inFrameSeconds, float inSampleRate, unsigned inOrder);

private:
    struct Outputs
    {
        float* const* mExcitation;
        float* const* mForward;
        float* const* mBackward;
        float* const* mDelayed;
    };

    struct Predictor
    {
        /// -1, then the predictors
        std::vector<float> mCoefficients;
        /// How many of them may be other than 0, the first one included
        unsigned mCount = 0;
    };

    [[nodiscard]] bool IsReady() const { return mFrameLength > 0 && mNumChannels > 0; }
    void Configure();
    [[nodiscard]] unsigned GetReach() const;
    void AppendInput(const float* const* inInput, unsigned inOffset, unsigned inCount, unsigned inSilent);
    void ProcessPiece(unsigned inIndex, unsigned inCount, const Outputs& inOutputs, unsigned inOffset);
    void FitPredictors(unsigned inIndex);
    void FitPredictor(const float* inFrame, Predictor& outPredictor);
    void Predict(unsigned inChannel, unsigned inIndex, unsigned inCount);

    float mFrameSeconds = 0.0f;
    float mHopSeconds = 0.0f;
    float mSampleRate = 0.0f;
    unsigned mOrder = 0;
    unsigned mNumChannels = 0;
    unsigned mDelay = 0;
    unsigned mFrameLength = 0;
    unsigned mHop = 0;
    /// Of the next sample to come out
    std::int64_t mPosition = 0;
    std::int64_t mNextUpdate = 0;
    DataTail mTail;
    Autocorr mAutocorr;
    LpcCoeffs mLpc;
    std::vector<Predictor> mPredictors;
    std::vector<float> mCorrelation;
    std::vector<const float*> mInputRows;
    std::vector<float> mSilence;
    std::vector<float> mForward;
    std::vector<float> mBackward;
    std::vector<float> mExcitation;
};

} // namespace tessaro
