#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessaro/frame/DSPAnalyzer.h>
#include <tessaro/frame/DataTail.h>
#include <tessaro/utility/FFTPool.h>

namespace host {

/// The long-term average spectrum of each channel: the mean power of overlapping windowed frames over the
/// whole selection (Welch's method).
///
/// Levels are linear amplitudes: a sine of amplitude 1 reads 1 on the bin that it falls on. Frames overlap by
/// three quarters, and a last one ends with the selection, so that each sample counts. A selection shorter
/// than a frame is one frame, with a window as short as the selection. Samples that are NaN or infinite count
/// as zeros.
class LongTermSpectrum : public tessaro::DSPAnalyzer
{
public:
    static constexpr std::int64_t kFewestSamples = 16;

    /// `inOrder` is the base-2 logarithm of the frame length, `inWindowType` one of `tessaro::fftwindow`.
    LongTermSpectrum(unsigned inOrder, unsigned inWindowType);

    void SetIOConfig(int inNumChannels, float inSamplingRate) override;
    /// Refuses fewer than `kFewestSamples`.
    bool SetSelection(std::int64_t inStart, std::int64_t inLength) override;
    int GetDesiredBlockSize() const override { return static_cast<int>(mFrameLength); }
    bool IsCompleted() const override { return mDone >= mLength; }
    float GetProgress() const override;
    void Start(float* inResult) override;
    std::int64_t Analyze(const float* const* inInput, int inNumChannels, int inNumSamples) override;
    void Done() override;

    struct Peak
    {
        double mFrequency = 0.0; ///< Hz, between the bins
        double mLevel = 0.0;     ///< linear
    };

    /// Valid after `Done`: the level of each bin from 0 Hz to half the sampling rate.
    const std::vector<double>& GetLevels(std::size_t inChannel) const { return mChannels[inChannel].mLevels; }
    /// The highest bin that is neither the first nor the last, corrected by where the window puts a sine
    /// between two bins: exact for a sine that stands alone. Level 0 for silence.
    Peak FindPeak(std::size_t inChannel) const;
    double GetBinWidth() const
    {
        return static_cast<double>(mSamplingRate) / static_cast<double>(mFrameLength);
    }
    std::size_t GetFrameLength() const { return mFrameLength; }
    std::int64_t GetFrameCount() const { return mFrameCount; }
    std::int64_t GetInvalidCount(std::size_t inChannel) const { return mChannels[inChannel].mInvalidCount; }

private:
    struct Channel
    {
        std::vector<double> mLevels; ///< sums of power until `Done`
        std::int64_t mInvalidCount = 0;
    };

    double GetWindowResponse(double inBins) const;
    void AddFrame(std::size_t inOffset);
    void CleanNewSamples(std::size_t inCount);

    unsigned mOrder;
    unsigned mWindowType;
    std::size_t mFrameLength;
    float mSamplingRate = 0.0f;
    std::int64_t mLength = 0;
    std::int64_t mDone = 0;
    std::int64_t mFrameCount = 0;
    std::size_t mNextFrame = 0; ///< offset in the tail

    tessaro::FFTPool mTransforms{"long-term spectrum"};
    tessaro::DataTail mTail; ///< the newest frame length of samples, and the block behind it
    std::vector<float> mWindow;
    double mWindowSum = 0.0;
    std::vector<float> mFrame;
    std::vector<float> mSpectrum;
    std::vector<float> mPower;
    std::vector<Channel> mChannels;
};

} // namespace host
