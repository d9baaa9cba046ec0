#include <algorithm>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/buffering/AudioBufferChannel.h>
#include <tessaro/buffering/AudioBufferShell.h>
#include <tessaro/buffering/AudioSubBuffer.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Mask = AudioBuffer::SilenceMask;

constexpr unsigned kSize = 32;

class AudioBufferViewsTest : public ::testing::Test
{
protected:
    AudioBufferViewsTest()
    {
        Fill();
        mView.Init(2);
    }
    void Fill()
    {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            std::fill_n(mParent[channel], kSize, 7.0f);
        }
    }
    /// Samples of the parent that are not as `Fill` left them.
    long CountZeros(std::size_t inChannel)
    {
        return std::count(mParent[inChannel], mParent[inChannel] + kSize, 0.0f);
    }

    AudioBuffer mParent{2, kSize};
    AudioSubBuffer mView;
};

class OpenSubBuffer : public AudioSubBuffer
{
public:
    using AudioBuffer::GetAlignment;
    using AudioBuffer::IsAligned;
};

TEST_F(AudioBufferViewsTest, SubBufferCoversTheParentFromItsOffset)
{
    testing::AllocationGuard guard;
    mView.Assign(mParent, 10);
    EXPECT_EQ(mView[1], mParent[1] + 10);
    EXPECT_EQ(mView.GetBufferSize(), kSize - 10);
    EXPECT_EQ(mView.GetCapacity(), mParent.GetCapacity() - 10);
    mView.SetUseSize(4);
    EXPECT_EQ(mView.GetBufferSize(), 4u);
    mView.SetUseSize(kSize);
    EXPECT_EQ(mView.GetBufferSize(), kSize - 10);
    mView.ShiftOffset(5);
    EXPECT_EQ(mView[0], mParent[0] + 15);
    EXPECT_EQ(mView.GetBufferSize(), kSize - 15);
    mView.SetUseSize(2);
    mView.ShiftOffset(5);
    EXPECT_EQ(mView.GetBufferSize(), 0u);
    EXPECT_EQ(mView.GetCapacity(), kSize - 20);
    mView.ShiftOffset(kSize - 20);
    EXPECT_EQ(mView.GetCapacity(), 0u);

    mParent.SetUseSize(16);
    mView.Assign(mParent, 20);
    EXPECT_EQ(mView.GetBufferSize(), 0u);
    EXPECT_EQ(mView.GetCapacity(), kSize - 20);
    mView.Assign(mParent, kSize);
    EXPECT_EQ(mView.GetCapacity(), 0u);
}

TEST_F(AudioBufferViewsTest, SubBufferIgnoresAParentThatDoesNotFit)
{
    AudioSubBuffer without;
    without.Assign(mParent, 0);
    EXPECT_EQ(without.GetChannelCount(), 0u);
    AudioSubBuffer wide;
    wide.Init(3);
    wide.Assign(mParent, 0);
    EXPECT_EQ(wide.GetBufferSize(), 0u);
    EXPECT_EQ(wide[0], nullptr);
    const AudioBuffer copy(wide);
    EXPECT_EQ(copy.GetChannelCount(), 3u);
}

TEST_F(AudioBufferViewsTest, SubBufferCountsSizesInFoursAtAssignAndInSixteensLater)
{
    OpenSubBuffer view;
    view.Init(2);
    const auto expect = [&view](int inAlignment, bool inIsAligned) {
        EXPECT_EQ(view.GetAlignment(), inAlignment);
        EXPECT_EQ(view.IsAligned(), inIsAligned);
    };
    view.Assign(mParent, 4); // 28 samples
    expect(4, true);
    view.SetUseSize(28);
    expect(1, false);
    view.SetUseSize(16);
    expect(4, true);
    view.Assign(mParent, 5);
    expect(1, false);
    view.Assign(mParent, 0);
    mParent.SetUseSize(30);
    view.Assign(mParent, 0);
    expect(4, false);
    mParent.SetUseSize(kSize);
    view.Assign(mParent, 0);
    view.ShiftOffset(8); // 24 left
    expect(1, false);
    view.ShiftOffset(8);
    expect(4, true);

    AudioBufferShell shell;
    shell.Init(2);
    shell.Assign(mParent.GetFloatBuffers(), kSize);
    view.Assign(shell, 0);
    expect(-1, false);
    view.SetUseSize(16);
    expect(-1, false);
    const AudioBuffer copy(view); // rows without alignment, but apart and behind their table
    EXPECT_GE(copy[0], reinterpret_cast<const float*>(copy.GetFloatBuffers() + 2));
    EXPECT_GE(copy[1], copy[0] + 16);
    EXPECT_EQ(copy[1][15], 7.0f);
}

