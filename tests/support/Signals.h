#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro::testing {

using Row = std::vector<float>;

/// Sine of `inFrequency` Hz at `inRate` Hz; phase in radians.
[[nodiscard]] Row MakeSine(std::size_t inLength, double inFrequency, double inRate, double inAmplitude = 1.0,
                           double inPhase = 0.0);

/// Sine whose frequency runs from the first to the second, by equal ratios in equal times.
[[nodiscard]] Row MakeSweep(std::size_t inLength, double inStart, double inEnd, double inRate,
                            double inAmplitude = 1.0);

/// White noise, even between `-inAmplitude` and `inAmplitude`; the same for the same seed everywhere.
[[nodiscard]] Row MakeNoise(std::size_t inLength, std::uint32_t inSeed, double inAmplitude = 1.0);

/// Zeros, and `inAmplitude` at `inPosition`.
[[nodiscard]] Row MakeImpulse(std::size_t inLength, std::size_t inPosition = 0, float inAmplitude = 1.0f);

/// Rows of equal length, with the table of pointers that processors take.
class PlanarRows
{
public:
    PlanarRows(std::size_t inChannels, std::size_t inLength, float inValue = 0.0f);
    explicit PlanarRows(std::vector<Row> inRows);

    /// Noise, another one in each channel.
    [[nodiscard]] static PlanarRows OfNoise(std::size_t inChannels, std::size_t inLength,
                                            std::uint32_t inSeed, double inAmplitude = 0.5);

    [[nodiscard]] std::size_t GetChannelCount() const { return mRows.size(); }
    [[nodiscard]] std::size_t GetLength() const { return mRows.empty() ? 0 : mRows[0].size(); }
    [[nodiscard]] Row& operator[](std::size_t inChannel) { return mRows[inChannel]; }
    [[nodiscard]] const Row& operator[](std::size_t inChannel) const { return mRows[inChannel]; }

    /// The rows from sample `inOffset` on; valid until the next call. Does not allocate.
    [[nodiscard]] float* const* From(std::size_t inOffset);

    [[nodiscard]] bool operator==(const PlanarRows& inOther) const { return mRows == inOther.mRows; }

private:
    std::vector<Row> mRows;
    std::vector<float*> mPointers;
};

/// Memory of a silent channel, which nobody may read: NaN throughout, and, under the address sanitizer, a
/// trap. Without the trap a read shows by what it does to the output.
class PoisonedRow
{
public:
    explicit PoisonedRow(std::size_t inLength, bool inTrap = true);
    PoisonedRow(const PoisonedRow&) = delete;
    PoisonedRow& operator=(const PoisonedRow&) = delete;
    ~PoisonedRow();

    [[nodiscard]] const float* Get() const { return mRow.data(); }

private:
    Row mRow;
};

} // namespace tessaro::testing
