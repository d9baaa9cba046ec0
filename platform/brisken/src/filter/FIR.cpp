#include <brisken/filter/FIR.h>

#include <algorithm>
#include <memory>

#include "filter/AlignedArray.h"
#include "filter/FIRKernel.h"

namespace brisken {

/// The past input lies before `mPosition` in the window, oldest first, and new input is put there until the
/// window is full; only then does the past move back to the front.
struct FIRState_Float
{
    static constexpr std::size_t kChunk = 2048;

    explicit FIRState_Float(std::size_t inNumTaps)
        : mNumTaps(inNumTaps),
          mPast(inNumTaps > 0 ? inNumTaps - 1 : 0),
          mEnd(mPast + kChunk),
          mPosition(mPast),
          mTaps(inNumTaps),
          mReversedTaps(inNumTaps + filter::kFIRReadAhead),
          mWindow(mEnd + filter::kFIRReadAhead)
    {
    }

    /// Makes place for `inCount` samples, or as many as fit, and answers how many.
    std::size_t MakeRoom(std::size_t inCount)
    {
        if (mPosition == mEnd) {
            std::copy_n(mWindow.Get() + mPosition - mPast, mPast, mWindow.Get());
            mPosition = mPast;
        }
        return std::min(inCount, mEnd - mPosition);
    }

    const std::size_t mNumTaps;
    const std::size_t mPast;
    const std::size_t mEnd;
    std::size_t mPosition;
    filter::AlignedArray<float> mTaps;
    filter::AlignedArray<float> mReversedTaps;
    filter::AlignedArray<float> mWindow;
};

} // namespace brisken

namespace brisken::filter {

void FIRInit(FIRState_Float** outState, const float* inTaps, unsigned inNumTaps, const float* inDelayLine)
{
    auto state = std::make_unique<FIRState_Float>(inNumTaps);
    FIRSetTaps(state.get(), inTaps);
    FIRSetDlyLine(state.get(), inDelayLine);
    *outState = state.release();
}

void FIRFree(FIRState_Float* inState)
{
    delete inState;
}

void FIRSetTaps(FIRState_Float* ioState, const float* inTaps)
{
    std::copy_n(inTaps, ioState->mNumTaps, ioState->mTaps.Get());
    std::reverse_copy(inTaps, inTaps + ioState->mNumTaps, ioState->mReversedTaps.Get());
}

void FIRSetDlyLine(FIRState_Float* ioState, const float* inDelayLine)
{
    auto* window = ioState->mWindow.Get();
    if (inDelayLine != nullptr) {
        std::reverse_copy(inDelayLine, inDelayLine + ioState->mPast, window);
    } else {
        std::fill_n(window, ioState->mPast, 0.0f);
    }
    ioState->mPosition = ioState->mPast;
}

void FIR(FIRState_Float* ioState, unsigned inCount, const float* inSource, float* outDest)
{
    std::size_t left = inCount;
    while (left > 0) {
        const auto count = ioState->MakeRoom(left);
        auto* newest = ioState->mWindow.Get() + ioState->mPosition;
        std::copy_n(inSource, count, newest);
        FIRRow(newest, count, ioState->mTaps.Get(), ioState->mNumTaps, outDest);
        ioState->mPosition += count;
        inSource += count;
        outDest += count;
        left -= count;
    }
}

float FIR(FIRState_Float* ioState, float inSample)
{
    ioState->MakeRoom(1);
    auto* newest = ioState->mWindow.Get() + ioState->mPosition++;
    *newest = inSample;
    return FIRDot(newest - ioState->mPast, ioState->mReversedTaps.Get(), ioState->mNumTaps);
}

} // namespace brisken::filter
