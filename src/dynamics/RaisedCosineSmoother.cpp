#include "dynamics/RaisedCosineSmoother.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessaro::dynamics {

namespace {

constexpr unsigned kRoundsBetweenRenewals = 128;

} // namespace

void RaisedCosineSmoother::SetHalfWidth(unsigned inHalfWidth)
{
    mHalfWidth = inHalfWidth;
    const unsigned window = 2 * inHalfWidth + 1;
    const double step = 2.0 * std::numbers::pi / window;
    mScale = 1.0 / window;
    mRotation = {std::cos(step), std::sin(step), -std::cos(step / 2.0), std::sin(step / 2.0)};
    mRing.resize(window);
    Reset();
}

void RaisedCosineSmoother::Reset()
{
    std::fill(mRing.begin(), mRing.end(), 0.0f);
    mSums = {};
    mPosition = 0;
    mRounds = 0;
}

inline void RaisedCosineSmoother::Rotation::Advance(Sums& ioSums, double inDifference) const
{
    const double real = mSin * ioSums.mImaginary + mCos * ioSums.mReal + inDifference * mEntryReal;
    ioSums.mImaginary = mCos * ioSums.mImaginary - mSin * ioSums.mReal + inDifference * mEntryImaginary;
    ioSums.mReal = real;
    ioSums.mPlain += inDifference;
}

void RaisedCosineSmoother::Process(unsigned inCount, const float* inData, float* outSmooth)
{
    if (mHalfWidth == 0) {
        std::copy_n(inData, inData == outSmooth ? 0 : inCount, outSmooth);
        return;
    }
    const auto window = static_cast<unsigned>(mRing.size());
    for (unsigned done = 0; done < inCount;) {
        const unsigned run = std::min(inCount - done, window - mPosition);
        ProcessRun(run, inData + done, outSmooth + done);
        done += run;
        mPosition += run;
        if (mPosition == window) {
            mPosition = 0;
            if (++mRounds == kRoundsBetweenRenewals) {
                mRounds = 0;
                RenewSums();
            }
        }
    }
}

/// Does not go beyond the end of the ring.
void RaisedCosineSmoother::ProcessRun(unsigned inCount, const float* inData, float* outSmooth)
{
    float* const ring = mRing.data() + mPosition;
    const Rotation rotation = mRotation;
    const double scale = mScale;
    Sums sums = mSums;
    for (unsigned i = 0; i < inCount; ++i) {
        const float entering = inData[i];
        rotation.Advance(sums, static_cast<double>(entering) - static_cast<double>(ring[i]));
        ring[i] = entering;
        outSmooth[i] = static_cast<float>((sums.mPlain + sums.mReal) * scale);
    }
    mSums = sums;
}

/// The oldest sample stands first in the ring, so that the ring itself is the stream which makes the sums.
void RaisedCosineSmoother::RenewSums()
{
    mSums = {};
    for (const float sample : mRing) {
        mRotation.Advance(mSums, sample);
    }
}

} // namespace tessaro::dynamics
