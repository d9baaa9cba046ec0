#pragma once

#include <memory>
#include <vector>

#include <brisken/transform/FFT.h>
#include <tessaro/Export.h>

namespace tessaro {

/// Refines a damaged span that has been bridged already, by interpolation or as it came: every bin of its
/// spectrum is held down to what the sound beside the span shows. It only takes away: a gap of zeros stays
/// one.
///
/// `Init`, `SetMode` if wanted, then any number of spans. Nothing is kept from one span to the next. Half a
/// frame to either side of the span is worked on too and blends into what is there.
///
/// Work is done at once and takes one transform per sample of the span. Memory grows only: spans allocate if
/// they are longer than any before, so that they are `[control]`. One thread at a time, but for progress and
/// cancel flag; can be moved, not copied.
///
/// Method: short-time spectra around each sample, whose bin gains fall at most 2^(-1/8) and rise at most
/// 2^(1/20) from one sample to the next, toward the ratio of the surroundings' level to the span's own. The
/// level of the surroundings is the mean of |im| + re^2, neither a magnitude nor a power; it is generous to
/// strong bins, and the limits are tuned to it.
class TESSARO_EXPORT CFillIn
{
public:
    /// The surroundings move linearly from those before to those behind the span, and bins below the number
    /// of frames taken there stay as they are.
    static constexpr unsigned kTwoSided = 0;
    /// The sound before the span alone serves, with 2.4 times the room, from bin 2 on: for spans behind which
    /// nothing good is known.
    static constexpr unsigned kOneSided = 1;

    CFillIn() = default;

    /// Frames of `inFrameSize` samples, rounded down to a power of two, at least 4. The surroundings are
    /// frames at distances of up to `inContextRange` samples beyond those that touch the span. A size
    /// below an earlier one reuses its rows, and the size in force needs no new memory at all. [control]
    void Init(int inFrameSize, unsigned inContextRange);

    /// `kOneSided`, or `kTwoSided` and any other number
    void SetMode(unsigned inMode) { mMode = inMode; }

    /// Refines the samples from `inStart` to `inEnd`, and those within half a frame beside them, in `ioData`.
    ///
    /// Reads from `inStart - frame - context` to `inEnd + frame + context`, the end not included; in front,
    /// frames that would begin before the data begin with it, and a span less than a frame from the front
    /// becomes shorter at both ends. What is behind is for the caller to provide. In mode `kOneSided` it is a
    /// frame, without context.
    ///
    /// `outProgress`, unless null, goes from `inRangeLow` to `inRangeHigh`, and the work ends when
    /// `inCancel`, unless null, points to true: returns false then, with the data as it was. Both may be
    /// accessed by another thread meanwhile, as atomics. True otherwise, also before `Init`.
    bool FillInNow(int inStart, int inEnd, float* ioData, float* outProgress, float inRangeLow,
                   float inRangeHigh, bool* inCancel);

    /// Takes a click out before the span is refined: puts the straight line between the samples around the
    /// span in place of those from `inStart` to before `inEnd`. On sounds of low pitch this alone comes
    /// close; where the span has been damaged only slightly, refining it as it is may leave more of the noise
    /// in it. Reads one sample before the start and the one at the end. [real-time]
    static void WindowClickData(int inStart, int inEnd, float* ioData);

    /// The longest span that callers should ask for, in samples
    [[nodiscard]] static constexpr int GetMaximumLength() { return 192000; }

private:
    struct FreeState
    {
        void operator()(brisken::FFTState_Float* inState) const { brisken::transform::FFTFree(inState); }
    };

    void Transform(const float* inFrame);
    void TakeReference(const float* inData, int inStart, float* outReference);
    void PrepareSpan(const float* inData, int inSpanStart, int inSpanEnd);
    void WeighBins(int inFirstBin);
    [[nodiscard]] float RefineSample(const float* inFrame);
    void BlendIn(int inCount, float* ioData);

    int mFrameSize = 0;
    int mContextRange = 0;
    unsigned mMode = kTwoSided;
    int mNumReferenceFrames = 1;
    int mReferenceStep = 0;
    float mLimit = 1.0f;
    std::unique_ptr<brisken::FFTState_Float, FreeState> mTransform;
    std::vector<float> mWindow;
    std::vector<float> mFrame;
    std::vector<float> mSpectrum;
    std::vector<unsigned char> mWork;
    // One value a bin, from 0 to half the frame
    std::vector<float> mMagnitudes;
    std::vector<float> mReference;
    std::vector<float> mReferenceSteps;
    std::vector<float> mGains;
    std::vector<float> mFixedWeights;
    std::vector<float> mGainWeights;
    /// What has been made of the span, until it is whole
    std::vector<float> mRefined;
};

} // namespace tessaro
