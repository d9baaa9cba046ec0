#include "WaveformReader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <brisken/Utility.h>
#include <tessaro/buffering/AudioBuffer.h>

#include "Progress.h"

namespace host {

namespace {

using tessaro::waveform::WaveformData;
using tessaro::waveform::WaveformDataProperties;
using tessaro::waveform::WaveformDataType;
using tessaro::waveform::WaveformPeakValue;

constexpr unsigned kBlockSize = 16384;

/// Hands out the stretch block by block: `inTake(block, position)`, with the position counted from its start.
template <typename Take>
void ReadBlocks(AudioSource& ioSource, std::int64_t inStart, std::int64_t inFrames, const Take& inTake)
{
    tessaro::AudioBuffer block(static_cast<std::size_t>(ioSource.GetChannelCount()), kBlockSize);
    Progress progress("reading", inFrames);
    ioSource.Seek(inStart);
    for (std::int64_t done = 0; done < inFrames;) {
        const auto wanted = static_cast<unsigned>(std::min<std::int64_t>(inFrames - done, kBlockSize));
        const unsigned got = ioSource.Read(block, wanted);
        if (got == 0) {
            return;
        }
        inTake(block, done);
        progress.Update(done += got);
    }
}

float NumberOrZero(float inValue)
{
    return std::isfinite(inValue) ? inValue : 0.0f;
}

WaveformPeakValue FindExtremes(const float* inRow, unsigned inCount)
{
    WaveformPeakValue peak;
    brisken::utility::MinMax(inCount, inRow, peak.mMin, peak.mMax);
    if (std::isfinite(peak.mMin) && std::isfinite(peak.mMax)) {
        return peak;
    }
    peak = {std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest()};
    for (unsigned i = 0; i < inCount; ++i) {
        if (std::isfinite(inRow[i])) {
            peak.mMin = std::min(peak.mMin, inRow[i]);
            peak.mMax = std::max(peak.mMax, inRow[i]);
        }
    }
    return peak.mMin <= peak.mMax ? peak : WaveformPeakValue{};
}

/// Sorts the frames of blocks into slots.
class PeakCollector
{
public:
    PeakCollector(WaveformData& ioData, std::int64_t inFrames)
        : mData(ioData), mFrames(inFrames), mSlots(ioData.GetDataSlots())
    {
    }

    void Add(const tessaro::AudioBuffer& inBlock, std::int64_t inPosition)
    {
        const std::int64_t end = inPosition + inBlock.GetBufferSize();
        for (std::int64_t frame = inPosition; frame < end;) {
            while (StartOf(mSlot + 1) <= frame) {
                ++mSlot;
            }
            const std::int64_t stop = std::min(end, StartOf(mSlot + 1));
            AddPiece(inBlock, static_cast<std::size_t>(frame - inPosition),
                     static_cast<unsigned>(stop - frame), frame == StartOf(mSlot));
            frame = stop;
        }
    }

private:
    std::int64_t StartOf(std::int64_t inSlot) const
    {
        // In two steps, as slots times frames of a long file has no room in 64 bits.
        return mFrames / mSlots * inSlot + mFrames % mSlots * inSlot / mSlots;
    }

    void AddPiece(const tessaro::AudioBuffer& inBlock, std::size_t inOffset, unsigned inCount, bool inIsFirst)
    {
        const auto slot = static_cast<std::size_t>(mSlot);
        for (std::size_t channel = 0; channel < inBlock.GetChannelCount(); ++channel) {
            WaveformPeakValue peak;
            if (!inBlock.IsChannelZero(channel)) {
                peak = FindExtremes(inBlock[channel] + inOffset, inCount);
            }
            if (!inIsFirst) {
                const WaveformPeakValue before = mData.GetWaveformPeakValue(channel, slot);
                peak = {std::min(before.mMin, peak.mMin), std::max(before.mMax, peak.mMax)};
            }
            mData.SetWaveformPeakValue(channel, slot, peak);
        }
    }

    WaveformData& mData;
    std::int64_t mFrames;
    std::int64_t mSlots;
    std::int64_t mSlot = 0;
};

std::shared_ptr<WaveformData> MakeData(const AudioSource& inSource, WaveformDataType inType,
                                       std::int64_t inSlots)
{
    return std::make_shared<WaveformData>(WaveformDataProperties(
        inType, static_cast<std::uint64_t>(inSlots), static_cast<std::uint64_t>(inSource.GetChannelCount())));
}

} // namespace

std::shared_ptr<WaveformData> ReadPeaks(AudioSource& ioSource, std::int64_t inStart, std::int64_t inFrames,
                                        std::int64_t inSlots)
{
    auto data = MakeData(ioSource, WaveformDataType::kPeaks, inSlots);
    PeakCollector collector(*data, inFrames);
    ReadBlocks(ioSource, inStart, inFrames,
               [&](const tessaro::AudioBuffer& inBlock, std::int64_t inPosition) {
                   collector.Add(inBlock, inPosition);
               });
    return data;
}

std::shared_ptr<WaveformData> ReadSamples(AudioSource& ioSource, std::int64_t inStart, std::int64_t inFrames)
{
    auto data = MakeData(ioSource, WaveformDataType::kSamples, inFrames);
    ReadBlocks(
        ioSource, inStart, inFrames, [&](const tessaro::AudioBuffer& inBlock, std::int64_t inPosition) {
            for (std::size_t channel = 0; channel < inBlock.GetChannelCount(); ++channel) {
                for (unsigned i = 0; i < inBlock.GetBufferSize() && !inBlock.IsChannelZero(channel); ++i) {
                    data->SetWaveformSample(channel, static_cast<std::size_t>(inPosition) + i,
                                            NumberOrZero(inBlock[channel][i]));
                }
            }
        });
    return data;
}

} // namespace host
