#include <tessaro/dynamics/LimEnvelope.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dynamics/FixedDelay.h"
#include "dynamics/RaisedCosineSmoother.h"
#include "dynamics/ReleaseCurves.h"
#include "dynamics/SlidingMaximum.h"

namespace tessaro {

namespace {

using dynamics::ActivityScale;
using dynamics::FixedDelay;
using dynamics::RaisedCosineSmoother;
using dynamics::SlidingMaximum;

// Seconds
constexpr double kShareRise = 0.05;
constexpr double kShareFall = 0.01;
constexpr float kLookAheadLimit = 10.0f;
constexpr float kLongWindowLimit = 100.0f;

/// Look-ahead of the fast curve, as part of the whole
constexpr double kFastPart = 0.2;

/// Samples that are processed at a time, so that the rows in between stay close at hand
constexpr int kLongestRun = 512;

/// Delay of the curves against the smoothed activity, in samples
unsigned CurveDelayFor(unsigned inLongHalfWidth)
{
    return inLongHalfWidth * 3 / 2;
}

/// None for a time below 0.
unsigned ToSamples(double inSeconds, float inRate)
{
    return static_cast<unsigned>(std::max(0L, std::lround(inSeconds * inRate)));
}

/// A sliding maximum and the smoother that is as long: it reaches a peak in full.
class HoldAndSmooth
{
public:
    void SetReach(unsigned inSamples)
    {
        mHold.SetWindow(2 * inSamples + 1);
        mSmoother.SetHalfWidth(inSamples);
    }
    void Reserve(unsigned inSamples)
    {
        mHold.Reserve(2 * inSamples + 1);
        mSmoother.Reserve(inSamples);
    }
    void Hold(unsigned inCount, const float* inCurve, float* outHeld)
    {
        mHold.Process(inCount, inCurve, outHeld);
    }
    void Smooth(unsigned inCount, float* ioHeld) { mSmoother.Process(inCount, ioHeld, ioHeld); }

private:
    SlidingMaximum mHold;
    RaisedCosineSmoother mSmoother;
};

} // namespace

struct LimEnvelope::Stages
{
    /// What was set
    float mSampleRate = 0.0f;
    float mLookAhead = -1.0f;
    float mRelease = 0.0f;
    float mLongWindow = 0.0f;
    float mCharacter = 0.5f;
    float mLookAheadLimit = kLookAheadLimit;
    float mLongWindowLimit = kLongWindowLimit;
    bool mHasDoubleCurve = false;
    bool mIsLatencyConstrained = false;

    double mReleaseCoefficient = 0.0;
    double mSlowState = 0.0;
    float mPreviousHeld = 0.0f;
    dynamics::ShareFollower mFollower;
    unsigned mReach = 0; ///< look-ahead in samples

    HoldAndSmooth mMain;
    HoldAndSmooth mFast;
    HoldAndSmooth mWeight;
    RaisedCosineSmoother mActivitySmoother;
    FixedDelay mHeldDelay;
    FixedDelay mSlowDelay;
    FixedDelay mFastDelay;
    FixedDelay mWeightDelay;
    FixedDelay mLastDelay;

    /// Rows between the stages
    std::vector<float> mFirst = {0.0f};
    std::vector<float> mSecond = {0.0f};

    [[nodiscard]] int GetLongestRun() const { return static_cast<int>(mFirst.size()); }

