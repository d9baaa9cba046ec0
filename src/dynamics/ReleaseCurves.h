#pragma once

/// The recursions of `LimEnvelope`: plain loops over rows. All are [real-time] safe and [any thread].
namespace tessaro::dynamics {

/// Follows a curve upwards at once and falls exponentially: `y = max(x, coefficient * y)`, below 1e-10 being
/// 0. `ioState` is y before the row and after it, in double precision, as a decay goes through thousands of
/// roundings. The rows may be the same.
void MakeExpReleases(unsigned inCount, const float* inCurve, double inCoefficient, double& ioState,
                     float* outSlow);

/// How the activity of a curve in dB a sample becomes a share from 0 to 1.
struct ActivityScale
{
    /// From the character of `LimEnvelope`
    explicit ActivityScale(float inCharacter);

    float mGain;
    float mOffset;
    float mHighest;
};

/// Coefficients and state of the follower, in double precision like the release
struct ShareFollower
{
    double mRise = 1.0;
    double mFall = 1.0;
    double mShare = 0.0;
};

/// Turns activities into shares, and has the follower go after them. In place.
void FollowActivity(unsigned inCount, const ActivityScale& inScale, ShareFollower& ioFollower,
                    float* ioActivity);

} // namespace tessaro::dynamics
