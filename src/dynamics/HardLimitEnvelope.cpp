#include "dynamics/HardLimitEnvelope.h"

#include <algorithm>
#include <bit>

namespace tessaro {

namespace {

/// A height below counts as 0, before it becomes a denormal number; the lowest ceiling is 1e-5.
constexpr double kSmallestHeight = 1e-20;

} // namespace

void HardLimitEnvelope::Init(unsigned inMaxLookAhead)
{
    const auto places = std::bit_ceil(std::size_t{inMaxLookAhead} + 1);
    mTargets.resize(places);
    mPlaceMask = places - 1;
    mSight.Init(inMaxLookAhead);
}

void HardLimitEnvelope::SetHeight(double inHeight)
{
    mHeight = inHeight;
    mHighestTarget = inHeight;
    mNumTargets = 0;
    mSight.Reset(mLookAhead);
}

void HardLimitEnvelope::SetLookAhead(unsigned inLookAhead, const Ring& inRing)
{
    mLookAhead = inLookAhead;
    SetHeight(mHeight);
    // The last sample in sight comes with the next step.
    for (unsigned i = 0; i + 1 < inLookAhead; ++i) {
        const float magnitude = inRing.mRow[(inRing.mPosition + i) % inRing.mSize];
        if (magnitude > mHighestTarget) {
            Aim({mTime + 1 + i, magnitude});
        }
        mSight.Push(magnitude);
    }
}

void HardLimitEnvelope::Process(const Ring& ioRing, const float* inArriving, unsigned inCount,
                                double* outHeights)
{
    unsigned newest = (ioRing.mPosition + mLookAhead - 1) % ioRing.mSize;
    float* const places = ioRing.mRow + ioRing.mPosition;
    for (unsigned i = 0; i < inCount; ++i) {
        const float magnitude = ioRing.mRow[newest];
        newest = newest + 1 == ioRing.mSize ? 0 : newest + 1;
        if (magnitude > mHighestTarget) {
            Aim({mTime + mLookAhead, magnitude});
        }
        const float highestInSight = mSight.Push(magnitude);
        ++mTime;
        if (mNumTargets != 0) {
            Climb();
        } else {
            Fall(highestInSight);
        }
        outHeights[i] = mHeight;
        places[i] = inArriving[i];
    }
}

/// Adds a target that is later and higher than all others, and drops those that are below the line to it.
void HardLimitEnvelope::Aim(const Target& inTarget)
{
    for (; mNumTargets != 0; --mNumTargets) {
        const Target start = mNumTargets > 1 ? At(mNumTargets - 2) : Target{mTime, mHeight};
        const auto& last = At(mNumTargets - 1);
        const double rise = last.mHeight - start.mHeight, newRise = inTarget.mHeight - start.mHeight;
        const auto run = static_cast<double>(last.mTime - start.mTime);
        const auto newRun = static_cast<double>(inTarget.mTime - start.mTime);
        if (rise * newRun > newRise * run) {
            break;
        }
    }
    if (mNumTargets == 0) {
        mSlope = SlopeTo(inTarget);
    }
    At(mNumTargets++) = inTarget;
    mHighestTarget = inTarget.mHeight;
}

void HardLimitEnvelope::Climb()
{
    const auto& target = At(0);
    if (target.mTime != mTime) {
        mHeight += mSlope;
        return;
    }
    mHeight = target.mHeight;
    ++mFirst;
    if (--mNumTargets != 0) {
        mSlope = SlopeTo(At(0));
    }
}

void HardLimitEnvelope::Fall(double inHighestInSight)
{
    if (mRelease.mTowardsCeiling) {
        // In this form the height never falls below the base by rounding.
        const double base = std::max(mRelease.mCeiling, inHighestInSight);
        mHeight = base + mRelease.mDecay * (mHeight - base);
    } else if (const double lower = mHeight * mRelease.mDecay; lower >= inHighestInSight) {
        mHeight = lower < kSmallestHeight ? 0.0 : lower;
    }
    mHighestTarget = mHeight;
}

} // namespace tessaro
