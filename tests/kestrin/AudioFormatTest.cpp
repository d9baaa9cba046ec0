#include <kestrin/AudioFormat.h>

#include <gtest/gtest.h>

namespace kestrin {
namespace {

TEST(AudioFormatTest, LayoutsHaveTheirChannelsInOrder)
{
    using Label = AudioChannelLabel;
    using Layout = std::vector<AudioChannelDescription>;
    EXPECT_EQ(AudioChannelDescription::CreateMonoChannelLayout(), Layout{Label::kMono});
    EXPECT_EQ(AudioChannelDescription::CreateStereoChannelLayout(), (Layout{Label::kLeft, Label::kRight}));
    EXPECT_EQ(AudioChannelDescription::CreateBroadcast51ChannelLayout(),
              (Layout{Label::kLeft, Label::kRight, Label::kCenter, Label::kLowFrequency, Label::kLeftSurround,
                      Label::kRightSurround}));
    EXPECT_EQ(AudioChannelDescription::CreateLegacy51ChannelLayout(),
              (Layout{Label::kLeft, Label::kRight, Label::kLeftSurround, Label::kRightSurround,
                      Label::kCenter, Label::kLowFrequency}));
    EXPECT_EQ(AudioChannelDescription::CreateDiscreteChannelLayout(3), Layout(3, Label::kDiscrete));
}

TEST(AudioFormatTest, HoldsRateAndChannels)
{
    const AudioFormat format(44100.0f, AudioChannelDescription::CreateBroadcast51ChannelLayout());
    EXPECT_EQ(format.GetChannelCount(), 6u);
    EXPECT_EQ(format.GetSampleRate(), 44100.0f);
    EXPECT_EQ(format.GetFrameRate(), FrameRate(5760000));
    EXPECT_EQ(AudioFormat().GetChannelCount(), 0u);
    EXPECT_FALSE(AudioFormat().GetFrameRate().IsValid());
    EXPECT_NE(format, AudioFormat(44100.0f, AudioChannelDescription::CreateLegacy51ChannelLayout()));
}

} // namespace
} // namespace kestrin
