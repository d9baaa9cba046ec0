#include <tessaro/resample/Resampler.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <brisken/filter/TapWindows.h>
#include <brisken/utility/Reductions.h>

#include "resample/ResamplerPrototype.h"

namespace tessaro::utility {

namespace {

constexpr unsigned kChunk = 64;

/// Positions from here on have no fraction left.
constexpr double kFarthest = 4503599627370496.0;

/// Copies `inOutCount` samples of a loop of `inCount` samples, from `inStart` on.
void CopyLoop(const float* inInput, std::size_t inCount, std::size_t inStart, std::size_t inOutCount,
              float* outOutput)
{
    for (std::size_t done = 0, from = inStart; done < inOutCount; from = 0) {
        const std::size_t count = std::min(inCount - from, inOutCount - done);
        std::copy_n(inInput + from, count, outOutput + done);
        done += count;
    }
}

/// `inIndex` modulo `inCount`, from 0 on.
std::size_t Wrap(std::int64_t inIndex, unsigned inCount)
{
    const std::int64_t count = inCount;
    if (inIndex >= 0 && inIndex < count) { // nearly always, and a division takes longer than short kernels
        return static_cast<std::size_t>(inIndex);
    }
    const auto rest = inIndex % count;
    return static_cast<std::size_t>(rest < 0 ? rest + count : rest);
}

} // namespace

/// Outputs whose windows are found together, for all channels.
struct Resampler::Chunk
{
    std::array<brisken::filter::TapWindow, kChunk> mWindows;
    unsigned mSize = 0;
    /// Whether all can be read at once, far enough from the edges.
    bool mIsInside = false;
};

Resampler::Resampler(std::int32_t inPhases) : mPhases(std::max(inPhases, 1)) {}

void Resampler::SetOptimalKernel(float inZeroCrossings, float inSourceRate, float inDestinationRate)
{
    if (!(inZeroCrossings > 0.0f) || !(inSourceRate > 0.0f) || !(inDestinationRate > 0.0f)) {
        return;
    }
    constexpr float kMostTaps = 2147483648.0f;
    const float scale = std::max(inSourceRate / inDestinationRate, 1.0f);
    const float taps = std::round(2.0f * static_cast<float>(mPhases) * inZeroCrossings * scale);
    if (taps < kMostTaps) {
        SplitPhases(MakeResamplerPrototype(static_cast<std::size_t>(taps) | 1, mPhases, scale));
    }
}

void Resampler::SplitPhases(const std::vector<float>& inPrototype)
{
    // Tap b + j * P of the prototype is tap j of row p, with a = N / 2 - p = offset * P + b. Short kernels
    // have rows that begin behind the position: their offset is negative.
    const auto count = static_cast<std::int64_t>(inPrototype.size());
    const std::int64_t phases = mPhases;
    const auto blocks = static_cast<std::size_t>(count / phases) / kTapsPerBlock + 1;
    std::vector<Row> rows(static_cast<std::size_t>(phases) + 1);
    std::vector<TapBlock> taps(rows.size() * blocks);
    for (std::int64_t phase = 0; phase <= phases; ++phase) {
        const std::int64_t a = count / 2 - phase;
        const std::int64_t b = (a % phases + phases) % phases;
        auto& row = rows[static_cast<std::size_t>(phase)];
        row.mOffset = static_cast<std::int32_t>((a - b) / phases);
        row.mLength = count < b ? 0 : static_cast<std::uint32_t>((count - b) / phases + 1);
        float* rowTaps = taps[static_cast<std::size_t>(phase) * blocks].mTaps;
        for (std::int64_t i = b; i < count; i += phases) {
            *rowTaps++ = inPrototype[static_cast<std::size_t>(i)];
        }
    }
    mBlocksPerRow = blocks;
    mRows = std::move(rows);
    mTaps = std::move(taps);
}

float Resampler::ReadWrapped(const float* inInput, unsigned inCount,
                             const brisken::filter::TapWindow& inWindow) const
{
    const float* taps = mTaps.front().mTaps + inWindow.mTaps;
    float sum = 0.0f;
    std::size_t from = Wrap(inWindow.mSource, inCount);
    for (std::size_t done = 0; done < inWindow.mCount; from = 0) {
        const auto count = static_cast<unsigned>(std::min(inCount - from, inWindow.mCount - done));
        sum += brisken::utility::DotProduct(count, taps + done, inInput + from);
        done += count;
    }
    return sum;
}

float Resampler::InterpolateSingle(const float* inInput, unsigned inCount, double inPosition) const
{
    if (mRows.empty() || inCount == 0 || !(std::abs(inPosition) < kFarthest)) {
        return 0.0f;
    }
    auto whole = static_cast<std::int64_t>(inPosition);
    whole -= inPosition < static_cast<double>(whole) ? 1 : 0;
    const double fraction = inPosition - static_cast<double>(whole);
    const auto phase = static_cast<std::size_t>(fraction * mPhases + 0.5);
    const auto& row = mRows[phase];
    return ReadWrapped(inInput, inCount,
                       {phase * mBlocksPerRow * kTapsPerBlock, whole - row.mOffset, row.mLength});
}

void Resampler::InterpolateNSamples(const float* const* inInput, unsigned inChannels, unsigned inCount,
                                    double inStartPosition, float* const* outOutput, unsigned inOutOffset,
                                    unsigned inOutCount, double inStep, bool inCopyWhenUnity) const
{
    if (inOutCount == 0) {
        return;
    }
    const bool canCopy =
        inStep == 1.0 && inCopyWhenUnity && inCount != 0 && std::abs(inStartPosition) < kFarthest;
    if (canCopy) {
        const std::size_t start = Wrap(std::llround(inStartPosition), inCount);
        for (unsigned channel = 0; channel < inChannels; ++channel) {
            CopyLoop(inInput[channel], inCount, start, inOutCount, outOutput[channel] + inOutOffset);
        }
    }
    const double farthest = std::abs(inStartPosition) + std::abs(inStep) * inOutCount;
    if (!mRows.empty() && inCount != 0 && farthest < kFarthest) {
        Chunk chunk;
        for (unsigned first = 0; first < inOutCount; first += chunk.mSize) {
            chunk.mSize = std::min(kChunk, inOutCount - first);
            FindWindows(inStartPosition, inStep, first, inCount, chunk);
            for (unsigned channel = 0; channel < inChannels; ++channel) {
                ReadChunk(inInput[channel], inCount, chunk, outOutput[channel] + inOutOffset + first);
            }
        }
    } else if (!canCopy) {
        for (unsigned channel = 0; channel < inChannels; ++channel) {
            std::fill_n(outOutput[channel] + inOutOffset, inOutCount, 0.0f);
        }
    }
}

void Resampler::FindWindows(double inStartPosition, double inStep, unsigned inFirst, unsigned inCount,
                            Chunk& ioChunk) const
{
    std::array<double, kChunk> wholes;
    std::array<std::int32_t, kChunk> phases;
    brisken::filter::SplitPositions(inStartPosition, inStep, inFirst, ioChunk.mSize,
                                    static_cast<unsigned>(mPhases), wholes.data(), phases.data());
    for (unsigned n = 0; n < ioChunk.mSize; ++n) {
        const auto phase = static_cast<std::size_t>(phases[n]);
        const auto [offset, length] = mRows[phase];
        // Field by field: written as a whole they would go through memory, and what reads them would wait.
        auto& window = ioChunk.mWindows[n];
        window.mTaps = phase * mBlocksPerRow * kTapsPerBlock;
        window.mSource = static_cast<std::ptrdiff_t>(wholes[n]) - offset;
        window.mCount = length;
    }
    // Positions go one way, and the rows of different phases begin and end within a sample of each other.
    const auto [begin, end] = std::minmax(wholes.front(), wholes[ioChunk.mSize - 1]);
    const auto& row = mRows.front();
    ioChunk.mIsInside = begin - row.mOffset >= 0.0 &&
                        end - row.mOffset + row.mLength + 1.0 + brisken::filter::kTapWindowSlack <= inCount;
}

void Resampler::ReadChunk(const float* inInput, unsigned inCount, const Chunk& inChunk,
                          float* outOutput) const
{
    if (inChunk.mIsInside) {
        brisken::filter::DotWindows(mTaps.front().mTaps, inInput, inChunk.mWindows.data(), inChunk.mSize,
                                    outOutput);
    } else {
        std::transform(inChunk.mWindows.begin(), inChunk.mWindows.begin() + inChunk.mSize, outOutput,
                       [&](const auto& inWindow) { return ReadWrapped(inInput, inCount, inWindow); });
    }
}

unsigned Resampler::GetLookAround() const
{
    return (mRows.empty() ? 0 : mRows.front().mLength / 2) + 2;
}

} // namespace tessaro::utility
