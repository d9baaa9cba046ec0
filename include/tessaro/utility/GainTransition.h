#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessaro/Export.h>

namespace tessaro {

/// A sample-exact list of gain changes, jumps and linear ramps, that is worked off block by block.
///
/// Offsets count samples from the start of the next block to be processed and may lie in any later block.
/// Events are added in the order of their starts. A ramp that the next event begins in the middle of stops
/// there, and that event goes on from the gain reached.
///
/// Gains are linear and taken as they are. A ramp's first sample has the gain before the ramp, its target is
/// met on the sample behind it. A stretch without events costs one multiplication a sample, and nothing at
/// gain 1.
///
/// Latency 0, no tail. Any block size; the split of a stream into blocks changes nothing but rounding.
/// Allocates in the constructor only: all else is `[real-time]`, events may be added there. One thread at a
/// time. Moved, not copied: a copy would lose the room for events.
class TESSARO_EXPORT GainTransition
{
public:
    /// Room for `inMaxEvents` events; the gain is 1. Throws when memory runs out. [control]
    explicit GainTransition(unsigned inMaxEvents);
    ~GainTransition();
    GainTransition(GainTransition&& ioOther) noexcept;
    GainTransition& operator=(GainTransition&& ioOther) noexcept;

    /// The gain at the start of the next block.
    [[nodiscard]] float GetCurrentGain() const { return mCurrentGain; }

    /// Sets the gain at the start of the next block; events stay.
    void SetCurrentGain(float inGain) { mCurrentGain = inGain; }

    /// Adds a ramp of `inLength` samples to `inGain`; a length of 0 or below is a jump. Returns false, and
    /// adds nothing, when there is no room. When `inGain` is where the last event leads already, or the
    /// current gain if there is none, it returns true and adds nothing either. A start before that of the
    /// last event, or before the block, counts as that.
    bool RampTo(std::int64_t inStart, std::int64_t inLength, float inGain);

    /// A ramp of length 0: sample `inStart` is the first with the new gain.
    bool JumpTo(std::int64_t inStart, float inGain);

    /// Processes a block in place.
    void Process(float* const* ioChannels, std::size_t inNumChannels, std::int64_t inNumSamples);

private:
    struct Event
    {
        float mTargetGain;
        std::int64_t mStart;  ///< samples from the start of the next block
        std::int64_t mLength; ///< samples, 0 for a jump
    };

    /// What one event does to a block.
    struct Stretch
    {
        std::int64_t mLength;
        float mEndGain;
        bool mIsUnfinished; ///< the ramp goes on in the next block
    };

    [[nodiscard]] Stretch FitRamp(std::size_t inEvent, std::int64_t inNumSamples) const;
    [[nodiscard]] float GainWithin(const Event& inRamp, std::int64_t inSamples) const;
    void StartNextBlock(std::size_t inFinishedEvents, std::int64_t inNumSamples);

    std::vector<Event> mEvents;
    float mCurrentGain = 1.0f;
};

} // namespace tessaro
