#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace tessaro::dynamics {

/// How many of the last levels lay in each step of 1 dB below full scale. Constructing allocates; all else is
/// [real-time].
class MaximizerHistogram
{
public:
    static constexpr unsigned kSize = 128;
    /// Levels that count, at any sampling rate
    static constexpr unsigned kLevels = 44100;

    MaximizerHistogram();

    /// Takes in a level and forgets the oldest.
    void Update(float inLevel);
    void Reset();

    [[nodiscard]] const unsigned* GetCounts() const { return mCounts.data(); }
    /// Whether anything has changed since the last call
    bool TakeNewData() { return std::exchange(mHasNewData, false); }

private:
    [[nodiscard]] unsigned FindBin(float inLevel) const;

    std::array<float, kSize> mTable{}; ///< falling by 1 dB, from 1
    std::array<unsigned, kSize> mCounts{};
    std::vector<std::uint8_t> mBins; ///< of the last levels, oldest at the position
    unsigned mPosition = 0;
    bool mHasNewData = false;
};

} // namespace tessaro::dynamics