TEST_F(AudioBufferViewsTest, PartialViewLeavesTheParentsFlagsWhenItFallsSilent)
{
    mView.Assign(mParent, kSize / 2);
    mView.Zero();
    EXPECT_TRUE(mView.IsZero());
    EXPECT_FALSE(mParent.IsChannelZero(0));
    EXPECT_EQ(CountZeros(0), 0);

    mView.Assign(mParent, 0);
    mView.ZeroChannel(1, 3);
    EXPECT_TRUE(mParent.IsChannelZero(1));
    EXPECT_FALSE(mParent.IsChannelZero(0));
    EXPECT_EQ(CountZeros(1), 0);
}

TEST_F(AudioBufferViewsTest, ClearingAPartialViewTurnsTheRestOfASilentParentToZeros)
{
    mParent.MarkChannelsZero(Mask::All());
    mView.Assign(mParent, 8);
    EXPECT_TRUE(mView.IsZero());
    mView.SetUseSize(4);
    mView.ClearChannelZero(1);
    EXPECT_FALSE(mView.IsChannelZero(1));
    EXPECT_FALSE(mParent.IsChannelZero(1));
    EXPECT_TRUE(mParent.IsChannelZero(0));
    EXPECT_EQ(CountZeros(1), kSize - 4);
    EXPECT_EQ(mView[1][0], 7.0f);
    EXPECT_EQ(mView[1][3], 7.0f);
    EXPECT_EQ(CountZeros(0), 0);
    mView.ClearZeroFlags();
    EXPECT_FALSE(mParent.IsChannelZero(0));
}

TEST_F(AudioBufferViewsTest, CopyThroughAViewReachesTheParent)
{
    AudioBuffer source(2, 4);
    std::fill_n(source[0], 4, 3.0f);
    source.MarkChannelZero(1);
    mParent.MarkChannelsZero(Mask::All());
    mView.Assign(mParent, 8);
    mView.SetUseSize(4);
    mView.CopyFrom(source);
    EXPECT_FALSE(mParent.IsChannelZero(0));
    EXPECT_EQ(mParent[0][8], 3.0f);
    EXPECT_EQ(mParent[0][11], 3.0f);
    EXPECT_EQ(CountZeros(0), kSize - 4);
    EXPECT_TRUE(mParent.IsChannelZero(1));
}

TEST_F(AudioBufferViewsTest, ViewOfAViewClearsThroughBoth)
{
    mParent.MarkChannelsZero(Mask::All());
    mView.Assign(mParent, 8);
    mView.SetUseSize(16);
    AudioSubBuffer inner;
    inner.Init(1);
    inner.Assign(mView, 4);
    inner.SetUseSize(2);
    EXPECT_TRUE(inner.IsZero());
    inner.ClearChannelZero(0);
    EXPECT_FALSE(mView.IsChannelZero(0));
    EXPECT_FALSE(mParent.IsChannelZero(0));
    EXPECT_EQ(CountZeros(0), kSize - 2);
    EXPECT_EQ(mParent[0][12], 7.0f);
}

TEST_F(AudioBufferViewsTest, SubBufferTakesMasksAsTheyAre)
{
    mView.Assign(mParent, 4);
    mView.MarkChannelsZero(Mask::Bit(0));
    mView.MarkChannelsZero(Mask::Bit(1));
    EXPECT_EQ(mView.GetChannelZeroMask(), Mask::Bit(1)); // assigned, not added
    EXPECT_EQ(mParent.GetChannelZeroMask(), ~Mask::Below(2));

    mView.ClearChannelsZero(Mask::Bit(1));
    EXPECT_TRUE(mView.IsChannelZero(0));
    EXPECT_FALSE(mView.IsChannelZero(1));
    mView.ClearChannelsZero(Mask(0));
    EXPECT_EQ(mView.GetChannelZeroMask(), Mask::All());
    EXPECT_FALSE(mParent.IsChannelZero(0));

    mView.Assign(mParent, 0); // of the parent's size: marks go there, and are added
    mParent.MarkChannelZero(0);
    mView.MarkChannelsZero(Mask::Bit(1));
    EXPECT_EQ(mView.GetChannelZeroMask(), Mask::Bit(1));
    EXPECT_TRUE(mParent.IsZero());
}

