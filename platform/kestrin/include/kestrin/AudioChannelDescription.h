#pragma once

#include <cstdint>
#include <vector>

#include <kestrin/Export.h>

namespace kestrin {

/// Which loudspeaker a channel feeds. The numbers are stored in projects; those of the low-frequency channel
/// and the surrounds are also the ones by which loudness meters weight channels.
enum class AudioChannelLabel : std::uint32_t
{
    kDiscrete = 0, ///< no loudspeaker position
    kLeft = 1,
    kRight = 2,
    kCenter = 3,
    kLowFrequency = 4,
    kLeftSurround = 5,
    kRightSurround = 6,
    kLeftCenter = 7,
    kRightCenter = 8,
    kCenterSurround = 9,
    kLeftRearSurround = 10,
    kRightRearSurround = 11,
    kTopFrontLeft = 12,
    kTopFrontRight = 13,
    kTopRearLeft = 14,
    kTopRearRight = 15,
    kMono = 16
};

/// One channel of a layout. A layout is a vector of these in the order of the channels; two layouts are equal
/// when they have the same channels in the same order.
///
/// A plain value: trivially copied, nothing throws but the functions that make a layout, which allocate.
/// `[any thread]`
class AudioChannelDescription
{
public:
    constexpr AudioChannelDescription() = default;
    constexpr AudioChannelDescription(AudioChannelLabel inLabel) : mLabel(inLabel) {}

    constexpr AudioChannelLabel GetLabel() const { return mLabel; }

    friend constexpr bool operator==(const AudioChannelDescription&,
                                     const AudioChannelDescription&) = default;

    /// One channel, `kMono`.
    KESTRIN_EXPORT static std::vector<AudioChannelDescription> CreateMonoChannelLayout();

    /// Left, right.
    KESTRIN_EXPORT static std::vector<AudioChannelDescription> CreateStereoChannelLayout();

    /// The order of broadcast files (ITU-R BS.775, SMPTE ST 320): left, right, center, low frequency, left
    /// surround, right surround.
    KESTRIN_EXPORT static std::vector<AudioChannelDescription> CreateBroadcast51ChannelLayout();

    /// The order of older projects, pairs first: left, right, left surround, right surround, center, low
    /// frequency.
    KESTRIN_EXPORT static std::vector<AudioChannelDescription> CreateLegacy51ChannelLayout();

    /// `inChannelCount` channels without positions.
    KESTRIN_EXPORT static std::vector<AudioChannelDescription>
    CreateDiscreteChannelLayout(unsigned inChannelCount);

private:
    AudioChannelLabel mLabel = AudioChannelLabel::kDiscrete;
};

} // namespace kestrin
