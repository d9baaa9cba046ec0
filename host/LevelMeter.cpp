#include "LevelMeter.h"

#include <algorithm>
#include <cmath>

#include <brisken/Utility.h>

namespace host {

void LevelMeter::Add(const tessaro::AudioBuffer& inBuffer)
{
    const unsigned count = inBuffer.GetBufferSize();
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        if (!inBuffer.IsChannelZero(channel)) {
            AddRow(inBuffer[channel], count, mChannels[channel]);
        }
    }
    mFrameCount += count;
}

void LevelMeter::AddRow(const float* inRow, unsigned inCount, Channel& ioChannel)
{
    float squareSum = brisken::utility::DotProduct(inCount, inRow, inRow);
    if (!std::isfinite(squareSum)) {
        mCleaned.assign(inRow, inRow + inCount);
        for (auto& sample : mCleaned) {
            if (!std::isfinite(sample)) {
                sample = 0.0f;
                ++ioChannel.mInvalidCount;
            }
        }
        inRow = mCleaned.data();
        squareSum = brisken::utility::DotProduct(inCount, inRow, inRow);
    }
    ioChannel.mSquareSum += squareSum;
    ioChannel.mPeak = std::max<double>(ioChannel.mPeak, brisken::utility::MaxAbs(inRow, inCount));
}

double LevelMeter::GetRms(int inChannel) const
{
    const auto& channel = mChannels[static_cast<std::size_t>(inChannel)];
    return mFrameCount > 0 ? std::sqrt(channel.mSquareSum / static_cast<double>(mFrameCount)) : 0.0;
}

} // namespace host
