#pragma once

#include <vector>

#include <tessaro/frame/DataTail1D.h>

#include "dynamics/WindowMaximum.h"

namespace tessaro {

/// Turns the level above the threshold into the reduction of `SimpleIRCLimiter`, both in dB.
///
/// A stream: for each value that goes in, the value of `GetLookAhead` samples before comes out.
class SimpleIRCCurve
{
public:
    /// The largest count that `Process` takes
    static constexpr unsigned kMaxCount = 256;

    SimpleIRCCurve();
    ~SimpleIRCCurve();

    /// Sizes everything for a rate in Hz, and resets. [control]
    void SetSamplingRate(int inSamplingRate);
    /// At least 0. Resets. [configured], [real-time]
    void SetBehavior(float inBehavior);
    /// [configured], [real-time]
    void Reset();

    [[nodiscard]] unsigned GetLookAhead() const { return 2 * mHalfLength + mActivitySpan; }

    /// `ioCurve` holds levels and then reductions, 0 or more. [configured], [real-time]
    void Process(unsigned inCount, float* ioCurve);

private:
    void MakeFilter();
    void SetReleases();
    void ApplyShortEnvelope(unsigned inCount);
    void ApplyLongReleases(unsigned inCount);
    void ApplyIRCReleases2(unsigned inCount);
    void FilterEnv(unsigned inCount, float* outCurve) const;

    float mBehavior = 0.5f;
    int mSamplingRate = 0;
    unsigned mHalfLength = 0;   ///< of the widest filter, without its centre
    unsigned mActivitySpan = 0; ///< steps of the curve that count as its activity
    unsigned mWidth = 0;        ///< of the filter that the behavior asks for
    bool mIsSmooth = false;

    std::vector<float> mFilter;
    DataTail1D mOver;  ///< what came in
    DataTail1D mPeaks; ///< held peaks
    DataTail1D mCurve; ///< with releases
    WindowMaximum mHold;
    std::vector<double> mLong; ///< held peaks with the long release, of a piece

    // Constants of the releases
    double mLongFactor = 0.0;
    double mActivityGain = 0.0;
    double mActivityOffset = 0.0;
    double mActivityScale = 0.0;
    double mFollow = 0.0;
    double mLevelFollow = 0.0;

    // States of the releases
    double mLongState = 0.0;
    double mActivity = 0.0;
    double mHoldState = 0.0;  ///< how much of the long release counts, 0 to 1
    double mLevelState = 0.0; ///< mean square of the long release
};

} // namespace tessaro
