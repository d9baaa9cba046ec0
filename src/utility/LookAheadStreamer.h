#pragma once

#include <array>
#include <cstdint>

#include <tessaro/Export.h>
#include <tessaro/frame/AudioProcessor.h>
#include <tessaro/frame/DataTail.h>

namespace tessaro {

/// Lets a processor with look-ahead run in a plain stream: hands it rows that reach beyond the block, by
/// delaying the input by its look-ahead.
///
/// The wrapped processor is not owned and must outlive the streamer, which drives it alone: `SetMode`,
/// `Process`, `Reset` and `ChangeBufferSize` are passed on. It is called with the block length as it comes,
/// and may read as many samples behind the block as its `GetLookAhead()` says.
///
/// Latency (`GetSystemDelay`): the wrapped processor's system delay and its look-ahead. Input and output rows
/// may be the same. Real-time safe as far as the wrapped processor is; a block above the maximum makes both
/// grow, and the streamer keeps its history. Exported for the tests only.
class TESSARO_EXPORT LookAheadStreamer : public AudioProcessor
{
public:
    explicit LookAheadStreamer(AudioProcessor& ioWrapped);
    ~LookAheadStreamer() override;

    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize) override;
    /// A channel is handed on as silent once the whole of its look-ahead is silent too: until then what is
    /// left of its sound comes out.
    void Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                 ombrel::utility::Flags<std::uint64_t> inSilentChannels) override;
    void Reset() override;
    void ChangeBufferSize(int inMaxBlockSize) override;

    /// A bypassed streamer takes its input into the history and writes no output: audio in place passes
    /// undelayed.
    void SetBypass(bool inBypass) { mIsBypassed = inBypass; }
    [[nodiscard]] bool GetBypass() const { return mIsBypassed; }

    /// Call when the look-ahead of the wrapped processor has changed. The history is kept at the start of the
    /// new one: the output of the next samples has a gap, or lacks the newest samples. [control]
    void TakeOverLookAhead();

private:
    [[nodiscard]] unsigned GetHeldSamples() const { return mHistory.GetTailSize(); }
    void AppendInput(const float* const* inInput, unsigned inNumSamples,
                     ombrel::utility::Flags<std::uint64_t> inSilentChannels);
    [[nodiscard]] ombrel::utility::Flags<std::uint64_t>
    FollowSilence(ombrel::utility::Flags<std::uint64_t> inSilentChannels, unsigned inNumSamples);
    void ReportDelay();

    AudioProcessor& mWrapped;
    DataTail mWork;    ///< what the wrapped processor reads: history, then the block
    DataTail mHistory; ///< the last samples of the input, as many as the look-ahead
    bool mIsBypassed = false;
    /// For each flag how many samples, up to the look-ahead, have been silent at the end of the history
    std::array<unsigned, 64> mSilentSamples{};
};

} // namespace tessaro
