#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "dynamics/WindowMaximum.h"

namespace tessaro {

/// The envelope of one channel of `HardLimit`.
///
/// While something within the look-ahead is higher than the envelope it climbs along the upper hull of what
/// it sees: from where it is straight to the sample with the steepest slope, from there to the next one. The
/// hull is kept as samples come into sight, each of which enters and leaves it once: the climb costs the same
/// for any signal, and no window is ever searched.
class HardLimitEnvelope
{
public:
    /// How the envelope falls
    struct Release
    {
        bool mTowardsCeiling = true;
        double mCeiling = 1.0;
        double mDecay = 0.0; ///< factor for each sample
    };

    /// A ring of magnitudes, with the place of the sample that is to come out next
    struct Ring
    {
        float* mRow;
        unsigned mSize;
        unsigned mPosition;
    };

    /// Room for the longest look-ahead. [control]
    void Init(unsigned inMaxLookAhead);
    void SetRelease(const Release& inRelease) { mRelease = inRelease; }
    /// Takes the height, and forgets what was in sight.
    void SetHeight(double inHeight);
    /// Looks anew at the samples in sight: `inLookAhead`, at least 1 and less than the ring holds.
    void SetLookAhead(unsigned inLookAhead, const Ring& inRing);

    /// Writes the height of the envelope for each of the next samples to come out, and puts as many new
    /// magnitudes in their places, which are those from the ring's position on, without a wrap. Magnitudes
    /// are finite.
    void Process(const Ring& ioRing, const float* inArriving, unsigned inCount, double* outHeights);

private:
    struct Target
    {
        std::int64_t mTime;
        double mHeight;
    };

    [[nodiscard]] Target& At(std::size_t inPlace) { return mTargets[(mFirst + inPlace) & mPlaceMask]; }
    [[nodiscard]] double SlopeTo(const Target& inTarget) const
    {
        return (inTarget.mHeight - mHeight) / static_cast<double>(inTarget.mTime - mTime);
    }
    void Aim(const Target& inTarget);
    void Climb();
    void Fall(double inHighestInSight);

    Release mRelease;
    unsigned mLookAhead = 1;
    std::int64_t mTime = 0; ///< of the last sample that came out
    double mHeight = 1.0;
    double mSlope = 0.0;          ///< of the climb to the first target
    double mHighestTarget = 1.0;  ///< the last target, or the height where there is none
    std::vector<Target> mTargets; ///< ring of a power of two places: later, higher and less steep each
    std::size_t mPlaceMask = 0;
    std::size_t mFirst = 0;
    std::size_t mNumTargets = 0;
    WindowMaximum mSight;
};

} // namespace tessaro
