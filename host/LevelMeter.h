#pragma once

#include <cstdint>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>

namespace host {

/// Peak and RMS of each channel over all blocks that it was shown. Channels flagged silent are not read.
class LevelMeter
{
public:
    explicit LevelMeter(int inChannelCount) : mChannels(static_cast<std::size_t>(inChannelCount)) {}

    void Add(const tessaro::AudioBuffer& inBuffer);

    /// Linear, over the samples that are finite numbers.
    double GetPeak(int inChannel) const { return mChannels[static_cast<std::size_t>(inChannel)].mPeak; }
    double GetRms(int inChannel) const;

    /// Samples of a channel that are NaN or infinite; they count in neither peak nor RMS.
    std::int64_t GetInvalidCount(int inChannel) const
    {
        return mChannels[static_cast<std::size_t>(inChannel)].mInvalidCount;
    }

private:
    struct Channel
    {
        double mPeak = 0.0;
        double mSquareSum = 0.0;
        std::int64_t mInvalidCount = 0;
    };

    void AddRow(const float* inRow, unsigned inCount, Channel& ioChannel);

    std::vector<Channel> mChannels;
    std::vector<float> mCleaned;
    std::int64_t mFrameCount = 0;
};

} // namespace host
