#pragma once

#include <memory>
#include <vector>

#include <brisken/filter/MRF.h>
#include <tessaro/Export.h>
#include <tessaro/frame/AudioProcessor.h>

namespace tessaro {

/// Converts the sampling rate up or down by whole factors with one linear-phase low-pass: the oversampling
/// stage of limiters.
///
/// Construct, `SetOptions` and `SetMode` in either order, then `Process`. Before both it has no filters, and
/// `Process` does nothing.
///
/// The low-pass is a sinc with its first zero `max(interpolation, decimation)` taps from the centre, under a
/// Kaiser window, scaled so that the output has the level of the input. It runs as a multi-rate filter, which
/// computes only the products that count. The first output stands at the time of the first input, so among
/// `decimation` results the first is kept.
///
/// Latency is `GetSystemDelay`, `taps / 2 - 1` rounded down, counted at the rate between interpolation and
/// decimation: for a pure interpolator in output samples, for a pure decimator in input samples. An odd
/// number of taps is half a sample later than that. `GetMaxBlockSize` tells what `SetMode` was given and
/// bounds nothing: blocks may have any size. Any split of a stream into blocks gives the same output.
///
/// A channel that is flagged silent is not touched: its input is not read, its output row is not written, and
/// its past input stays as it is. `Process` and `Reset` are `[real-time]`. NaN and infinity leave with the
/// past, after `taps / interpolation` inputs or at `Reset`.
class TESSARO_EXPORT ResampleInt : public AudioProcessor
{
public:
    ResampleInt();
    ~ResampleInt() override;

    /// Designs the filter and starts all channels with a clear past. Nothing happens when the four values are
    /// what they were; they begin as 1, 1, 2 and 0.
    ///
    /// Up and down factors and `inTaps` from 1, less counts as 1. Of the taps the last is 0, so that an even
    /// number has a whole delay. `inKaiserBeta` is the shape of the window, 0 being a rectangle. [control]
    void SetOptions(int inInterpolation, int inDecimation, int inTaps, float inKaiserBeta);

    /// Starts with a clear past. With the channel count and sampling rate as they were, that is all, and the
    /// maximum block size stays. [control]
    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize) override;

    /// Converts one block.
    ///
    /// Interpolating by 1, `inNumSamples` is the number of inputs, and their number divided by `decimation`
    /// that of outputs; of a number that is no multiple the remainder is not read. Interpolating by more, it
    /// counts iterations, each of which takes `decimation` inputs and gives `interpolation` outputs.
    ///
    /// `outOutput` null means in place: each row of `inInput` is overwritten, and must have room for the
    /// longer of the two. An output row may be its input row, too, and must not overlap it otherwise.
    void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                 ombrel::utility::Flags<std::uint64_t> inSilentChannels) override;

    /// Makes all channels as new.
    void Reset() override;

private:
    struct FreeState
    {
        void operator()(brisken::MRFState_Float* inState) const { brisken::filter::MRFFree(inState); }
    };

    void CommitTaps();

    std::vector<std::unique_ptr<brisken::MRFState_Float, FreeState>> mFilters;
    std::vector<float> mTaps;
    int mTapCount = 2;
    int mInterpolation = 1;
    int mDecimation = 1;
    float mKaiserBeta = 0.0f;
};

} // namespace tessaro
