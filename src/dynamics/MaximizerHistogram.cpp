#include "dynamics/MaximizerHistogram.h"

#include <algorithm>

#include "dynamics/GainTimes.h"

namespace tessaro::dynamics {

namespace {

/// Stands where no level has been yet.
constexpr std::uint8_t kNoBin = MaximizerHistogram::kSize;

} // namespace

MaximizerHistogram::MaximizerHistogram() : mBins(kLevels)
{
    for (unsigned i = 0; i < kSize; ++i) {
        mTable[i] = LinearFromDecibels(-static_cast<float>(i));
    }
    Reset();
}

void MaximizerHistogram::Reset()
{
    mCounts.fill(0);
    std::fill(mBins.begin(), mBins.end(), kNoBin);
    mPosition = 0;
    mHasNewData = true;
}

/// The bin whose entry is at or above the level and whose next one is below it; the first bin has no upper
/// end, the last no lower. Halves the table by sums instead of choices, as levels of music are not to be
/// guessed by any branch.
unsigned MaximizerHistogram::FindBin(float inLevel) const
{
    unsigned index = kSize / 2;
    for (unsigned step = kSize / 4; step != 0; step /= 2) {
        const unsigned isAbove = inLevel > mTable[index];
        index += step - 2 * step * isAbove;
    }
    const unsigned isAbove = inLevel > mTable[index];
    return index - isAbove;
}

void MaximizerHistogram::Update(float inLevel)
{
    const unsigned bin = FindBin(inLevel);
    ++mCounts[bin];
    const unsigned oldest = std::exchange(mBins[mPosition], static_cast<std::uint8_t>(bin));
    if (oldest < kSize) {
        --mCounts[oldest];
    }
    mPosition = mPosition + 1 == kLevels ? 0 : mPosition + 1;
    mHasNewData = true;
}

} // namespace tessaro::dynamics
