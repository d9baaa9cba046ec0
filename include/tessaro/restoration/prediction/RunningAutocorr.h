#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessaro/Export.h>

namespace tessaro {

/// Correlation of a stream with its own past, sample by sample: for each lag, the mean over the last samples
/// of the product of a sample and the one a lag before it.
///
/// `SetMode`, then `RunAutocorr` for each sample. Products are kept as integers of 2^-30, and the sums of
/// these are exact: however long the stream, the mean does not drift, and silence as long as the window
/// brings it back to 0. Samples are expected within -1 to 1; products beyond that are clipped to it, and NaN
/// counts as 0. No latency; the window fills from silence. `RunAutocorr` is `[real-time]`, and takes time in
/// proportion to the number of lags. One thread at a time.
class TESSARO_EXPORT RunningAutocorr
{
public:
    /// No lags
    RunningAutocorr() { SetMode(0, 0, 0); }

    /// `inNumLags` lags from `inFirstLag` samples on, averaged over `inWindow` samples; with a window of 0
    /// each result is the product itself. Forgets the past. [control]
    void SetMode(unsigned inFirstLag, unsigned inNumLags, unsigned inWindow);

    /// Takes one sample and writes one value for each lag. [real-time]
    void RunAutocorr(float inSample, float* outCorrelation);

private:
    void AddProducts(float inSample, const float* inPast, float* outCorrelation);

    unsigned mFirstLag = 0;
    unsigned mNumLags = 0;
    unsigned mWindow = 0;
    double mInverseScale = 1.0;
    /// The past twice over, latest sample first, so that any stretch of it lies in one piece
    std::vector<float> mPast;
    std::size_t mPastIndex = 0;
    /// A row of products, one for each lag, for each sample of the window
    std::vector<std::int32_t> mProducts;
    std::size_t mWindowIndex = 0;
    std::vector<std::int64_t> mSums;
};

} // namespace tessaro