TEST_F(AudioBufferViewsTest, ChannelViewAnswersForItsOneChannel)
{
    AudioBufferChannel view;
    EXPECT_TRUE(view.IsZero());
    EXPECT_EQ(view.GetChannelCount(), 1u);
    EXPECT_EQ(view[0], nullptr);
    EXPECT_EQ(view.GetChannelZeroMask(), Mask::All());

    testing::AllocationGuard guard;
    view.Assign(mParent, 1);
    EXPECT_EQ(view[0], mParent[1]);
    EXPECT_EQ(view.GetBufferSize(), kSize);
    mParent.MarkChannelZero(0);
    EXPECT_FALSE(view.IsChannelZero(0));
    EXPECT_FALSE(view.IsChannelZero(63));
    view.MarkChannelZero(0);
    EXPECT_TRUE(mParent.IsChannelZero(1));
    EXPECT_TRUE(view.IsZero());
    view.ClearChannelZero(5);
    EXPECT_FALSE(mParent.IsChannelZero(1));
    EXPECT_EQ(view.GetChannelZeroMask(), mParent.GetChannelZeroMask()); // the parent's whole word

    view.ClearZeroFlags();
    EXPECT_TRUE(mParent.IsChannelZero(0));
    EXPECT_FALSE(view.GetChannelZeroMask().GetBit(0));
    view.MarkChannelsZero(Mask::Bit(1)); // bits are the parent's channels
    EXPECT_TRUE(mParent.IsZero());
    view.ClearChannelsZero(Mask::All());
    EXPECT_EQ(mParent.GetChannelZeroMask(), ~Mask::Below(2));

    view.MarkChannelsZero(Mask::All()); // speaks of all channels of the parent
    EXPECT_TRUE(mParent.IsZero());
    mParent.ClearZeroFlags();

    const AudioBufferChannel copy(view);
    EXPECT_EQ(copy[0], mParent[1]);
    EXPECT_NE(copy.GetFloatBuffers(), view.GetFloatBuffers());
    view.SetUseSize(2 * kSize);
    EXPECT_EQ(view.GetBufferSize(), kSize);
    view.Assign(mParent, 2);
    EXPECT_EQ(view.GetChannelCount(), 0u);
    EXPECT_EQ(view.GetFloatBuffers(), nullptr);
    EXPECT_TRUE(view.IsZero());
    EXPECT_EQ(view.GetChannelZeroMask(), Mask::All());
}

TEST_F(AudioBufferViewsTest, APlainCopyOfAChannelViewTakesTheParentsWholeWord)
{
    AudioBufferChannel view;
    view.Assign(mParent, 1);
    mParent.MarkChannelZero(0);
    view.MarkChannelsZero(Mask(0)); // marks nothing, takes the word
    const AudioBuffer copy(view);
    EXPECT_EQ(copy[0][0], 7.0f);
    EXPECT_EQ(copy.GetChannelZeroMask(), mParent.GetChannelZeroMask());
    EXPECT_TRUE(copy.IsZero()); // bit 0 speaks of the parent's channel 0
}

TEST_F(AudioBufferViewsTest, OperationsOnAChannelViewKeepToItsChannel)
{
    AudioBufferChannel view;
    view.Assign(mParent, 1);
    view.Zero();
    EXPECT_TRUE(mParent.IsChannelZero(1));
    EXPECT_FALSE(mParent.IsChannelZero(0));
    EXPECT_EQ(CountZeros(1), kSize);
    view.CopyChannel(mParent, 0, 0);
    EXPECT_FALSE(mParent.IsChannelZero(1));
    EXPECT_EQ(CountZeros(1), 0);
}

TEST_F(AudioBufferViewsTest, ShellIsNeverSilentAfterAssignAndOwnsNoSamples)
{
    AudioBufferShell shell;
    shell.Init(2);
    EXPECT_EQ(shell.GetBufferSize(), 0u);
    EXPECT_EQ(shell[0], nullptr);
    testing::AllocationGuard guard;
    shell.MarkChannelsZero(Mask::All());
    shell.Assign(mParent.GetFloatBuffers(), 20);
    EXPECT_EQ(shell.GetChannelZeroMask(), ~Mask::Below(2));
    EXPECT_EQ(shell[1], mParent[1]);
    shell.SetUseSize(kSize);
    EXPECT_EQ(shell.GetBufferSize(), 20u);
    shell.Zero();
    EXPECT_EQ(CountZeros(0), 20);
}

} // namespace

} // namespace tessaro
