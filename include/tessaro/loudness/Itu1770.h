#pragma once

#include <cstdint>
#include <vector>

#include <brisken/filter/SectionPair.h>
#include <ombrel/utility/Flags.h>
#include <tessaro/Export.h>
#include <tessaro/filters/SecondOrderIIRFilter.h>

namespace tessaro {

/// Integrated loudness of a programme, by ITU-R BS.1770: K-weighting, the mean power of blocks of 400 ms that
/// overlap by 75 %, an absolute gate at -70 LKFS and a relative one 10 dB below the mean of what passed it.
///
/// `Init` starts a measurement, and starts it anew when called again; then `Process` rows of any length and
/// ask at any time. The result does not depend on how the stream is split into calls.
///
/// Memory grows by 4 bytes for each 100 ms above the absolute gate, as all blocks count to the end; that is
/// what `Process` allocates, and why it is not for a real-time thread. A NaN or infinity in a channel stays
/// in its filters: no block counts any more, until `Init`. Nor does a block count whose power is beyond a
/// float. One thread at a time.
///
/// Method: the two filters of the Recommendation in closed form, for any sampling rate.
class TESSARO_EXPORT Itu1770
{
public:
    /// The place of a channel, as far as it matters here: surround channels count 1.41 times, the
    /// low-frequency channel does not count at all, every other value counts once.
    enum ChannelLabel : std::uint32_t
    {
        kLeft = 0,
        kRight = 1,
        kCenter = 2,
        kOther = 3,
        kLowFrequency = 4,
        kLeftSurround = 5,
        kRightSurround = 6
    };

    /// What an empty or silent measurement reads, in LKFS: an amplitude of 1e-15
    static constexpr float kFloor = -300.0f;

    /// `inSampleRate` in Hz; one label for each row that `Process` is given. Blocks above
    /// `inMaximumBlockFrames` are worked off in parts. The mask of silent channels stays. [control]
    void Init(unsigned inMaximumBlockFrames, float inSampleRate, const std::vector<ChannelLabel>& inLabels);

    /// Measures `inFrames` samples of each row. Nothing before `Init`.
    void Process(const float* const* inChannels, unsigned inFrames);

    /// Loudness so far in LKFS, `kFloor` when no block has passed the gates
    [[nodiscard]] float GetLKFS() const;

    /// Whether a block has passed the absolute gate, so that `GetLKFS` is a measurement
    [[nodiscard]] bool IsValid() const { return !mBlockPowers.empty(); }

    /// Rows to treat as silent from the next block on: bit n is row n (modulo 64), rows of the low-frequency
    /// label counted in. Such a row is not read, and its filters stand still.
    void SetChannelsZero(const ombrel::utility::Flags<std::uint64_t>& inSilentChannels)
    {
        mSilentChannels = inSilentChannels;
    }

    /// The high shelf that stands for the head, and the high-pass (RLB), at `inSampleRate` Hz. [any thread]
    [[nodiscard]] static SecondOrderIIRCoefficients CalculatePrefilterCoefficients(double inSampleRate);
    [[nodiscard]] static SecondOrderIIRCoefficients CalculateRLBfilterCoefficients(double inSampleRate);

private:
    struct Channel
    {
        std::size_t mRow; ///< among the rows of `Process`
        double mWeight;
        brisken::filter::SectionPairState mFilters;
        std::vector<float> mStore; ///< weighted samples, from the start of the next block on
    };

    void Weigh(const float* const* inChannels, unsigned inOffset, unsigned inFrames);
    void TakeBlocks();
    [[nodiscard]] double GetBlockPower() const;

    std::vector<Channel> mChannels;
    ombrel::utility::Flags<std::uint64_t> mSilentChannels;
    brisken::filter::SectionTaps mTaps[2];
    unsigned mMaximumFrames = 0;
    unsigned mBlockLength = 0;
    unsigned mOverlap = 0;
    unsigned mFilled = 0;
    std::vector<float> mBlockPowers;
    // The rows that are not silent, side by side for the filters
    std::vector<const float*> mInputRows;
    std::vector<float*> mOutputRows;
    std::vector<brisken::filter::SectionPairState> mStates;
};

} // namespace tessaro
