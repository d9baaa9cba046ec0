#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/filters/ButterworthCascade.h>
#include <tessaro/filters/DeskFilter.h>
#include <tessaro/filters/EqualizerSections.h>

namespace parametric {

/// Equalizer of a channel strip: high-pass, low-pass, two shelves and five peaks, behind 45 numbered
/// parameters.
///
/// Life cycle: construct, `SetChannels`, `SetSampleRate`, parameters, `Resume`; then `Process` or
/// `ProcessOneSample`, with `SetParameter` between calls; `Suspend` before a stop. Parameters are only noted
/// when they are set; the next processing call applies what has changed. Every processing call also makes up
/// for an initialization that is due, so that any order of calls is safe.
///
/// Parameters, with `nyq` for half the sample rate; switches are on from 0.5 up:
///
///     index               meaning                              unit  range             default
///     0                   low shelf frequency                  Hz    20 .. nyq         40
///     1                   low shelf gain                       dB    -48 .. 48         0
///     2                   high shelf frequency                 Hz    20 .. nyq         18000
///     3                   high shelf gain                      dB    -48 .. 48         0
///     4, 8, 12, 16, 20    band frequency                       Hz    20 .. nyq         50, 200, 800, 3200,
///                                                                                      12800
///     5, 9, 13, 17, 21    band Q                                     0.0001 .. 10000   2
///     6, 10, 14, 18, 22   band gain                            dB    -48 .. 48         0
///     7, 11, 15, 19, 23   band on                                    -0.5 .. 1.49      1
///     24                  master gain                          dB    -96 .. 48         0
///     25                  a frequency keeps Q, not bandwidth         -0.5 .. 1.49      1
///     26, 27              low, high shelf is of second order         -0.5 .. 1.49      0
///     28                  state variable form                        -0.5 .. 1.49      0
///     29, 30              low, high shelf on                         -0.5 .. 1.49      1
///     31                  sample rate                          Hz    0 .. 192000       the rate
///     32 .. 36            band bandwidth                       Hz    0.0001 .. 10000   25, 100, 400, 1600,
///                                                                                      6400
///     37, 40              high-pass, low-pass on                     -0.5 .. 1.49      0
///     38, 41              high-pass, low-pass cutoff           Hz    20 .. nyq         20, 20000
///     39, 42              high-pass, low-pass order                  1 .. 8            4
///     43                  bypass                                     0 .. 1            0
///     44                  read by nothing                            0 .. 1            0
///
/// Shelves and bands glide to new settings over 1323 samples, 30 ms at 44100 Hz, whatever the rate. A band or
/// shelf that comes on fades in from a straight wire; one that goes off, or whose gain comes within 0.0001 dB
/// of 0, stops at once. High-pass, low-pass, master gain and bypass change at once.
///
/// No latency (`GetLatency`). A NaN or infinity in the input stays until `Initialize`, `Resume` or
/// `SetupFilters` when suspended. Split of a stream into blocks shows by rounding only, and only while
/// something glides. There is no protection against denormal numbers: set the thread's flush-to-zero mode.
///
/// One thread at a time: nothing is locked. Processing does not allocate, except in the call that first
/// applies parameters or a change of order of a shelf (26, 27), which replaces a section on the heap.
/// Construction, copies and `SetChannels` allocate [control]. Everything else is [real-time], with the
/// exception above for `SetRuntimeParams`, `SetupFilters`, `Resume` and `ComputeFilterResponse`.
class TESSARO_EXPORT Parametric
{
public:
    static constexpr int kNumParameters = 45;
    static constexpr std::size_t kNumBands = 5;

    /// One channel at 44100 Hz
    Parametric();
    Parametric(const Parametric&);
    Parametric& operator=(const Parametric&);
    Parametric(Parametric&&) noexcept;
    Parametric& operator=(Parametric&&) noexcept;
    ~Parametric();

    /// Forgets the signal and notes all parameters as changed. [configured]
    void Initialize();
    /// Makes the next processing call initialize. [configured], [real-time]
    void Deinitialize();
    /// [configured], [real-time]
    void Suspend();
    /// `Initialize`, with all parameters applied and all ramps at their end. [configured]
    void Resume();

