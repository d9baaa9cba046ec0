#include "dynamics/RunningMean.h"

#include <algorithm>

namespace tessaro::dynamics {

void RunningMean::SetLength(std::size_t inLength)
{
    mRing.resize(std::max<std::size_t>(inLength, 1));
    mSurplus = 0.0;
    Clear();
}

void RunningMean::Clear()
{
    std::fill(mRing.begin(), mRing.end(), 0.0f);
    mPosition = 0;
    mSum = 0.0;
    mSumOfThisTurn = 0.0;
}

void RunningMean::AddAndAverage(unsigned inCount, const float* inEntries, float* outMeans)
{
    const double share = 1.0 / static_cast<double>(mRing.size());
    while (inCount > 0) {
        const auto untilEnd = mRing.size() - mPosition;
        const auto count = static_cast<unsigned>(std::min<std::size_t>(inCount, untilEnd));
        float* const ring = mRing.data() + mPosition;
        double sum = mSum;
        double sumOfThisTurn = mSumOfThisTurn;
        for (unsigned i = 0; i < count; ++i) {
            const double entry = inEntries[i];
            sum += entry - static_cast<double>(ring[i]);
            sumOfThisTurn += entry;
            ring[i] = inEntries[i];
            outMeans[i] = static_cast<float>(std::max(mSurplus + sum, 0.0) * share);
        }
        mSum = sum;
        mSumOfThisTurn = sumOfThisTurn;
        mPosition += count;
        if (mPosition == mRing.size()) {
            mPosition = 0;
            mSum = mSumOfThisTurn;
            mSumOfThisTurn = 0.0;
        }
        inEntries += count;
        outMeans += count;
        inCount -= count;
    }
}

} // namespace tessaro::dynamics
