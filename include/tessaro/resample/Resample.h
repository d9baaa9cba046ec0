#pragma once

#include <cstdint>
#include <memory>

#include <tessaro/Export.h>

namespace tessaro {

class CoeffTableStore;
class SampleHistory;

/// Converts the sample rate of one stream, by a windowed sinc of which a table holds as many rows as there
/// are positions between two input samples. Double precision throughout, floats outside.
///
/// Life cycle: set rates, and if need be order, noise floor and Nyquist shift; `Initialize`, or the first
/// `Process` does it; process. The setters, but for the noise floor, are ignored from then on until
/// `Deinitialize(false)`; an `Initialize` after that without a change clears the past and keeps the table. A
/// new object puts out nothing until it was given rates.
///
/// Tables are expensive: taps x rows evaluations of a Bessel series, some milliseconds for 44100 to 48000 Hz.
/// Objects with equal settings share them, through a process-wide cache of the 64 tables made last.
///
/// Rates: their ratio is reduced, so that 44100 to 48000 Hz takes 160 rows. A ratio that takes more than
/// 1000, or that of rates with a fraction, is taken with 1000 rows, between which the output is interpolated.
///
/// Cost: each row is taken from memory once a call and then serves all outputs that it is due for, so calls
/// of three rounds through the rows and more (441 samples from 44100 to 48000 Hz) take less than half the
/// time that short calls take for each output. NaNs and infinities in the past take the fast way away.
///
/// Latency is `GetLatency`, and next to nothing more: the rest below a sample is taken out.
///
/// One object is one channel. Copies share the table, and have a past of their own. `Initialize` allocates,
/// takes the cache's lock and may make a table [control], so that `Process` and `Process2` are `[real-time]`
/// for initialized objects only. One thread at a time; only `Initialize` meets other objects.
///
/// Method: polyphase filter bank (Crochiere and Rabiner, Multirate Digital Signal Processing, 1983, section
/// 3.3) of a sinc with a Kaiser window, whose beta is (A - 8.7) * 0.1102 (Kaiser, 1974).
class TESSARO_EXPORT Resample
{
public:
    /// 255 taps, noise floor 150 dB, Nyquist shift 0.3. Tells 48000 and 44100 Hz, but has not been given
    /// rates. [control]
    Resample();
    Resample(const Resample& inOther);
    Resample& operator=(const Resample& inOther);
    ~Resample();

    /// Taps a row: the odd number at or below `inOrder`, 1 to 2^24. The more, the steeper: at a noise floor
    /// of 150 dB the transition is 20 / taps of half the source rate wide. Starts the stream anew. [stopped]
    void SetFilterOrder(int inOrder);

    /// How far down the stop band lies, in dB: 60 and above by a Kaiser window, below that a Blackman window,
    /// whatever the value. Taken up by the next `Initialize`, which then keeps the place between two samples
    /// at which the stream stands. [control]
    void SetNoiseFloor(double inDecibels);

    /// Where the transition lies: its middle, at -6 dB, goes down by `inShift` times 12.5 / taps of half the
    /// source rate. Downwards 0.31 puts it at half the destination rate; upwards 0 puts it at half the source
    /// rate, and it goes 0.6 of the way. [stopped]
    void SetNyquistShift(double inShift);

    /// The rates in Hz; one that is not above 0, not finite, or beyond the range of int leaves the stored one
    /// as it is. With `inRoundToInteger` they are rounded (and such as would become 0 ignored). Equal rates
    /// make `Process` a copy. Starts the stream anew. [stopped]
    void SetSampleRates(float inSource, float inDestination, bool inRoundToInteger);
    void SetSampleRates(int inSource, int inDestination);

    /// Gets the table and clears the past. Nothing for equal rates, and for an object without rates. Throws
    /// `std::bad_alloc`, and is not initialized then. [control]
    void Initialize();

    /// Opens the setters; with `inRelease` lets go of table and past too. [control]
    void Deinitialize(bool inRelease);

    [[nodiscard]] bool IsInitialized() const { return mInitialized != 0; }

    /// In samples of the destination rate; 0 for equal rates. [configured]
    [[nodiscard]] int GetLatency() const { return mLatency; }

    [[nodiscard]] float GetSourceSampleRate() const { return mSettings.mSourceRate; }
    [[nodiscard]] float GetDestSampleRate() const { return mSettings.mDestRate; }

    /// Room for the output of `inCount` input samples, in single precision: for blocks below 2^22 outputs. A
    /// `Process` that follows `Process2` may give what one more input sample gives. [configured]
    [[nodiscard]] int GetOutputBufferSize(int inCount) const;

    /// Consumes `inCount` samples and returns how many came out. The rows may not overlap. Null rows and a
    /// count that is not above 0 give 0.
    int Process(const float* inInput, float* outOutput, int inCount);

    /// Writes `inCount` samples and returns how many of the input it consumed: those that the outputs took,
    /// and, if the last of them was the last due before a further input sample, that sample too. The next
    /// call begins behind what was consumed, and so may a call of `Process`.
    int Process2(const float* inInput, float* outOutput, int inCount);

private:
    /// What a table is attached for
    struct Settings
    {
        bool operator==(const Settings&) const = default;

        std::int32_t mOrder = 0;      ///< taps a row
        std::int32_t mTableCount = 0; ///< rows; 0: nothing to convert
        float mSourceRate = 0.0f;
        float mDestRate = 0.0f;
        double mStep = 0.0; ///< rows from one output sample to the next
        double mNyquistShift = 0.0;
        double mNoiseFloor = 0.0;
    };

    void PreComputeStuff();
    void SetRatio(std::int64_t inSource, std::int64_t inDestination);
    void AttachTable();

    [[nodiscard]] bool IsReady();
    [[nodiscard]] bool IsCopy() const { return mSettings.mSourceRate == mSettings.mDestRate; }
    int PassThrough(const float* inInput, float* outOutput, int inCount) const;
    int Feed(const float* inInput, int inSteps);
    void MoveOn(int inSteps);
    [[nodiscard]] int CountStepsFor(int inOutputs) const;

    int Generate(float* outOutput, int inSteps, int inMostOutputs);
    int GenerateSingly(float* outOutput, int inSteps, int inMostOutputs, bool inUntilOnGrid);
    int GenerateInBanks(float* outOutput, int inSteps, int inMostOutputs);
    [[nodiscard]] bool IsPhaseOnGrid() const;
    void StepToNextOutput(double& ioPhase, std::int64_t& ioDue) const;
    [[nodiscard]] double ComputeFromPlainRows() const;
    [[nodiscard]] double ComputeBehindLastRow(const double* inWindow) const;
    [[nodiscard]] double ComputeFromBank() const;

    std::int32_t mInitialized = 0;
    Settings mSettings;
    Settings mAttached; ///< what the table was made for; all zero without one
    std::int32_t mLatency = 0;
    double mPhase = 0.0;          ///< in rows, of the next output
    std::int64_t mDue = 0;        ///< input samples that the window moves on to the next output
    std::int32_t mWriteIndex = 0; ///< of the window's first sample, counted round by the order
    std::shared_ptr<const CoeffTableStore> mTable;
    std::unique_ptr<SampleHistory> mHistory;
};

} // namespace tessaro
