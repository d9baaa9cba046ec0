#include "dynamics/ReleaseCurves.h"

#include <algorithm>
#include <cmath>

namespace tessaro::dynamics {

namespace {

/// dB, and share of the slow release; what is below is 0, which keeps denormal numbers out
constexpr float kSmallest = 1e-10f;

constexpr float kBaseGain = 9.0f;
constexpr float kOffsetSlope = 0.7f;
constexpr float kHighestOffset = 0.9f;
/// From here on the share may reach 1.
constexpr float kFullCharacter = 0.3f;

} // namespace

void MakeExpReleases(unsigned inCount, const float* inCurve, double inCoefficient, double& ioState,
                     float* outSlow)
{
    double slow = ioState;
    for (unsigned i = 0; i < inCount; ++i) {
        slow = std::max(double{inCurve[i]}, inCoefficient * slow);
        slow = slow < kSmallest ? 0.0 : slow;
        outSlow[i] = static_cast<float>(slow);
    }
    ioState = slow;
}

ActivityScale::ActivityScale(float inCharacter)
{
    const float relative = inCharacter / kFullCharacter;
    const float steep = inCharacter > 1.0f ? 2.0f * inCharacter - 1.0f : inCharacter;
    mGain = kBaseGain * std::exp(2.0f * steep);
    mOffset = std::clamp((steep - 0.5f) * kOffsetSlope, 0.0f, kHighestOffset);
    mHighest = std::min(relative * relative, 1.0f);
}

/// NaN counts as no activity, so that it does not stay in the follower.
void FollowActivity(unsigned inCount, const ActivityScale& inScale, ShareFollower& ioFollower,
                    float* ioActivity)
{
    const auto [gain, offset, highest] = inScale;
    double share = ioFollower.mShare;
    for (unsigned i = 0; i < inCount; ++i) {
        const float activity = ioActivity[i] * gain + offset;
        const double target = (activity > 0.0f ? std::min(activity, 1.0f) : 0.0f) * highest;
        share += (target - share) * (target > share ? ioFollower.mRise : ioFollower.mFall);
        share = share < kSmallest ? 0.0 : share;
        ioActivity[i] = static_cast<float>(share);
    }
    ioFollower.mShare = share;
}

} // namespace tessaro::dynamics
