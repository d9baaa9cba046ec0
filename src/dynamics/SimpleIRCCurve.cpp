#include "dynamics/SimpleIRCCurve.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

/// The behavior from which on the filter has its full width
constexpr double kFullWidthBehavior = 0.3;
/// The behavior up to which the curve has no release
constexpr float kNoReleaseBehavior = 0.04f;
/// Where the reference of the times of release comes from, in Hz
constexpr double kReferenceRate = 44100.0;
constexpr double kActivitySeconds = 0.014;
constexpr double kSmallest = 1e-10;
constexpr double kRiseStep = 0.3;
constexpr double kFallStep = 2.0;

unsigned GetHalfLength(int inSamplingRate)
{
    if (inSamplingRate >= 130001) {
        return 128;
    }
    if (inSamplingRate >= 50001) {
        return 64;
    }
    if (inSamplingRate >= 25000) {
        return 32;
    }
    return inSamplingRate >= 17000 ? 16 : 8;
}

double FlushSmall(double inValue)
{
    return inValue < kSmallest ? 0.0 : inValue;
}

} // namespace

SimpleIRCCurve::SimpleIRCCurve() = default;
SimpleIRCCurve::~SimpleIRCCurve() = default;

void SimpleIRCCurve::SetSamplingRate(int inSamplingRate)
{
    mSamplingRate = std::max(inSamplingRate, 1);
    mHalfLength = GetHalfLength(inSamplingRate);
    mActivitySpan = std::max(static_cast<unsigned>(kActivitySeconds * mSamplingRate), 1u);
    const auto tail = [](unsigned inLength) { return static_cast<int>(inLength); };
    mOver.SetTailMode(kMaxCount, tail(GetLookAhead()), true);
    mPeaks.SetTailMode(kMaxCount, tail(mActivitySpan + 1), true);
    mCurve.SetTailMode(kMaxCount, tail(2 * mHalfLength), true);
    mFilter.resize(2 * mHalfLength + 1);
    mHold.Init(2 * mHalfLength + 1);
    mLong.resize(kMaxCount);
    SetBehavior(mBehavior);
}

void SimpleIRCCurve::SetBehavior(float inBehavior)
{
    mBehavior = inBehavior;
    if (mSamplingRate != 0) {
        MakeFilter();
        SetReleases();
        Reset();
    }
}

/// A raised cosine in the middle of a filter that always has the same length, with a sum of 1.
void SimpleIRCCurve::MakeFilter()
{
    const auto length = static_cast<unsigned>(mFilter.size());
    const double behavior = mBehavior;
    const double share =
        std::sqrt(behavior) * behavior / (std::sqrt(kFullWidthBehavior) * kFullWidthBehavior);
    mWidth = mBehavior >= static_cast<float>(kFullWidthBehavior)
                 ? length
                 : static_cast<unsigned>(share * length + 0.5);
    // The lengths of the two flanks of a held peak; without flanks there is nothing to smooth.
    const auto rise = static_cast<unsigned>(3.0 * mWidth / 5.0 + 0.5);
    const auto fall = static_cast<unsigned>(2.0 * mWidth / 3.0 + 0.5);
    mIsSmooth = rise >= 2 && fall >= 2;
    if (!mIsSmooth) {
        return;
    }
    double sum = 0.0;
    for (unsigned n = 0; n < length; ++n) {
        const double place = static_cast<double>(n) - mHalfLength;
        const bool isInside = std::abs(place) <= mWidth / 2;
        const double tap = isInside ? 1.0 - std::cos(std::numbers::pi * (2.0 * place / mWidth + 1.0)) : 0.0;
        mFilter[n] = static_cast<float>(tap);
        sum += tap;
    }
    for (float& tap : mFilter) {
        tap = static_cast<float>(tap / sum);
    }
}

void SimpleIRCCurve::SetReleases()
{
    const double behavior = mBehavior;
    const double rate = mSamplingRate;
    const double character = behavior > 1.0 ? 2.0 * behavior - 1.0 : behavior;
    // The rate stands on the side where it makes the release shorter in samples at higher rates, and in
    // seconds by its square. That is how it is known to sound; keep it.
    mLongFactor = 1.0 - rate / kReferenceRate * 0.1 / (35.0 * std::exp(2.0 * character));
    mActivityGain = 0.018181818 * std::exp(2.0 * character);
    mActivityOffset = character > 0.5 ? std::min((character - 0.5) * 0.7, 0.9) : 0.0;
    mActivityScale = behavior < kFullWidthBehavior ? behavior * behavior / 0.09 : 1.0;
    mFollow = 44.100002 / rate;
    const double above = std::max(character - 0.7, 0.0);
    mLevelFollow = character > 0.7 ? std::min(mFollow + above * above, 1.0) : mFollow;
}

