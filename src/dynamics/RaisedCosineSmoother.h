#pragma once

#include <vector>

#include <tessaro/Export.h>

namespace tessaro::dynamics {

/// Running average of a row, weighted with a raised cosine: a symmetric low-pass whose impulse response is
/// `(1 - cos((2 k + 1) pi / N)) / N` for k from 0 to N - 1, N being `2 halfWidth + 1`. Constant signals pass
/// unchanged.
///
/// Latency is the half width. The past begins as zeros.
///
/// Method: of the window's samples a running sum and a running sum that turns by `2 pi / N` a sample, both in
/// double precision, so that a sample costs the same for every width. After each 128 rounds of the ring the
/// sums are formed anew, so that rounding errors do not pile up; NaN and infinity last no longer than that.
///
/// `SetHalfWidth` allocates [control]; all else is [real-time]. One thread at a time. Exported for the tests
/// only.
class TESSARO_EXPORT RaisedCosineSmoother
{
public:
    /// Samples; 0 copies. Resets. [control]
    void SetHalfWidth(unsigned inHalfWidth);
    [[nodiscard]] unsigned GetHalfWidth() const { return mHalfWidth; }

    /// Makes room for half widths up to this one. [control]
    void Reserve(unsigned inHalfWidth) { mRing.reserve(2 * static_cast<std::size_t>(inHalfWidth) + 1); }

    /// The rows may be the same.
    void Process(unsigned inCount, const float* inData, float* outSmooth);

    /// All zeros.
    void Reset();

private:
    /// The plain sum of the window's samples, and real and imaginary part of the sum that turns.
    struct Sums
    {
        double mPlain = 0.0;
        double mReal = 0.0;
        double mImaginary = 0.0;
    };
    /// What a sample adds to the sums as it enters, and how they turn for the next one.
    struct Rotation
    {
        double mCos = 1.0;
        double mSin = 0.0;
        double mEntryReal = 0.0;
        double mEntryImaginary = 0.0;

        void Advance(Sums& ioSums, double inDifference) const;
    };

    void ProcessRun(unsigned inCount, const float* inData, float* outSmooth);
    void RenewSums();

    std::vector<float> mRing;
    Rotation mRotation;
    Sums mSums;
    double mScale = 1.0;
    unsigned mHalfWidth = 0;
    unsigned mPosition = 0; ///< of the oldest sample
    unsigned mRounds = 0;   ///< of the ring since the sums were formed
};

} // namespace tessaro::dynamics
