#include <kestrin/AudioChannelDescription.h>

namespace kestrin {

using Label = AudioChannelLabel;

std::vector<AudioChannelDescription> AudioChannelDescription::CreateMonoChannelLayout()
{
    return {Label::kMono};
}

std::vector<AudioChannelDescription> AudioChannelDescription::CreateStereoChannelLayout()
{
    return {Label::kLeft, Label::kRight};
}

std::vector<AudioChannelDescription> AudioChannelDescription::CreateBroadcast51ChannelLayout()
{
    return {Label::kLeft,         Label::kRight,        Label::kCenter,
            Label::kLowFrequency, Label::kLeftSurround, Label::kRightSurround};
}

std::vector<AudioChannelDescription> AudioChannelDescription::CreateLegacy51ChannelLayout()
{
    return {Label::kLeft,          Label::kRight,  Label::kLeftSurround,
            Label::kRightSurround, Label::kCenter, Label::kLowFrequency};
}

std::vector<AudioChannelDescription>
AudioChannelDescription::CreateDiscreteChannelLayout(unsigned inChannelCount)
{
    return std::vector<AudioChannelDescription>(inChannelCount);
}

} // namespace kestrin