void SimpleIRCCurve::Reset()
{
    if (mSamplingRate == 0) {
        return;
    }
    mOver.Reset();
    mPeaks.Reset();
    mCurve.Reset();
    mHold.Reset(2 * (mWidth / 2) + 1);
    mLongState = 0.0;
    mActivity = 0.0;
    mHoldState = 0.0;
    mLevelState = 0.0;
}

void SimpleIRCCurve::Process(unsigned inCount, float* ioCurve)
{
    const auto count = static_cast<int>(inCount);
    mOver.Append(ioCurve, count, 0);
    if (mIsSmooth) {
        ApplyShortEnvelope(inCount);
        ApplyLongReleases(inCount);
        ApplyIRCReleases2(inCount);
        FilterEnv(inCount, ioCurve);
        mPeaks.Shift(count);
        mCurve.Shift(count);
    } else {
        brisken::utility::Copy(inCount, mOver.GetPointer(), ioCurve);
    }
    mOver.Shift(count);
}

/// Holds each point of the curve to both sides, as far as the filter will reach.
void SimpleIRCCurve::ApplyShortEnvelope(unsigned inCount)
{
    const unsigned reach = mWidth / 2;
    // A narrow filter reaches less far ahead than the widest, for which there is the look-ahead.
    const float* const over = mOver.MakeOffsetPointer(GetLookAhead() - (mHalfLength - reach));
    float* const peaks = mPeaks.MakeOffsetPointer(mPeaks.GetTotal());
    for (unsigned i = 0; i < inCount; ++i) {
        peaks[i] = mHold.Push(over[i]);
    }
    mPeaks.AddTotal(inCount);
}

void SimpleIRCCurve::ApplyLongReleases(unsigned inCount)
{
    const float* const peaks = mPeaks.GetPointer() + 1;
    double state = mLongState;
    for (unsigned i = 0; i < inCount; ++i) {
        state = FlushSmall(std::max(double{peaks[i]}, mLongFactor * state));
        mLong[i] = state;
    }
    mLongState = state;
}

/// Raises the curve to the mean of the long release, as much as it is busy in the time to come.
void SimpleIRCCurve::ApplyIRCReleases2(unsigned inCount)
{
    const float* const peaks = mPeaks.GetPointer() + 1;
    float* const curve = mCurve.MakeOffsetPointer(mCurve.GetTotal());
    mCurve.AddTotal(inCount);
    if (mBehavior <= kNoReleaseBehavior) {
        std::copy_n(peaks, inCount, curve);
        return;
    }
    const auto step = [](const float* inPlace) { return std::abs(double{inPlace[0]} - double{inPlace[-1]}); };
    double activity = mActivity, hold = mHoldState, squared = mLevelState;
    for (unsigned i = 0; i < inCount; ++i) {
        activity += step(peaks + i + mActivitySpan) - step(peaks + i);
        const double wanted = std::min(activity * mActivityGain + mActivityOffset, 1.0) * mActivityScale;
        const double next = FlushSmall(wanted * mFollow + (1.0 - mFollow) * hold);
        const double difference = next - hold;
        hold += difference * (difference > 0.0 ? kRiseStep : kFallStep);
        hold = std::clamp(hold, 0.0, 1.0);

        squared = mLong[i] * mLong[i] * mLevelFollow + (1.0 - mLevelFollow) * squared;
        squared = squared < kSmallest * kSmallest ? 0.0 : squared;
        curve[i] = std::max(peaks[i], static_cast<float>(std::sqrt(squared) * hold));
    }
    mActivity = activity;
    mHoldState = hold;
    mLevelState = squared;
}

void SimpleIRCCurve::FilterEnv(unsigned inCount, float* outCurve) const
{
    const unsigned reach = mWidth / 2;
    const float* const taps = mFilter.data() + (mHalfLength - reach);
    const float* const curve = mCurve.GetPointer() + (mHalfLength - reach);
    for (unsigned i = 0; i < inCount; ++i) {
        outCurve[i] = brisken::utility::DotProduct(2 * reach + 1, taps, curve + i);
    }
}

} // namespace tessaro
