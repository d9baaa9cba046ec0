#pragma once

#include <cstdint>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <ombrel/utility/Flags.h>
#include <tessaro/Export.h>
#include <tessaro/frame/DataTail.h>
#include <tessaro/resample/ResampleInt.h>

namespace tessaro::dynamics {

/// The largest magnitude of each frame of several channels, between its samples too: oversamples nine times
/// and looks at the frame's nine values, the sample and four on both sides of it.
///
/// Late by `kDelay` frames. `SetMode` allocates [control]; all else is [real-time]. NaN is passed over. A
/// skipped channel is not looked at, and its past stays. One thread at a time. Exported for the tests only.
class TESSARO_EXPORT InterSamplePeaks
{
public:
    static constexpr int kDelay = 8;
    /// Most frames a call
    static constexpr unsigned kLongestRun = 256;

    InterSamplePeaks();
    ~InterSamplePeaks();

    /// Rate in Hz; clears the past. [control]
    void SetMode(int inNumChannels, int inSamplingRate);
    void Process(const float* const* inInput, unsigned inCount, float* const* outPeaks,
                 ombrel::utility::Flags<std::uint64_t> inSkipped);
    void Reset();

private:
    boost::intrusive_ptr<ResampleInt> mUpsampler;
    DataTail mOversampled; ///< with the values of the frame before
};

} // namespace tessaro::dynamics
