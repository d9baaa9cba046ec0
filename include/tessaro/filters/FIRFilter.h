#pragma once

#include <memory>
#include <vector>

#include <brisken/filter/FIR.h>
#include <tessaro/Export.h>

namespace tessaro {

/// A band-pass by windowed sinc: the difference of two low-passes with a Blackman window.
///
/// `GenerateFIRCoeffs` designs and enables it; then `Process` rows in place. A disabled filter lets audio
/// pass. Latency half the order, rounded down. `Process` is `[real-time]`; the design allocates [control]. A
/// copy has the same design and a clear past. A NaN or infinity is gone after as many samples as there are
/// taps. One thread at a time.
class TESSARO_EXPORT FIRFilter
{
public:
    /// No design, disabled
    FIRFilter() = default;
    FIRFilter(const FIRFilter& inOther);
    FIRFilter& operator=(const FIRFilter& inOther);
    virtual ~FIRFilter();

    /// Designs `inOrder + 1` taps that pass from `inLow` to `inHigh`, as fractions of the sampling rate from
    /// 0 to 0.5; 0 for `inLow` is a low-pass, less the lower low-pass that an earlier design of this object
    /// has left. Starts with a clear past, unless nothing has changed: then it only enables. The last tap is
    /// that of the upper low-pass alone. A negative order counts as 0. [control]
    void GenerateFIRCoeffs(double inLow, double inHigh, int inOrder);

    /// Filters in place, if enabled.
    void Process(float* ioData, int inCount);

    /// Disabled it gives the sample back. Enabled it filters the start of its own sample line, which is 0, in
    /// its place. That is deliberate.
    float ProcessOneSample(float inSample);

    /// Clears the sample line. What `Process` has in its delay line stays.
    void Reset();
    void Enable() { mIsEnabled = true; }
    void Disable() { mIsEnabled = false; }

private:
    struct FreeState
    {
        void operator()(brisken::FIRState_Float* inState) const { brisken::filter::FIRFree(inState); }
    };

    void MakeState();

    std::vector<float> mLowTaps;
    std::vector<float> mTaps;
    std::vector<float> mSampleLine;
    std::vector<float> mDelayLine;
    int mOrder = 0;
    int mLinePosition = 0;
    bool mIsEnabled = false;
    double mLow = 0.0;
    double mHigh = 0.0;
    std::unique_ptr<brisken::FIRState_Float, FreeState> mState;
};

} // namespace tessaro
