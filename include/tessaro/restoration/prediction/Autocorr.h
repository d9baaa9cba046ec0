#pragma once

#include <limits>
#include <memory>
#include <vector>

#include <brisken/transform/FFT.h>
#include <tessaro/Export.h>

namespace tessaro {

/// Correlation of frames with themselves or with each other, by transform: the sums over all products of two
/// samples that are `m` apart, for m from 0 on. Frames are taken as zero beyond their ends.
///
/// `SetMode`, then any number of frames. Numbers of lags count values, lag 0 among them. Lags from the
/// frame's length on are 0 by nature. A frame and lags that were not set fit as long as `length + lags` stays
/// within the transform: the power of two, at least 8, that holds those which were. With more lags than that,
/// the later ones go round the transform: those beyond its size less the length have the sum at the remaining
/// way round added. A frame longer than the transform, and any before `SetMode`, has an all-zero result.
///
/// Frames are `[real-time]`; modes allocate, and throw std::bad_alloc or std::length_error. Single precision
/// throughout: errors are around 1e-7 of the value at lag 0. One thread at a time; can be moved, not copied.
class TESSARO_EXPORT Autocorr
{
public:
    /// As a number of lags: one less than the length of the frame; in `SetMode`, that length. As a length of
    /// a frame: the one set.
    static constexpr unsigned kAll = std::numeric_limits<unsigned>::max();

    Autocorr() = default;

    /// Frames of `inLength` samples and `inLags` values. With `inUseHalf`, shorter frames that fit go through
    /// a transform of half the size. [control]
    void SetMode(unsigned inLength, unsigned inLags, bool inUseHalf);

    /// Makes room in the rows for modes with length and lags of `inLength` in sum. [control]
    void ReserveMemory(unsigned inLength);

    /// The length set
    [[nodiscard]] unsigned GetMaxLen() const { return mLength; }

    /// out[m] = sum of x[n] x[n + m], for m from 0 to `inLags - 1`. With `inWindow`, and if the frame has the
    /// length set, of the frame times 1 - cos(2 pi (i + 0.5) / length): a Hann window of mean 1. Rows may be
    /// the same. [real-time]
    void GetAutocorr(const float* inFrame, float* outCorrelation, unsigned inLags = kAll,
                     unsigned inLength = kAll, bool inWindow = true);

    /// The same with the magnitude of the spectrum in place of its square: strong partials outweigh the rest
    /// less, which makes periods stand out. It goes round the transform, so that values for lags near the
    /// length are not exact sums. [real-time]
    void GetSqrtAutocorr(const float* inFrame, float* outCorrelation, unsigned inLags = kAll,
                         unsigned inLength = kAll, bool inWindow = true);

    /// out[m] = sum of a[n] b[n + m], with the window on both frames if `inWindow`. With `inBothSides` there
    /// are `2 inLags - 1` values, for m from `1 - inLags` on. Rows may be the same. [real-time]
    void GetCrosscorr(const float* inFrameA, const float* inFrameB, float* outCorrelation,
                      unsigned inLags = kAll, unsigned inLength = kAll, bool inWindow = true,
                      bool inBothSides = false);

private:
    struct FreeState
    {
        void operator()(brisken::FFTState_Float* inState) const { brisken::transform::FFTFree(inState); }
    };

    struct Transform
    {
        void Init(unsigned inOrder);

        unsigned mSize = 0;
        std::unique_ptr<brisken::FFTState_Float, FreeState> mState;
    };

    [[nodiscard]] const Transform* Choose(unsigned& ioLags, unsigned& ioLength) const;
    void Analyze(const Transform& inTransform, const float* inFrame, unsigned inLength, bool inWindow,
                 std::vector<float>& outSpectrum);
    void Correlate(const float* inFrame, float* outCorrelation, unsigned inLags, unsigned inLength,
                   bool inWindow, bool inSquare);
    void ReserveTransform(unsigned inSize);

    unsigned mLength = 0;
    bool mUseHalf = false;
    Transform mFull;
    Transform mHalf;
    std::vector<float> mWindow;
    std::vector<float> mFrame;
    std::vector<float> mSpectrum;
    std::vector<float> mOtherSpectrum;
    std::vector<unsigned char> mWork;
};

} // namespace tessaro