    void SetStages();
    void SetFastCurve(unsigned inFastReach, unsigned inCurveDelay);
    void ReserveForLimits();
    void ProcessRun(const float* inInput, float* outOutput, unsigned inCount, const float* inSecondInput);
    void CombineReleases(unsigned inCount, float* ioHeld);
    void BlendFastCurve(unsigned inCount, const float* inInput, const float* inWeight, float* ioCurve);
};

LimEnvelope::LimEnvelope() : mStages(std::make_unique<Stages>()) {}
LimEnvelope::LimEnvelope(const LimEnvelope& inOther) : mStages(std::make_unique<Stages>(*inOther.mStages)) {}
LimEnvelope::LimEnvelope(LimEnvelope&&) noexcept = default;
LimEnvelope& LimEnvelope::operator=(LimEnvelope&&) noexcept = default;
LimEnvelope::~LimEnvelope() = default;

LimEnvelope& LimEnvelope::operator=(const LimEnvelope& inOther)
{
    return *this = LimEnvelope(inOther);
}

void LimEnvelope::StartNewStream(float inSampleRate, int inMaxBlock)
{
    mStages->mSampleRate = inSampleRate;
    const auto run = static_cast<std::size_t>(std::clamp(inMaxBlock, 1, kLongestRun));
    mStages->mFirst.assign(run, 0.0f);
    mStages->mSecond.assign(run, 0.0f);
    Init();
}

void LimEnvelope::SetMode(float inLookAhead, float inRelease, float inLongWindow)
{
    mStages->mLookAhead = std::min(inLookAhead, mStages->mLookAheadLimit);
    mStages->mRelease = inRelease;
    mStages->mLongWindow = std::min(inLongWindow, mStages->mLongWindowLimit);
    Init();
}

void LimEnvelope::SetCharacter(float inCharacter)
{
    mStages->mCharacter = inCharacter;
    Init();
}

void LimEnvelope::EnableDoubleCurve(bool inEnable)
{
    mStages->mHasDoubleCurve = inEnable;
    Init();
}

void LimEnvelope::ConstrainLatency(float inLookAheadLimit, float inLongWindowLimit)
{
    mStages->mIsLatencyConstrained = true;
    mStages->mLookAheadLimit = inLookAheadLimit;
    mStages->mLongWindowLimit = inLongWindowLimit;
    mStages->mLookAhead = std::min(mStages->mLookAhead, inLookAheadLimit);
    mStages->mLongWindow = std::min(mStages->mLongWindow, inLongWindowLimit);
    Init();
}

int LimEnvelope::GetLatency() const
{
    return static_cast<int>(mStages->mHeldDelay.GetLength() + mStages->mLastDelay.GetLength() +
                            2 * mStages->mReach);
}

void LimEnvelope::Reset()
{
    Init();
}

void LimEnvelope::Init()
{
    if (mStages->mSampleRate > 0.0f && mStages->mLookAhead >= 0.0f) {
        mStages->SetStages();
    }
}

void LimEnvelope::Stages::SetStages()
{
    if (mIsLatencyConstrained) {
        ReserveForLimits();
    }
    mReach = ToSamples(mLookAhead, mSampleRate);
    const unsigned longHalfWidth = ToSamples(mLongWindow, mSampleRate);
    const unsigned curveDelay = CurveDelayFor(longHalfWidth);
    mMain.SetReach(mReach);
    mActivitySmoother.SetHalfWidth(longHalfWidth);
    mHeldDelay.SetLength(curveDelay);
    mSlowDelay.SetLength(curveDelay);
    SetFastCurve(ToSamples(kFastPart * mLookAhead, mSampleRate), curveDelay);
    mLastDelay.SetLength(mIsLatencyConstrained
                             ? 2 * (ToSamples(mLookAheadLimit, mSampleRate) - mReach) +
                                   CurveDelayFor(ToSamples(mLongWindowLimit, mSampleRate)) - curveDelay
                             : 0);

    mReleaseCoefficient = mRelease > 0.0f ? std::exp(-1.0 / (double{mRelease} * mSampleRate)) : 0.0;
    mSlowState = 0.0;
    mPreviousHeld = 0.0f;
    mFollower = {-std::expm1(-1.0 / (kShareRise * mSampleRate)),
                 -std::expm1(-1.0 / (kShareFall * mSampleRate)), 0.0};
}

/// Both delays put what they delay beside the main curve.
void LimEnvelope::Stages::SetFastCurve(unsigned inFastReach, unsigned inCurveDelay)
{
    mFast.SetReach(inFastReach);
    mWeight.SetReach(mReach);
    mFastDelay.SetLength(2 * (mReach - inFastReach) + inCurveDelay);
    mWeightDelay.SetLength(inCurveDelay);
}

/// So that no mode within the limits allocates.
void LimEnvelope::Stages::ReserveForLimits()
{
    const unsigned reach = ToSamples(mLookAheadLimit, mSampleRate);
    const unsigned longHalfWidth = ToSamples(mLongWindowLimit, mSampleRate);
    const unsigned curveDelay = CurveDelayFor(longHalfWidth);
    for (HoldAndSmooth* const curve : {&mMain, &mFast, &mWeight}) {
        curve->Reserve(reach);
    }
    mActivitySmoother.Reserve(longHalfWidth);
    for (FixedDelay* const delay : {&mHeldDelay, &mSlowDelay, &mWeightDelay}) {
        delay->Reserve(curveDelay);
    }
    mFastDelay.Reserve(2 * reach + curveDelay);
    mLastDelay.Reserve(2 * reach + curveDelay);
}

void LimEnvelope::Process(const float* inInput, float* outOutput, int inCount, const float* inSecondInput)
{
    for (int done = 0; done < inCount;) {
        const int run = std::min(inCount - done, mStages->GetLongestRun());
        mStages->ProcessRun(inInput + done, outOutput + done, static_cast<unsigned>(run),
                            inSecondInput == nullptr ? nullptr : inSecondInput + done);
        done += run;
    }
}

void LimEnvelope::Stages::ProcessRun(const float* inInput, float* outOutput, unsigned inCount,
                                     const float* inSecondInput)
{
    mMain.Hold(inCount, inInput, outOutput);
    CombineReleases(inCount, outOutput);
    mMain.Smooth(inCount, outOutput);
    if (mHasDoubleCurve) {
        BlendFastCurve(inCount, inInput, inSecondInput, outOutput);
    }
    mLastDelay.Process(inCount, outOutput);
}

/// Without a long window the held curve goes on as it is, and the follower stays where it is.
void LimEnvelope::Stages::CombineReleases(unsigned inCount, float* ioHeld)
{
    float* const slow = mFirst.data();
    float* const activity = mSecond.data();
    dynamics::MakeExpReleases(inCount, ioHeld, mReleaseCoefficient, mSlowState, slow);
    if (mHeldDelay.GetLength() == 0) {
        return;
    }
    activity[0] = std::abs(ioHeld[0] - mPreviousHeld);
    for (unsigned i = 1; i < inCount; ++i) {
        activity[i] = std::abs(ioHeld[i] - ioHeld[i - 1]);
    }
    mPreviousHeld = ioHeld[inCount - 1];
    mActivitySmoother.Process(inCount, activity, activity);
    dynamics::FollowActivity(inCount, ActivityScale(mCharacter), mFollower, activity);

    mHeldDelay.Process(inCount, ioHeld);
    mSlowDelay.Process(inCount, slow);
    for (unsigned i = 0; i < inCount; ++i) {
        ioHeld[i] = std::max(slow[i] * activity[i], ioHeld[i]);
    }
}

void LimEnvelope::Stages::BlendFastCurve(unsigned inCount, const float* inInput, const float* inWeight,
                                         float* ioCurve)
{
    float* const fast = mFirst.data();
    float* const weight = mSecond.data();
    mFast.Hold(inCount, inInput, fast);
    mFast.Smooth(inCount, fast);
    mFastDelay.Process(inCount, fast);
    mWeight.Hold(inCount, inWeight, weight);
    mWeight.Smooth(inCount, weight);
    mWeightDelay.Process(inCount, weight);
    for (unsigned i = 0; i < inCount; ++i) {
        ioCurve[i] += (fast[i] - ioCurve[i]) * weight[i];
    }
}

} // namespace tessaro
