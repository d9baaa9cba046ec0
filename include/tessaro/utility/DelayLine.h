#pragma once

#include <vector>

#include <ombrel/utility/Noncopyable.h>
#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro::utility {

/// Delays one channel in place by a whole number of samples, which may be changed at any time up to a maximum
/// that is fixed at construction.
///
/// A change of the delay jumps in time, without smoothing: the stream that was written so far goes on, only
/// the place where it is read moves. A delay of 0 gives the input.
///
/// Latency is the delay. Any number of samples a call; the split of a stream into calls changes nothing.
/// Allocates in the constructor only: all else is `[real-time]`. One thread at a time. Held by
/// `boost::intrusive_ptr` or on the stack, never copied.
class TESSARO_EXPORT DelayLine : public ombrel::utility::RefCountedObject,
                                 private ombrel::utility::noncopyable
{
public:
    /// Rate in Hz, largest delay in ms; the delay is 0. Throws when memory runs out. [control]
    DelayLine(float inSampleRate, float inMaxDelayMillis);
    ~DelayLine() override;

    /// Sets the delay in ms, rounded to the nearest sample. Below 0 (and NaN) counts as 0, above the maximum
    /// as the maximum.
    void SetDelayMillis(float inMillis);

    /// Sets the delay in samples; above the maximum counts as the maximum.
    void SetDelaySamples(unsigned inSamples);

    /// What was set, after the limits and before rounding to samples.
    [[nodiscard]] float GetDelayMillis() const { return mDelayMillis; }
    [[nodiscard]] unsigned GetDelaySamples() const { return mDelaySamples; }
    /// Hz
    [[nodiscard]] float GetSampleRate() const { return mSampleRate; }

    /// Delays the next `inCount` samples.
    void ProcessInPlace(unsigned inCount, float* ioData);

    /// Clears what is in the delay, so that zeros come out for as long as it is. Older samples stay: they are
    /// heard if the delay is made longer before as many new ones have come in.
    void Reset();

private:
    [[nodiscard]] unsigned GetLength() const { return static_cast<unsigned>(mStorage.size()); }
    void MoveReadIndex(unsigned inDelay);
    void Store(unsigned inCount, const float* inData);
    void Fetch(unsigned inCount, float* outData);
    [[nodiscard]] unsigned Advanced(unsigned inIndex, unsigned inCount) const;

    float mSampleRate;
    float mMaxDelayMillis;
    unsigned mLongestDelay; ///< samples
    std::vector<float> mStorage;
    float mDelayMillis = 0.0f;
    unsigned mDelaySamples = 0;
    unsigned mWriteIndex = 0;
    unsigned mReadIndex = 0;
};

} // namespace tessaro::utility
