#pragma once

#include <cstdint>
#include <optional>

#include <ombrel/utility/Flags.h>

namespace host {

class ParameterValues;

/// Bit n set: channel n is silent, and so are the channels n + 64, n + 128 and so on that exist.
using SilentChannels = ombrel::utility::Flags<std::uint64_t>;

struct StreamFormat
{
    int mChannelCount = 0;
    int mSampleRate = 0;
    int mMaxBlock = 0;
};

/// What a linear effect does to a sine, as the processor itself tells it.
struct EffectResponse
{
    double mMagnitude = 1.0;      ///< linear
    std::optional<double> mPhase; ///< radians, for processors that know it
};

/// A processor in a chain, driven as an engine drives it.
///
/// Life cycle: `SetParameters`, `Configure`, then `Process` for block after block; `Reset` between streams.
class Effect
{
public:
    virtual ~Effect() = default;

    /// All values at once, those that were not given with their defaults. They have been checked against
    /// their ranges, and the given ones against half the sampling rate.
    virtual void SetParameters(const ParameterValues& inValues) = 0;

    /// Sizes everything, so that `Process` does not allocate. Throws `std::invalid_argument` where the values
    /// do not go together; what it says becomes the message of the refusal.
    virtual void Configure(const StreamFormat& inFormat) = 0;

    /// Processes one block of at most the configured size. Output rows are never input rows; the row of a
    /// silent input channel is not read. Returns which output channels are silent: their rows need not be
    /// written, all others must be.
    virtual SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                                   SilentChannels inSilent) = 0;

    /// Forgets what was heard, and keeps parameters and format.
    virtual void Reset() = 0;

    /// How late the output is against the input, in samples. A render makes up for it.
    virtual std::int64_t GetLatency() const { return 0; }

    /// The response at a frequency in Hz; nothing for an effect that has no such function.
    virtual std::optional<EffectResponse> GetResponse(double) const { return std::nullopt; }

    /// The lowest gain that the effect has applied since the last call, linear and without make-up; nothing
    /// for an effect that is no dynamics processor. Called between blocks.
    virtual std::optional<float> TakeGainReduction() { return std::nullopt; }
};

} // namespace host
