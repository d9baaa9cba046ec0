#pragma once

#include <cstdint>

#include <tessaro/Export.h>

namespace tessaro {

/// An analyzer: reads a selection once and gives results, but no audio.
///
/// Life cycle: `SetIOConfig`, `SetSelection`; `Start`; then until `IsCompleted`: ask `GetDesiredBlockSize`,
/// read as many samples at the current place, `Analyze` them, move on by the count that it returns, show
/// `GetProgress`. `Done` finishes the results; the getters of the derived class are valid from then on. An
/// analyzer with a latency wants that many samples behind the end of the selection as well, from the file or
/// as silence.
///
/// Call `IsCompleted` exactly once after each `Analyze`: in analyzers of several passes it is what moves on
/// to the next pass.
///
/// Audio is planar: `numChannels` rows of `numSamples` floats. No lock, no thread: all calls of an instance
/// come from the thread that drives it.
class TESSARO_EXPORT DSPAnalyzer
{
public:
    virtual ~DSPAnalyzer();

    /// Channels, sampling rate in Hz.
    virtual void SetIOConfig(int inNumChannels, float inSamplingRate);
    /// The selection in samples. False when the analyzer refuses it. This form accepts it and stores nothing.
    virtual bool SetSelection(std::int64_t inStart, std::int64_t inLength);
    /// Samples behind the end of the selection that the analyzer needs; 0 in this form.
    [[nodiscard]] virtual int GetLatency() const;
    /// How many samples the next `Analyze` would like to have
    [[nodiscard]] virtual int GetDesiredBlockSize() const = 0;
    [[nodiscard]] virtual bool IsCompleted() const = 0;
    /// Percent, 0 to 100
    [[nodiscard]] virtual float GetProgress() const = 0;
    /// Begins. `inResult` is the caller's own, is stored and not touched, and may be null; derived classes
    /// clear their state and call this form.
    virtual void Start(float* inResult);
    /// Takes a block, and returns how many samples of it were consumed.
    virtual std::int64_t Analyze(const float* const* inInput, int inNumChannels, int inNumSamples) = 0;
    /// Finishes the results.
    virtual void Done();

protected:
    DSPAnalyzer() = default;
    DSPAnalyzer(const DSPAnalyzer&) = default;
    DSPAnalyzer& operator=(const DSPAnalyzer&) = default;

    /// What `Start` was given
    [[nodiscard]] float* GetResult() const { return mResult; }

private:
    float* mResult = nullptr;
};

} // namespace tessaro
