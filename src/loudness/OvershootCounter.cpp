#include <tessaro/loudness/OvershootCounter.h>

#include <algorithm>
#include <limits>

#include <brisken/utility/Reductions.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/frame/AudioProcessor.h>

namespace tessaro::dsp {

namespace {

float PeakOf(const float* inRow, std::int64_t inCount)
{
    constexpr std::int64_t kMost = std::numeric_limits<unsigned>::max();
    float peak = 0.0f;
    for (std::int64_t done = 0; done < inCount; done += kMost) {
        const auto count = static_cast<unsigned>(std::min(inCount - done, kMost));
        peak = std::max(peak, brisken::utility::MaxAbs(inRow + done, count));
    }
    return peak;
}

} // namespace

OvershootCounter::OvershootCounter(const std::vector<unsigned int>& inThresholds)
    : mBuckets(inThresholds.size())
{
    auto decibels = inThresholds;
    std::sort(decibels.rbegin(), decibels.rend());
    for (std::size_t i = 0; i < decibels.size(); ++i) {
        mBuckets[i].mDecibels = decibels[i];
        mBuckets[i].mThreshold = AudioProcessor::DB2Amp(static_cast<float>(decibels[i]));
    }
}

void OvershootCounter::Process(const AudioBuffer& inBuffer)
{
    float peak = 0.0f;
    for (std::size_t channel = 0; channel < inBuffer.GetChannelCount(); ++channel) {
        if (!inBuffer.IsChannelZero(channel)) {
            peak = std::max(peak, PeakOf(inBuffer[channel], inBuffer.GetBufferSize()));
        }
    }
    CountPeak(peak);
}

void OvershootCounter::Process(const float* inRow, std::int64_t inCount)
{
    CountPeak(PeakOf(inRow, inCount));
}

void OvershootCounter::Process(const float* const* inRows, std::int64_t inNumChannels,
                               std::int64_t inNumFrames)
{
    float peak = 0.0f;
    for (std::int64_t channel = 0; channel < inNumChannels; ++channel) {
        peak = std::max(peak, PeakOf(inRows[channel], inNumFrames));
    }
    CountPeak(peak);
}

void OvershootCounter::CountPeak(float inPeak)
{
    for (auto& bucket : mBuckets) {
        if (inPeak > bucket.mThreshold) {
            bucket.mCount.fetch_add(1, std::memory_order_relaxed);
            return;
        }
    }
}

std::map<unsigned int, unsigned int> OvershootCounter::GetBuckets() const
{
    std::map<unsigned int, unsigned int> counts;
    for (const auto& bucket : mBuckets) {
        counts[bucket.mDecibels] += bucket.mCount.load(std::memory_order_relaxed);
    }
    return counts;
}

std::map<unsigned int, unsigned int> OvershootCounter::GetAndResetBuckets()
{
    std::map<unsigned int, unsigned int> counts;
    for (auto& bucket : mBuckets) {
        auto& count = counts[bucket.mDecibels]; // first, as it may throw
        count += bucket.mCount.exchange(0, std::memory_order_relaxed);
    }
    return counts;
}

void OvershootCounter::Reset()
{
    for (auto& bucket : mBuckets) {
        bucket.mCount.store(0, std::memory_order_relaxed);
    }
}

} // namespace tessaro::dsp
