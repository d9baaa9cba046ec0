#include "buffering/AudioBufferLayout.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tessaro {

BlockLayout::BlockLayout(std::size_t inChannels, int inAlignment)
    : mChannels(inChannels), mAlignment(static_cast<std::size_t>(std::max(inAlignment, 1)))
{
}

std::size_t BlockLayout::GetBytes(unsigned inSize) const
{
    constexpr auto most = std::numeric_limits<std::size_t>::max();
    const auto bytesPerChannel = GetStride(inSize) * sizeof(float) + sizeof(float*);
    return mChannels <= most / bytesPerChannel ? mChannels * bytesPerChannel : most;
}

unsigned BlockLayout::GetCapacity(std::size_t inBytes) const
{
    const auto stride = (inBytes - mChannels * sizeof(float*)) / sizeof(float) / mChannels;
    const auto capacity = stride - (mAlignment + kSlack);
    return static_cast<unsigned>(std::min<std::size_t>(capacity, std::numeric_limits<unsigned>::max()));
}

void BlockLayout::FillTable(float** outTable, unsigned inCapacity) const
{
    const auto rowBytes = mAlignment * sizeof(float);
    const auto rows = reinterpret_cast<std::uintptr_t>(outTable + mChannels);
    for (std::size_t channel = 0; channel < mChannels; ++channel) {
        const auto start = rows + (mAlignment - 1 + channel * GetStride(inCapacity)) * sizeof(float);
        outTable[channel] = reinterpret_cast<float*>(start / rowBytes * rowBytes);
    }
}

} // namespace tessaro
