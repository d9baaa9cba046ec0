#include "dynamics/HardLimitParameters.h"

#include <cmath>

#include <tessaro/dynamics/HardLimit.h>

namespace tessaro {

using namespace hardlimit;

namespace {

struct Range
{
    float mMinimum;
    float mMaximum;
    float mDefault;
};

constexpr float kSwitchMinimum = -0.5f;
constexpr float kSwitchMaximum = 1.49f;

constexpr Range kRanges[HardLimit::kNumParameters] = {
    {-100.0f, 0.0f, -0.1f},
    {-100.0f, 50.0f, 0.0f},
    {5.0f, 20.0f, 7.0f},
    {40.0f, 200.0f, 100.0f},
    {kSwitchMinimum, kSwitchMaximum, 1.0f},
    {kSwitchMinimum, kSwitchMaximum, 1.0f},
    {kSwitchMinimum, kSwitchMaximum, 0.0f},
};

constexpr bool Exists(int inIndex)
{
    return inIndex >= 0 && inIndex < HardLimit::kNumParameters;
}

} // namespace

void HardLimit::SetDefaultParameters()
{
    for (std::size_t i = 0; i < mValues.size(); ++i) {
        mMinima[i] = kRanges[i].mMinimum;
        mMaxima[i] = kRanges[i].mMaximum;
        mValues[i] = kRanges[i].mDefault;
    }
}

void HardLimit::SetParameter(int inIndex, float inValue)
{
    if (!Exists(inIndex)) {
        return;
    }
    const auto i = static_cast<std::size_t>(inIndex);
    // Hosts count on the middle of the range, not on its end.
    const bool isInside = inValue >= mMinima[i] && inValue <= mMaxima[i];
    float value = isInside ? inValue : (mMinima[i] + mMaxima[i]) / 2.0f;
    if (i >= kLinkChannels) {
        value = std::trunc(value + 0.5f);
    }
    if (i == kTruePeak && value != 0.0f) {
        if (!mWithOversampling) {
            return;
        }
        mValues[kTowardsCeiling] = 1.0f;
    }
    mValues[i] = value;
    mParametersChanged = true;
}

float HardLimit::GetParameter(int inIndex) const
{
    return Exists(inIndex) ? mValues[static_cast<std::size_t>(inIndex)] : 0.0f;
}

void HardLimit::SetBounds(int inIndex, float inMinimum, float inMaximum)
{
    if (inIndex == static_cast<int>(kRelease)) {
        mMinima[kRelease] = inMinimum;
        mMaxima[kRelease] = inMaximum;
    }
}

void HardLimit::GetBounds(int inIndex, float& outMinimum, float& outMaximum) const
{
    if (Exists(inIndex)) {
        outMinimum = mMinima[static_cast<std::size_t>(inIndex)];
        outMaximum = mMaxima[static_cast<std::size_t>(inIndex)];
    }
}

double HardLimit::GetLinear(std::size_t inIndex) const
{
    return std::pow(10.0, static_cast<double>(mValues[inIndex]) / 20.0);
}

} // namespace tessaro
