#pragma once

#include <cstddef>
#include <vector>

#include <tessaro/Export.h>
#include <tessaro/waveform/WaveformChannelScaleFactor.h>

namespace tessaro::waveform {

/// The gain that waveform data of several channels is to be drawn with: one factor for each channel, or a
/// single one for all.
///
/// Moved, not copied. One thread at a time; not for real-time threads. Throws when memory runs out.
class TESSARO_EXPORT WaveformScaleFactor
{
public:
    /// A single factor for all channels
    explicit WaveformScaleFactor(WaveformChannelScaleFactor&& ioFactor);
    /// A factor for each channel. Factors that all change nothing become a single one; no factors at all
    /// change nothing, either.
    explicit WaveformScaleFactor(std::vector<WaveformChannelScaleFactor>&& ioFactors);
    WaveformScaleFactor(WaveformScaleFactor&&) noexcept;
    WaveformScaleFactor& operator=(WaveformScaleFactor&&) noexcept;
    ~WaveformScaleFactor();

    /// How many factors there are: 1 for all channels, 0 for none
    [[nodiscard]] std::size_t GetNumChannels() const { return mChannelScaleFactors.size(); }
    /// The factor of a channel; the first one for a channel that has none of its own, and one that changes
    /// nothing where there are none.
    [[nodiscard]] const WaveformChannelScaleFactor& GetChannelScaleFactor(std::size_t inChannel) const;

    /// Combines the factors channel by channel. A single one on one side counts for each channel of the
    /// other, and on a quotient it is then always the divisor, whichever side it stands on. Together with no
    /// factors at all a single one stays as it is.
    ///
    /// Any other difference in number throws `ombrel_exception`, and nothing changes.
    WaveformScaleFactor& operator*=(WaveformScaleFactor&& ioOther);
    WaveformScaleFactor& operator/=(WaveformScaleFactor&& ioOther);

private:
    void MulDiv(WaveformScaleFactor&& ioOther, OperatorType inOperator);
    void MulDivBySingle(const WaveformChannelScaleFactor& inFactor, OperatorType inOperator);

    std::vector<WaveformChannelScaleFactor> mChannelScaleFactors;
};

} // namespace tessaro::waveform
