#pragma once

#include <memory>

#include <tessaro/Export.h>

namespace tessaro {

/// Makes the gain curve of a look-ahead limiter from its level curve: given the level over the threshold in
/// dB, tells by how many dB to reduce, smoothly, in time for each peak, and with a release that depends on
/// the program.
///
/// How the curve comes about:
///  1. each peak is held for the look-ahead before and after it;
///  2. a slow exponential release follows the held curve;
///  3. the activity of the held curve, smoothed over the long window, decides how much of the slow release
///     counts: while peaks come densely the reduction stays down between them, after a single one it ends
///     soon;
///  4. a raised cosine as long as the hold smooths the result. A held peak is as long as the smoother, so the
///     peak's own reduction is still reached in full, and reached on time;
///  5. with the double curve a second one with a fifth of the look-ahead is blended in as far as the second
///     input asks for it.
///
/// Life cycle: `StartNewStream`, `ConstrainLatency` if wanted, `SetMode`, then `Process`. Each setter starts
/// anew: it clears all history. Until rate and mode are set the envelope copies its input.
///
/// Latency is `GetLatency`: the output at a sample is the reduction for the input that many samples ago.
/// With `ConstrainLatency` it stays the same for all modes within the limits, and setters do not allocate
/// then. `Process` and `Reset` are [real-time]. Infinity and NaN in the input are gone after `Reset`. One
/// thread at a time. A copy has a state of its own.
class TESSARO_EXPORT LimEnvelope
{
public:
    LimEnvelope();
    LimEnvelope(const LimEnvelope& inOther);
    LimEnvelope(LimEnvelope&&) noexcept;
    LimEnvelope& operator=(const LimEnvelope& inOther);
    LimEnvelope& operator=(LimEnvelope&&) noexcept;
    virtual ~LimEnvelope();

    /// Rate in Hz; the block length, from 1, is that in which `Process` works: longer blocks are cut.
    /// [control]
    void StartNewStream(float inSampleRate, int inMaxBlock);

    /// Look-ahead, time constant of the slow release and long window, all in seconds. Look-ahead and long
    /// window are cut to their limits, 10 and 100 s unless `ConstrainLatency` says less. A look-ahead below 0
    /// counts as not set; a release of 0 or below has no slow release; a long window of 0 or below turns step
    /// 3 off. [control]
    void SetMode(float inLookAhead, float inRelease, float inLongWindow);

    /// How readily the slow release counts, from 0, never, over 1 to any larger figure; 0.5 in the beginning.
    /// The reduction falls behind the level's own changes from 0.3 on. [control]
    void SetCharacter(float inCharacter);

    /// Off in the beginning. [control]
    void EnableDoubleCurve(bool inEnable);

    /// Limits look-ahead and long window, in seconds, those that are set too, and makes the latency that of
    /// the limits from now on. [control]
    void ConstrainLatency(float inLookAheadLimit, float inLongWindowLimit);

    /// Samples
    [[nodiscard]] int GetLatency() const;

    /// Writes the reduction in dB, from 0 on, for `inCount` more levels over the threshold in dB, from 0 on.
    /// The second input, from 0 to 1, is the share of the fast curve; it belongs to the same samples, and may
    /// be null without the double curve. The output row may not overlap the others.
    void Process(const float* inInput, float* outOutput, int inCount, const float* inSecondInput);

    /// Clears all history. [real-time]
    void Reset();

private:
    struct Stages;

    void Init();

    std::unique_ptr<Stages> mStages;
};

} // namespace tessaro
