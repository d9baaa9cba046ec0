#include <tessaro/filters/FIRFilter.h>

#include <algorithm>

#include <tessaro/filters/WindowedSinc.h>

namespace tessaro {

namespace {

void MakeLowpass(double inCutoff, std::vector<float>& outTaps)
{
    MakeWindowedSinc(2.0 * inCutoff, SincWindow::kBlackman, outTaps.data(), static_cast<int>(outTaps.size()));
}

} // namespace

FIRFilter::FIRFilter(const FIRFilter& inOther)
{
    *this = inOther;
}

FIRFilter& FIRFilter::operator=(const FIRFilter& inOther)
{
    if (this != &inOther) {
        mLowTaps = inOther.mLowTaps;
        mTaps = inOther.mTaps;
        mSampleLine = inOther.mSampleLine;
        mDelayLine = inOther.mDelayLine;
        mOrder = inOther.mOrder;
        mLinePosition = inOther.mLinePosition;
        mIsEnabled = inOther.mIsEnabled;
        mLow = inOther.mLow;
        mHigh = inOther.mHigh;
        mState.reset();
        if (inOther.mState) {
            MakeState();
        }
    }
    return *this;
}

FIRFilter::~FIRFilter() = default;

void FIRFilter::GenerateFIRCoeffs(double inLow, double inHigh, int inOrder)
{
    const int order = std::max(inOrder, 0);
    const bool isSame = mState && order == mOrder && inLow == mLow && inHigh == mHigh;
    if (!isSame) {
        const auto count = static_cast<std::size_t>(order) + 1;
        mLowTaps.resize(count);
        mTaps.resize(count);
        mSampleLine.resize(count);
        mOrder = order;
        mLow = inLow;
        mHigh = inHigh;
        MakeLowpass(inHigh, mTaps);
        if (inLow != 0.0) {
            MakeLowpass(inLow, mLowTaps);
        }
        // The last tap keeps what it has, and without a lower edge what the last design took off is taken off
        // again. Deliberately so.
        for (std::size_t i = 0; i < static_cast<std::size_t>(order); ++i) {
            mTaps[i] -= mLowTaps[i];
        }
        Reset();
        mDelayLine.assign(static_cast<std::size_t>(order), 0.0f);
        MakeState();
    }
    Enable();
}

void FIRFilter::MakeState()
{
    brisken::FIRState_Float* made = nullptr;
    brisken::filter::FIRInit(&made, mTaps.data(), static_cast<unsigned>(mTaps.size()), mDelayLine.data());
    mState.reset(made);
}

void FIRFilter::Process(float* ioData, int inCount)
{
    if (mIsEnabled && mState && inCount > 0) {
        brisken::filter::FIR(mState.get(), static_cast<unsigned>(inCount), ioData, ioData);
    }
}

float FIRFilter::ProcessOneSample(float inSample)
{
    if (!mIsEnabled || !mState) {
        return inSample;
    }
    return brisken::filter::FIR(mState.get(), mSampleLine.front());
}

void FIRFilter::Reset()
{
    std::fill(mSampleLine.begin(), mSampleLine.end(), 0.0f);
    mLinePosition = 0;
}

} // namespace tessaro
