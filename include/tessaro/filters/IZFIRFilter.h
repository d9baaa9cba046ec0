#pragma once

#include <memory>
#include <vector>

#include <brisken/filter/FIR.h>
#include <tessaro/Export.h>

namespace tessaro {

/// Runs given taps over one row of samples.
///
/// Give it taps, then process. Taps may change while it runs; with `inKeepState` the past stays, so that a
/// small change is not heard as a gap. No latency but that of the taps. Any split of a stream gives the same
/// output. `[real-time]` with a block size other than 0, or for calls no longer than `Allocate` made room
/// for, and taps of a number that does not change; else calls allocate. A copy has the same taps and a clear
/// past. A NaN or infinity is gone after as many samples as there are taps. One thread at a time.
class TESSARO_EXPORT IZFIRFilter
{
public:
    /// No taps. With `inBlockSize` 0 the work lines follow the longest call; otherwise longer calls are
    /// worked off in blocks. [control]
    explicit IZFIRFilter(int inBlockSize);
    IZFIRFilter(const float* inTaps, unsigned inCount, int inBlockSize);
    IZFIRFilter(const IZFIRFilter& inOther);
    IZFIRFilter& operator=(const IZFIRFilter& inOther);
    IZFIRFilter(IZFIRFilter&&) noexcept;
    IZFIRFilter& operator=(IZFIRFilter&&) noexcept;
    ~IZFIRFilter();

    /// Makes room for calls of `inCount` samples. [control]
    void Allocate(unsigned inCount);

    /// Nothing for null or a count of 0. A new number of taps starts anew. [control]
    void SetCoefficients(const float* inTaps, unsigned inCount, bool inKeepState);

    /// Without taps nothing is written. The rows may be the same; they may not overlap otherwise.
    void Process(unsigned inCount, const float* inInput, float* outOutput);
    void ProcessInPlace(unsigned inCount, float* ioData) { Process(inCount, ioData, ioData); }
    /// One sample of the same stream; 0 without taps.
    float ProcessSingle(float inSample);

    /// Clears the past; the taps stay.
    void Reset();

private:
    struct FreeState
    {
        void operator()(brisken::FIRState_Float* inState) const { brisken::filter::FIRFree(inState); }
    };

    int mBlockSize;
    std::unique_ptr<brisken::FIRState_Float, FreeState> mState;
    std::vector<float> mTaps;
    std::vector<float> mInputLine;
    std::vector<float> mOutputLine;
};

} // namespace tessaro
