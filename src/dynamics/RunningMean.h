#pragma once

#include <cstddef>
#include <vector>

namespace tessaro::dynamics {

/// The mean of the last entries of a stream, of zeros before it began: the memory of an automatic make-up
/// gain. `AddAndAverage` takes a step for each entry and does not allocate.
///
/// The sum goes on by adding the new entry and taking the oldest away. Each time the ring is through it is
/// put to the sum of what went in since it began anew, so that neither rounding nor an entry that is not
/// finite stays for good.
class RunningMean
{
public:
    /// Starts anew, without entries and surplus; the length is at least one. Throws `std::bad_alloc`.
    void SetLength(std::size_t inLength);
    [[nodiscard]] std::size_t GetLength() const { return mRing.size(); }

    /// Forgets the entries, not the surplus.
    void Clear();
    /// What the sum holds over the entries' own, for good
    void SetSurplus(double inSurplus) { mSurplus = inSurplus; }
    [[nodiscard]] double GetSurplus() const { return mSurplus; }
    /// Of the entries, and the surplus
    [[nodiscard]] double GetSum() const { return mSurplus + mSum; }

    /// outMeans[i] = sum / length after entry i has come in; never below 0
    void AddAndAverage(unsigned inCount, const float* inEntries, float* outMeans);

private:
    std::vector<float> mRing = std::vector<float>(1);
    std::size_t mPosition = 0;
    double mSum = 0.0;
    double mSumOfThisTurn = 0.0;
    double mSurplus = 0.0;
};

} // namespace tessaro::dynamics
