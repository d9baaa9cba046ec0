#pragma once

#include <cstdint>
#include <vector>

#include <ombrel/utility/Flags.h>
#include <tessaro/Export.h>
#include <tessaro/frame/DataTail.h>
#include <tessaro/restoration/prediction/Excitation.h>

#include "dynamics/RaisedCosineSmoother.h"
#include "dynamics/SlidingMaximum.h"

namespace tessaro::dynamics {

/// Finds the transients of several channels together: 1 where the sound breaks with what it was before, 0
/// where it goes on, for `LimEnvelope` to blend its fast curve in.
///
/// Two signs count, each against its own mean of the last 50 ms: the residual of linear prediction beside the
/// level of the upper band, and the smoothed level itself. Either alone makes a half.
///
/// Late by `GetLatency` frames. `SetMode` allocates [control]; all else is [real-time]. NaN and infinity
/// count as 0, as far as they get into the sums. One thread at a time. Exported for the tests only.
class TESSARO_EXPORT TransientCurve
{
public:
    /// Most frames a call
    static constexpr unsigned kLongestRun = 256;

    TransientCurve();
    ~TransientCurve();

    /// Rate in Hz. Starts anew. [control]
    void SetMode(int inNumChannels, int inSamplingRate);

    [[nodiscard]] int GetLatency() const;

    /// Gives the curve for `inCount` frames, a valid row until the next call. The frames that have just come
    /// in stand at `inPosition` of the rows, and before them at least as many as the latency. Frames of
    /// skipped channels do not count.
    const float* Process(const DataTail& inInput, unsigned inPosition, unsigned inCount,
                         ombrel::utility::Flags<std::uint64_t> inSkipped);
    void Reset();

private:
    using Channels = ombrel::utility::Flags<std::uint64_t>;

    void SumExcitation(const DataTail& inInput, unsigned inPosition, unsigned inCount, Channels inSkipped);
    void SumUpperBand(const DataTail& inInput, unsigned inPosition, unsigned inCount, Channels inSkipped);
    void SumLevel(const DataTail& inInput, unsigned inPosition, unsigned inCount, Channels inSkipped);
    void Decide(unsigned inCount);

    struct UpperBand
    {
        float mPrevious = 0.0f;
        float mMean = 0.0f;
    };

    Excitation mExcitation;
    DataTail mResiduals;
    SlidingMaximum mResidualHold;
    RaisedCosineSmoother mResidualSmoother;
    SlidingMaximum mLevelHold;
    RaisedCosineSmoother mLevelSmoother;
    std::vector<UpperBand> mUpperBands;
    float mFastCoefficient = 1.0f;
    float mMeanCoefficient = 1.0f;
    float mLevelMean = 0.0f;
    float mRatioMean = 0.0f;
    std::vector<float> mResidual;
    std::vector<float> mUpper;
    std::vector<float> mLevel; ///< in the end the curve
};

} // namespace tessaro::dynamics
