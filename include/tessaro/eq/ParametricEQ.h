#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include <brisken/filter/IIR.h>
#include <kestrin/AudioChannelDescription.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace eq {

/// Equalizer of six bands, each a peak, a low-pass or a high-pass, the same on all channels.
///
/// Life cycle: construct with block size, rate and layout, set the bands, then process blocks in place. A
/// change of block size, rate or layout puts *all bands back* to the table below; set them again. Bands are
/// set between blocks and take effect at once, without a ramp; their filters go on from the signal as it was.
///
///     band  enabled  shape      frequency  gain  Q
///     0     no       high-pass  30 Hz      0 dB  0.7
///     1     yes      peaking    180 Hz     0 dB  0.3
///     2     yes      peaking    520 Hz     0 dB  0.3
///     3     yes      peaking    1870 Hz    0 dB  0.3
///     4     yes      peaking    7400 Hz    0 dB  0.3
///     5     no       low-pass   10000 Hz   0 dB  0.7
///
/// Filters are those of `BiquadDesign.h`, in double precision, in the order of the bands. A peaking band at
/// exactly 0 dB costs nothing.
///
/// A square wave of 1e-10 on even and 2e-10 on odd channels, -200 and -194 dB, is added to the input and
/// stays in the output, so that filters never decay into denormal numbers. It starts anew with each block, by
/// which the split of a stream into blocks shows. No latency. A NaN or infinity in the input stays until
/// `Reset`.
///
/// Band numbers must be 0 to 5; they are not checked. No setting is checked: NaN makes the band's output NaN.
/// One thread at a time. `ProcessInPlace`, `Reset` and the setters of bands neither allocate nor throw
/// [real-time]; the rest allocates [control]. Not copied.
class TESSARO_EXPORT ParametricEQ : public ombrel::utility::RefCountedObject
{
public:
    using ChannelLayout = std::vector<kestrin::AudioChannelDescription>;

    static constexpr std::size_t kNumBands = 6;

    /// Shapes of a band
    enum Shape : unsigned
    {
        kPeaking = 0,
        kLowpass = 1,
        kHighpass = 2
    };

    /// Largest number of samples in a block; rate in Hz. Throws `std::bad_alloc`. [control]
    ParametricEQ(int inMaxBlockSize, float inSampleRate, ChannelLayout inLayout);
    ParametricEQ(const ParametricEQ&) = delete;
    ParametricEQ& operator=(const ParametricEQ&) = delete;
    ~ParametricEQ() override;

    /// `inCount` samples, at most the block size, of as many rows as the layout has channels; the rows must
    /// not overlap. [real-time]
    void ProcessInPlace(unsigned inCount, float* const* ioChannels);

    /// Clears the memory of all filters. [configured], [real-time]
    void Reset();

    /// Nothing happens if the new value equals the present one. Otherwise the filters are made anew and all
    /// bands go back to the table. Throws `std::bad_alloc`. [control]
    void SetAudioChannelLayout(const ChannelLayout& inLayout);
    void SetSampleRate(float inSampleRate);
    void SetMaxProcessingBlockSize(int inMaxBlockSize);

    /// Takes the band in or out, without touching its filter: what it remembers is the signal of its last
    /// time. [configured], [real-time]
    void SetBandEnable(std::size_t inBand, bool inEnabled);
    /// One of `Shape`. Any other makes the band pass everything. [configured], [real-time]
    void SetBandShape(std::size_t inBand, unsigned inShape);
    /// Hz. A move by a factor of about two (0.3 decades) or more clears the band's memory. Above half the
    /// sample rate a high-pass mutes, any other shape passes. [configured], [real-time]
    void SetFrequency(std::size_t inBand, float inFrequency);
    /// dB; counts for peaking bands. [configured], [real-time]
    void SetGain(std::size_t inBand, float inGain);
    /// [configured], [real-time]
    void SetQ(std::size_t inBand, float inQ);

    /// The six coefficients `b0 b1 b2 a0 a1 a2` of a band with these settings, for display. A shape that does
    /// not exist writes nothing. [any thread], [real-time]
    static void CalculateIIRCoefficients(double* outCoefficients, float inSampleRate, unsigned inShape,
                                         float inFrequency, float inGain, float inQ);

private:
    struct Band
    {
        bool mEnabled;
        unsigned mShape;
        float mLastMoveFrequency;
        float mFrequency;
        float mGain;
        float mQ;
        bool mBypassed;
    };
    using FilterHandle = std::shared_ptr<brisken::IIRState_Double>;
    struct FreeScratch
    {
        void operator()(double* inScratch) const;
    };

    void UpdateAudioConfig();
    void UpdateBypass(std::size_t inBand);
    void CalculateIIRCoefficients(std::size_t inBand, bool inKeepHistory);
    void AddOffset(std::size_t inChannel, unsigned inCount, float* ioSamples) const;
    void ProcessPair(std::size_t inChannel, unsigned inNumChannels, unsigned inCount,
                     float* const* ioChannels);

    int mMaxBlockSize;
    float mSampleRate;
    ChannelLayout mLayout;
    std::vector<Band> mBands;
    std::vector<std::array<FilterHandle, kNumBands>> mFilters; ///< of each channel
    std::unique_ptr<double[], FreeScratch> mScratch;           ///< two rows of the block size
    unsigned mScratchPitch = 0;
};

} // namespace eq
