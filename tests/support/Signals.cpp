#include "support/Signals.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#if defined(__SANITIZE_ADDRESS__)
#define TESSARO_POISONS_MEMORY 1
#elif defined(__has_feature)
#define TESSARO_POISONS_MEMORY __has_feature(address_sanitizer)
#endif
#if TESSARO_POISONS_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace tessaro::testing {

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

} // namespace

Row MakeSine(std::size_t inLength, double inFrequency, double inRate, double inAmplitude, double inPhase)
{
    Row row(inLength);
    for (std::size_t i = 0; i < inLength; ++i) {
        const double phase = kTwoPi * inFrequency / inRate * static_cast<double>(i) + inPhase;
        row[i] = static_cast<float>(inAmplitude * std::sin(phase));
    }
    return row;
}

Row MakeSweep(std::size_t inLength, double inStart, double inEnd, double inRate, double inAmplitude)
{
    Row row(inLength);
    double phase = 0.0;
    for (std::size_t i = 0; i < inLength; ++i) {
        row[i] = static_cast<float>(inAmplitude * std::sin(phase));
        const double place = static_cast<double>(i) / static_cast<double>(inLength);
        phase += kTwoPi * inStart * std::pow(inEnd / inStart, place) / inRate;
    }
    return row;
}

Row MakeNoise(std::size_t inLength, std::uint32_t inSeed, double inAmplitude)
{
    std::mt19937 random(inSeed);
    Row row(inLength);
    for (auto& sample : row) {
        sample = static_cast<float>((static_cast<double>(random()) / 2147483647.5 - 1.0) * inAmplitude);
    }
    return row;
}

Row MakeImpulse(std::size_t inLength, std::size_t inPosition, float inAmplitude)
{
    Row row(inLength, 0.0f);
    row.at(inPosition) = inAmplitude;
    return row;
}

PlanarRows::PlanarRows(std::size_t inChannels, std::size_t inLength, float inValue)
    : PlanarRows(std::vector<Row>(inChannels, Row(inLength, inValue)))
{
}

PlanarRows::PlanarRows(std::vector<Row> inRows) : mRows(std::move(inRows)), mPointers(mRows.size()) {}

PlanarRows PlanarRows::OfNoise(std::size_t inChannels, std::size_t inLength, std::uint32_t inSeed,
                               double inAmplitude)
{
    std::vector<Row> rows;
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        rows.push_back(MakeNoise(inLength, inSeed + static_cast<std::uint32_t>(channel), inAmplitude));
    }
    return PlanarRows(std::move(rows));
}

float* const* PlanarRows::From(std::size_t inOffset)
{
    for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
        mPointers[channel] = mRows[channel].data() + inOffset;
    }
    return mPointers.data();
}

PoisonedRow::PoisonedRow(std::size_t inLength, [[maybe_unused]] bool inTrap)
    : mRow(inLength, std::numeric_limits<float>::quiet_NaN())
{
#if TESSARO_POISONS_MEMORY
    if (inTrap) {
        __asan_poison_memory_region(mRow.data(), mRow.size() * sizeof(float));
    }
#endif
}

PoisonedRow::~PoisonedRow()
{
#if TESSARO_POISONS_MEMORY
    __asan_unpoison_memory_region(mRow.data(), mRow.size() * sizeof(float));
#endif
}

} // namespace tessaro::testing
