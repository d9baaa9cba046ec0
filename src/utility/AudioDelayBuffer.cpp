#include <tessaro/utility/AudioDelayBuffer.h>

#include <algorithm>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

namespace kernels = brisken::utility;

/// Calls `inVisit(ring offset, block offset, count)` for each contiguous run of `inCount` samples of the
/// ring. Returns the position behind them.
template <typename Function>
unsigned ForEachRun(unsigned inRingSize, unsigned inPosition, unsigned inCount, Function inVisit)
{
    for (unsigned done = 0; done < inCount && inRingSize != 0;) {
        if (inPosition >= inRingSize) {
            inPosition = 0;
        }
        const auto run = std::min(inCount - done, inRingSize - inPosition);
        inVisit(inPosition, done, run);
        inPosition += run;
        done += run;
    }
    return inPosition;
}

} // namespace

AudioDelayBuffer::~AudioDelayBuffer() = default;

void AudioDelayBuffer::Init(std::size_t inChannels, unsigned inBlockSize, unsigned inDelay)
{
    Restart(inChannels, inBlockSize + inDelay, inDelay);
}

void AudioDelayBuffer::SetDelay(unsigned inDelay)
{
    // The use size already holds the old delay. Callers rely on this length.
    Restart(GetChannelCount(), GetBufferSize() + inDelay, inDelay);
}

void AudioDelayBuffer::Restart(std::size_t inChannels, unsigned inSize, unsigned inDelay)
{
    AudioBuffer::Init(inChannels, inSize);
    Zero();
    mDelay = inDelay;
    mReadPosition = 0;
    mWritePosition = inDelay;
}

void AudioDelayBuffer::Write(const AudioBuffer& inSource)
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        if (!inSource.IsChannelZero(channel) && inSource[channel] != nullptr) {
            ClearChannelZero(channel);
        }
    }
    const auto writeRun = [&](unsigned inRingOffset, unsigned inBlockOffset, unsigned inCount) {
        for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
            const float* source = inSource.IsChannelZero(channel) ? nullptr : inSource[channel];
            if (source != nullptr) {
                kernels::Copy(inCount, source + inBlockOffset, mChannels[channel] + inRingOffset);
            } else {
                kernels::Zero(inCount, mChannels[channel] + inRingOffset);
            }
        }
    };
    mWritePosition = ForEachRun(mUseSize, mWritePosition, inSource.GetBufferSize(), writeRun);
}

void AudioDelayBuffer::Read(AudioBuffer& outDest)
{
    const auto readRun = [&](unsigned inRingOffset, unsigned inBlockOffset, unsigned inCount) {
        for (std::size_t channel = 0; channel < outDest.GetChannelCount(); ++channel) {
            float* dest = outDest[channel] + inBlockOffset;
            if (channel < mChannelCount) {
                kernels::Copy(inCount, mChannels[channel] + inRingOffset, dest);
            } else {
                kernels::Zero(inCount, dest);
            }
        }
    };
    if (mUseSize == 0) {
        outDest.ZeroBuffers();
    }
    mReadPosition = ForEachRun(mUseSize, mReadPosition, outDest.GetBufferSize(), readRun);
    // Consumers expect a delayed block to be not silent even when it is all zeros.
    outDest.ClearZeroFlags();
}

} // namespace tessaro