    /// Number of channels, at least 0. Nothing happens if it is the present one. [control]
    void SetChannels(int inChannels);
    /// Hz. Nothing happens if it is the present one; otherwise ranges of frequencies end at the new `nyq`,
    /// frequencies beyond it go down to it, and an initialization is due. [configured], [real-time]
    void SetSampleRate(int inSampleRate);
    /// When suspended, initializes and applies all parameters; otherwise nothing. [configured]
    void SetupFilters();

    /// Filters `inCount` samples of the first channel; the rows may be the same. Bypassed, copies them.
    void Process(const float* inInput, float* outOutput, int inCount);

    /// Filters one sample of each channel. High-pass and low-pass are left out, and bypass is not looked at.
    void ProcessOneSample(const float* inInput, float* outOutput);

    /// Notes a parameter; an index that does not exist is ignored. A value outside of its range, NaN
    /// included, becomes the *middle* of the range. Switches are stored as 0 or 1, but for 25 and 43. A
    /// band's frequency moves its bandwidth or, with 25 off, its Q, limited to their default ranges; Q and
    /// bandwidth move each other without a limit.
    ///
    /// 31 stores nothing: with a rate that differs from the present one, all frequencies move in proportion
    /// to the new upper end of their range, no further than the present `nyq`. They are applied with the
    /// `SetSampleRate` that is to follow. [configured], [real-time]
    void SetParameter(int inIndex, float inValue);
    /// 0 for an index that does not exist. [configured], [real-time]
    [[nodiscard]] float GetParameter(int inIndex) const;
    /// Range of a parameter; its value stays. An index that does not exist is ignored, and leaves the outputs
    /// of `GetBounds` as they were. [configured], [real-time]
    void SetBounds(int inIndex, float inMinimum, float inMaximum);
    void GetBounds(int inIndex, float& outMinimum, float& outMaximum) const;

    /// Applies what has changed, on all channels. [configured]
    void SetRuntimeParams();
    /// Writes the notes of all parameters. Whether the next processing call looks at them is left as it is.
    /// [configured], [real-time]
    void SetAllParameterChangedFlags();
    void ClearAllParameterChangedFlags();

    /// Linear gain of all filters of the first channel at a frequency in Hz, limited to 256; without master
    /// gain and bypass. Applies what has changed first. The slopes of high-pass and low-pass are those of the
    /// analog filters. [configured]
    float ComputeFilterResponse(float inFrequency);

    /// `inValue / sqrt(1 + (a / b)^(2 order))`, or with `b / a` if the flag is off: the slope of a
    /// Butterworth filter. [any thread], [real-time]
    static float ComputeButterResponse(bool inFlag, float inA, float inB, int inOrder, float inValue);

    /// In samples: 0
    [[nodiscard]] int GetLatency() const { return 0; }

    /// Ranges and values that depend on the rate; `SetSampleRate` calls it. [configured], [real-time]
    void SampleRateDependentInitialization();

private:
    using Flags = std::array<bool, kNumParameters>;
    using Values = std::array<float, kNumParameters>;

    struct Channel
    {
        tessaro::fDeskFilter mLowShelf;
        tessaro::fDeskFilter mHighShelf;
        std::array<tessaro::dPARA, kNumBands> mBands;
        tessaro::ButterworthCascade mHighpass;
        tessaro::ButterworthCascade mLowpass;
    };

    [[nodiscard]] bool IsOn(std::size_t inIndex) const { return mValues[inIndex] >= 0.5f; }
    void CatchUp();
    void Mark(std::size_t inIndex);
    void SetDefaultParameters();
    void DeriveFrom(std::size_t inIndex);
    void DeriveFromFrequency(std::size_t inBand);
    void RescaleFrequencies(float inSampleRate);
    void ApplyToShelves(Channel& ioChannel, const Flags& inChanged) const;
    void ApplyToCascades(Channel& ioChannel, const Flags& inChanged) const;
    void ApplyToBand(std::size_t inBand, tessaro::dPARA& ioBand, const Flags& inChanged) const;

    bool mNeedsInitialize = true;
    bool mParametersChanged = true;
    bool mRunning = false;
    int mSampleRate = 44100;
    std::vector<Channel> mChannels;
    float mMasterGain = 1.0f;
    Values mValues{};
    Flags mChanged{};
    Values mMinima{};
    Values mMaxima{};
};

} // namespace parametric
