#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <brisken/filter/TapWindows.h>
#include <ombrel/utility/CheckedValue.h>
#include <tessaro/Export.h>

namespace tessaro::utility {

/// Reads a buffer between its samples: a random-access interpolator over a whole buffer, for conversions of
/// clips and for delays that move.
///
/// The buffer counts as one period of a loop, so that a read near an edge takes in samples of the other one.
/// That holds for buffers of any length, shorter ones than the kernel too.
///
/// Construct with the number of phases, the places between two samples at which it can read; a position
/// counts as the nearest of them. `SetOptimalKernel` designs a sinc under a Kaiser window of shape 12, as a
/// row of taps for each phase, which sum to about 1. Then read. Before, there is no kernel, and reads give 0.
///
/// No latency: the value at position 5.0 is that of sample 5, through the low-pass. It is late only where the
/// caller gives it positions as far back as `GetLookAround` says, because he has no later samples yet.
///
/// How precise: rounding a position to one of 8192 places leaves noise that grows with the frequency, 106 dB
/// below a tone of 997 Hz at a source rate of 44100 Hz and 80 dB below one of 20 kHz; positions that are
/// whole multiples of 1 / 8192, as in doubling the rate, are exempt and leave 120 dB. The band ends at half
/// the slower rate, where the gain is -6 dB. With 16 zero crossings it is flat to 0.02 dB up to 0.41 of the
/// slower rate and 115 dB down from 0.63; with 28 these are 0.43 and 0.59. Sums are in single precision.
///
/// Const functions are `[real-time]` and `[any thread]`. NaN and infinity reach as far as the kernel, where
/// they meet a tap of 0 too.
class TESSARO_EXPORT Resampler
{
public:
    /// `inPhases` below 1 counts as 1.
    explicit Resampler(std::int32_t inPhases);

    /// Designs the kernel: `inZeroCrossings` of the sinc to each side, which need not be whole, with its
    /// first zero at one sample of the slower of the two rates. More of them make the edge of the band
    /// steeper and each read longer. Rates are in Hz, and only their ratio counts. Nothing happens unless all
    /// three are positive, nor for kernels of more than 2^31 taps. Throws `std::bad_alloc`. [control]
    void SetOptimalKernel(float inZeroCrossings, float inSourceRate, float inDestinationRate);

    /// The value at `inPosition` samples from the start of a buffer of `inCount`; 0 for an empty one. A
    /// position beyond an edge wraps around; from 2^52 on, and where it is no number, it gives 0.
    [[nodiscard]] float InterpolateSingle(const float* inInput, unsigned inCount, double inPosition) const;

    /// Values at `inStartPosition + n * inStep` for n below `inOutCount`, for all channels: planar rows, to
    /// `outOutput[channel][inOutOffset + n]`. `inStep` may be anything: 0 and negative ones read on the spot
    /// and backward. The rows of output must not overlap those of input.
    ///
    /// With `inCopyWhenUnity` and a step of exactly 1.0 the output is first copied from the input, from the
    /// sample nearest to the start on, and then overwritten with the kernel's values all the same; so what
    /// comes out of a unity step has been through the low-pass, on which callers rely. Only an object without
    /// kernel gives the copy.
    void InterpolateNSamples(const float* const* inInput, unsigned inChannels, unsigned inCount,
                             double inStartPosition, float* const* outOutput, unsigned inOutOffset,
                             unsigned inOutCount, double inStep, bool inCopyWhenUnity) const;

    /// How many samples to each side of a position a read may take in, and a little more: half the length of
    /// the kernel's first row, plus 2.
    [[nodiscard]] unsigned GetLookAround() const;

private:
    static constexpr std::size_t kTapsPerBlock = 16;

    /// Taps, where vectors like to begin.
    struct alignas(64) TapBlock
    {
        float mTaps[kTapsPerBlock] = {};
    };

    /// How many samples before the position a row of taps begins, and its length.
    struct Row
    {
        std::int32_t mOffset;
        std::uint32_t mLength;
    };

    struct Chunk;

    void SplitPhases(const std::vector<float>& inPrototype);
    [[nodiscard]] float ReadWrapped(const float* inInput, unsigned inCount,
                                    const brisken::filter::TapWindow& inWindow) const;
    void FindWindows(double inStartPosition, double inStep, unsigned inFirst, unsigned inCount,
                     Chunk& ioChunk) const;
    void ReadChunk(const float* inInput, unsigned inCount, const Chunk& inChunk, float* outOutput) const;

    std::int32_t mPhases;
    std::size_t mBlocksPerRow = 0;
    std::vector<Row> mRows;
    std::vector<TapBlock> mTaps;
};

/// Converts whole buffers from one sampling rate to another, in Hz, with a `Resampler` of 8192 phases.
///
/// `inQuality` from 0 to 1, beyond which it is clamped, gives 4 to 28 zero crossings; not set it is 0.5, with
/// 16. Each row of `outOutput`, which is resized to `inChannels`, gets `inCount * destination / source`
/// samples, computed in single precision and rounded half away from zero. Equal rates copy. The input counts
/// as one period of a loop: the edges of the output have in them what the other end of the input ends in.
/// A rate of 0 gives empty rows. The input must not lie in `outOutput`. Allocates; throws `std::bad_alloc`.
/// [any thread]
TESSARO_EXPORT void Resample(unsigned inSourceRate, unsigned inDestinationRate, unsigned inCount,
                             unsigned inChannels, const float* const* inInput,
                             std::vector<std::vector<float>>& outOutput,
                             const ombrel::checked_value<float>& inQuality);

/// The same for one channel.
TESSARO_EXPORT void Resample(unsigned inSourceRate, unsigned inDestinationRate, unsigned inCount,
                             const float* inInput, std::vector<float>& outOutput,
                             const ombrel::checked_value<float>& inQuality);

} // namespace tessaro::utility
