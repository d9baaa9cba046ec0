#pragma once

#include <cstdint>

#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro {

/// An offline process over a selection of a file.
///
/// Life cycle: `SetIOConfig`, the setters of the derived class, `SetSelection`; `Start`; `Process` over the
/// selection in order; `Flush` for what is still held; `Done`. `ParameterChanged` tells a running process
/// that parameters were altered. Output sample n answers to input sample n - `GetLatency()`: the caller drops
/// as many samples at the start and supplies as many behind the end, from the file or as silence.
///
/// Audio is planar: `numChannels` rows of `numSamples` floats. No lock, no thread: all calls of an instance
/// come from the thread that drives it. Held by `boost::intrusive_ptr`.
class TESSARO_EXPORT DSPProcess : public ombrel::utility::RefCountedObject
{
public:
    ~DSPProcess() override;

    /// The selection in samples. False when the process refuses it. This form accepts it and stores nothing.
    virtual bool SetSelection(std::int64_t inStart, std::int64_t inLength);
    /// Channels, sampling rate in Hz.
    virtual void SetIOConfig(int inNumChannels, float inSamplingRate);
    virtual void Start();
    /// Processes the next block of the selection.
    virtual void Process(const float* const* inInput, float* const* outOutput, int inNumChannels,
                         int inNumSamples) = 0;
    /// Writes up to `inNumSamples` samples of what the process still holds, and returns how many; this form
    /// holds nothing.
    virtual int Flush(float* const* outOutput, int inNumChannels, int inNumSamples);
    virtual void Done();
    /// Delay of the output against the input, in samples; 0 in this form.
    [[nodiscard]] virtual int GetLatency() const;
    virtual void ParameterChanged();
};

} // namespace tessaro
