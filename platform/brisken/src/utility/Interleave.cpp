#include <brisken/utility/Interleave.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Interleave.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

template <class V>
struct Pair
{
    V first;
    V second;
};

struct InterleavePairStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Pair<hn::Vec<D>>{hn::LoadU(d, inLeft + i), hn::LoadU(d, inRight + i)};
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, Pair<V> inPair) const
    {
        hn::StoreInterleaved2(inPair.first, inPair.second, d, out + 2 * i);
    }

    const float* inLeft;
    const float* inRight;
    float* out;
};

struct DeinterleavePairStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        Pair<hn::Vec<D>> pair;
        hn::LoadInterleaved2(d, inFrames + 2 * i, pair.first, pair.second);
        return pair;
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, Pair<V> inPair) const
    {
        hn::StoreU(inPair.first, d, outLeft + i);
        hn::StoreU(inPair.second, d, outRight + i);
    }

    const float* inFrames;
    float* outLeft;
    float* outRight;
};

/// The plain loops, for what the tiles below leave over: a range of samples of all channels.
void InterleaveSamples(std::size_t inBegin, std::size_t inEnd, std::size_t inChannels,
                       const float* const* inRows, float* out)
{
    for (std::size_t i = inBegin; i < inEnd; ++i) {
        for (std::size_t c = 0; c < inChannels; ++c) {
            out[i * inChannels + c] = inRows[c][i];
        }
    }
}

void DeinterleaveSamples(std::size_t inBegin, std::size_t inEnd, std::size_t inChannels,
                         const float* inFrames, float* const* outRows)
{
    for (std::size_t i = inBegin; i < inEnd; ++i) {
        for (std::size_t c = 0; c < inChannels; ++c) {
            outRows[c][i] = inFrames[i * inChannels + c];
        }
    }
}

#if HWY_TARGET == HWY_SCALAR

std::size_t InterleaveTiles(std::size_t, std::size_t, const float* const*, float*)
{
    return 0;
}
std::size_t DeinterleaveTiles(std::size_t, std::size_t, const float*, float* const*)
{
    return 0;
}

#else

// Four channels and more go through tiles of four samples of four channels, transposed in registers. Where
// the channels are no multiple of four, the last tile overlaps its neighbour. Both functions return how many
// samples a channel they have done.
constexpr std::size_t kTile = 4;
using TileTag = hn::FixedTag<float, kTile>;

/// Reads four rows that begin at the four pointers, and writes them as columns to the other four.
HWY_INLINE void TransposeTile(const float* const inRows[kTile], float* const outRows[kTile])
{
    const TileTag d;
    const hn::Repartition<double, TileTag> pairs;
    const auto row0 = hn::LoadU(d, inRows[0]);
    const auto row1 = hn::LoadU(d, inRows[1]);
    const auto row2 = hn::LoadU(d, inRows[2]);
    const auto row3 = hn::LoadU(d, inRows[3]);
    const auto low01 = hn::BitCast(pairs, hn::InterleaveLower(d, row0, row1));
    const auto low23 = hn::BitCast(pairs, hn::InterleaveLower(d, row2, row3));
    const auto high01 = hn::BitCast(pairs, hn::InterleaveUpper(d, row0, row1));
    const auto high23 = hn::BitCast(pairs, hn::InterleaveUpper(d, row2, row3));
    hn::StoreU(hn::BitCast(d, hn::InterleaveLower(pairs, low01, low23)), d, outRows[0]);
    hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(pairs, low01, low23)), d, outRows[1]);
    hn::StoreU(hn::BitCast(d, hn::InterleaveLower(pairs, high01, high23)), d, outRows[2]);
    hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(pairs, high01, high23)), d, outRows[3]);
}

/// First channel of the tile after the one at the given channel: the last tile ends with the last channel.
HWY_INLINE std::size_t NextTile(std::size_t inChannel, std::size_t inChannels)
{
    const std::size_t next = inChannel + kTile;
    return next < inChannels && next + kTile > inChannels ? inChannels - kTile : next;
}

std::size_t InterleaveTiles(std::size_t inCount, std::size_t inChannels, const float* const* inRows,
                            float* out)
{
    std::size_t i = 0;
    for (; i + kTile <= inCount; i += kTile) {
        for (std::size_t c = 0; c < inChannels; c = NextTile(c, inChannels)) {
            float* const frame = out + i * inChannels + c;
            const float* const rows[kTile] = {inRows[c] + i, inRows[c + 1] + i, inRows[c + 2] + i,
                                              inRows[c + 3] + i};
            float* const frames[kTile] = {frame, frame + inChannels, frame + 2 * inChannels,
                                          frame + 3 * inChannels};
            TransposeTile(rows, frames);
        }
    }
    return i;
}

std::size_t DeinterleaveTiles(std::size_t inCount, std::size_t inChannels, const float* inFrames,
                              float* const* outRows)
{
    std::size_t i = 0;
    for (; i + kTile <= inCount; i += kTile) {
        for (std::size_t c = 0; c < inChannels; c = NextTile(c, inChannels)) {
            const float* const frame = inFrames + i * inChannels + c;
            const float* const frames[kTile] = {frame, frame + inChannels, frame + 2 * inChannels,
                                                frame + 3 * inChannels};
            float* const rows[kTile] = {outRows[c] + i, outRows[c + 1] + i, outRows[c + 2] + i,
                                        outRows[c + 3] + i};
            TransposeTile(frames, rows);
        }
    }
    return i;
}

#endif

void InterleaveRows(unsigned inCount, unsigned inChannels, const float* const* inRows, float* out)
{
    if (inChannels == 2) {
        RunRow(hn::ScalableTag<float>(), inCount, InterleavePairStep{inRows[0], inRows[1], out});
        return;
    }
    const std::size_t done = inChannels >= 4 ? InterleaveTiles(inCount, inChannels, inRows, out) : 0;
    InterleaveSamples(done, inCount, inChannels, inRows, out);
}

void DeinterleaveRows(unsigned inCount, unsigned inChannels, const float* inFrames, float* const* outRows)
{
    if (inChannels == 2) {
        RunRow(hn::ScalableTag<float>(), inCount, DeinterleavePairStep{inFrames, outRows[0], outRows[1]});
        return;
    }
    const std::size_t done = inChannels >= 4 ? DeinterleaveTiles(inCount, inChannels, inFrames, outRows) : 0;
    DeinterleaveSamples(done, inCount, inChannels, inFrames, outRows);
}

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "Dispatch.h"

namespace brisken::utility {

HWY_EXPORT(InterleaveRows);
HWY_EXPORT(DeinterleaveRows);

void Interleave(unsigned inCount, unsigned inChannels, const float* const* inRows, float* out)
{
    BRISKEN_DISPATCH(InterleaveRows)(inCount, inChannels, inRows, out);
}

void Deinterleave(unsigned inCount, unsigned inChannels, const float* inA, float* const* outRows)
{
    BRISKEN_DISPATCH(DeinterleaveRows)(inCount, inChannels, inA, outRows);
}

} // namespace brisken::utility

#endif // HWY_ONCE
