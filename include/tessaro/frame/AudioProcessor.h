#pragma once

#include <cstdint>

#include <ombrel/utility/Flags.h>
#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro {

/// A processor that is driven block by block, with a fixed channel count and sampling rate and a block size
/// that has a maximum: the frame of limiters, resamplers, convolution and models.
///
/// Life cycle: construct, `SetMode`, then `Process` any number of times; `Reset` and setters between blocks.
/// Before `SetMode` nothing but setters may be called. Held by `boost::intrusive_ptr`, never copied.
///
/// Audio is planar: `numChannels` rows of `numSamples` floats. The `Flags` argument means the same wherever a
/// `Process` of this library takes one: bit n set, channel n is silent in this block, and channels from 64 on
/// share the bits of the first 64 (`Flags::GetBitModulo`). The row of a silent channel is a valid pointer to
/// memory that holds nothing and is not read; the processor behaves as on zeros and its state moves on. Where
/// a class has no output mask it writes the whole output.
///
/// No lock, no thread: all calls of an instance come from the thread that drives it. `Process` is
/// `[real-time]`, except for a block above the maximum, which first makes the processor grow.
class TESSARO_EXPORT AudioProcessor : public ombrel::utility::RefCountedObject,
                                      private ombrel::utility::noncopyable
{
public:
    /// An empty processor: no channels, rate 0, maximum block size 0, no delays.
    AudioProcessor() = default;
    ~AudioProcessor() override;

    /// Configures: channels, sampling rate in Hz, largest block in samples. This form only stores the three;
    /// derived classes also allocate what they need. [control]
    virtual void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize);

    /// Processes one block. This form grows the processor (`ChangeBufferSize`) when the block is larger than
    /// the maximum and does nothing else; derived classes call it first, so that a block which is too large
    /// is never an error. `[real-time]` up to the maximum block size. [configured]
    virtual void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                         ombrel::utility::Flags<std::uint64_t> inSilentChannels);

    /// Clears history, and keeps mode and parameters. This form does nothing. [configured]
    virtual void Reset();

    /// Changes the largest block; this form calls `SetMode` with the other two as they are. [control]
    virtual void ChangeBufferSize(int inMaxBlockSize);

    [[nodiscard]] int GetMaxBlockSize() const { return mMaxBlockSize; }
    [[nodiscard]] int GetNumChannels() const { return mNumChannels; }
    /// Hz
    [[nodiscard]] int GetSamplingRate() const { return mSamplingRate; }
    /// How late the output is against the input, in samples
    [[nodiscard]] int GetSystemDelay() const { return mSystemDelay; }
    /// How many samples behind the block the processor reads from its input rows
    [[nodiscard]] int GetLookAhead() const { return mLookAhead; }

    /// Stores what the two getters report; nothing else follows from it.
    void SetSystemDelay(int inSamples) { mSystemDelay = inSamples; }
    void SetLookAhead(int inSamples) { mLookAhead = inSamples; }

    /// Linear amplitude to decibels; -400 below 1e-20. [any thread]
    [[nodiscard]] static float Amp2DB(float inAmplitude);
    /// Decibels to linear amplitude. [any thread]
    [[nodiscard]] static float DB2Amp(float inDecibels);
    /// The coefficient `a` with which `y += a * (x - y)` reaches 1 - 1/e of a step in `inSeconds`; 1 for
    /// exactly 0 seconds. The rate in Hz. [any thread]
    [[nodiscard]] static float TimeToIirA(float inSeconds, float inRate);
    /// 0 up to `inLow`, 1 from `inHigh` on, a straight line between. [any thread]
    [[nodiscard]] static float SoftDecision(float inX, float inLow, float inHigh);
    /// Index of the first largest value of `inData[inFirst]` to `inData[inLast]`, that one included;
    /// `inFirst` when there is none. [any thread]
    [[nodiscard]] static int FindMax(const float* inData, int inFirst, int inLast);

    // The direct window functions. `GetFFTWindow` is another family: these have their points half a sample
    // off the edges or on them, and no leading zero. `inNormalize` is 0 for a mean square of the window of 1,
    // 1 for a mean of 1, 2 for the window as it is. All are for configuration, not for processing.

    /// Fills `outWindow` with a Hann window whose points stand half a sample inside its edges, each raised to
    /// `inPower`.
    static void HanningWindow(float* outWindow, int inLength, int inNormalize, float inPower);
    /// Multiplies the data by a Kaiser window of shape `inBeta`. `inNormalize` looks at the window, not at
    /// the data.
    static void ApplyKaiserWindow(float* ioData, int inLength, double inBeta, int inNormalize);
    static void ApplyKaiserWindow(double* ioData, int inLength, double inBeta, int inNormalize);
    /// Fills `outWindow` with the window derived from the Kaiser window of shape pi * `inAlpha`: the squares
    /// of points half the length apart add up to 1.
    static void KBDWindow(float* outWindow, int inLength, float inAlpha);

private:
    static double BesselI0(double inX);
    static double I0(double inX);

    int mMaxBlockSize = 0;
    int mNumChannels = 0;
    int mSamplingRate = 0;
    int mSystemDelay = 0;
    int mLookAhead = 0;
};

} // namespace tessaro
