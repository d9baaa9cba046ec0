#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include <tessaro/Export.h>

namespace tessaro {

class AudioBuffer;

namespace dsp {

/// Counts blocks by how far their peak goes over the full scale: a histogram over thresholds in dB.
///
/// Each block adds 1 to the highest threshold that its peak is strictly above, and to no other; a block below
/// all of them is not counted. The counts are atomic, so that a meter reads and resets them [any thread]
/// while one thread processes [real-time].
class TESSARO_EXPORT OvershootCounter
{
public:
    /// Thresholds in dB; a peak of 0 dB is 1. [control]
    explicit OvershootCounter(const std::vector<unsigned int>& inThresholds);

    /// Counts a block by its largest magnitude: of the channels of a buffer that are not silent, of one row,
    /// of several rows. No channels have a peak of 0. NaN is passed over. [real-time]
    void Process(const AudioBuffer& inBuffer);
    void Process(const float* inRow, std::int64_t inCount);
    void Process(const float* const* inRows, std::int64_t inNumChannels, std::int64_t inNumFrames);

    /// The counts by threshold in dB; thresholds that were given twice count together. [any thread]
    [[nodiscard]] std::map<unsigned int, unsigned int> GetBuckets() const;
    /// The same, and starts anew: no block is lost or seen twice between two calls. [any thread]
    [[nodiscard]] std::map<unsigned int, unsigned int> GetAndResetBuckets();
    /// [any thread]
    void Reset();

private:
    struct Bucket
    {
        float mThreshold = 0.0f; ///< linear
        std::uint32_t mDecibels = 0;
        std::atomic<std::uint32_t> mCount{0};
    };

    void CountPeak(float inPeak);

    std::vector<Bucket> mBuckets; ///< from the highest threshold down
};

} // namespace dsp
} // namespace tessaro
