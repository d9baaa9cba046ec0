#include "utility/LookAheadStreamer.h"

#include <vector>

#include <gtest/gtest.h>

#include "support/PeakAhead.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using SilenceFlags = ombrel::utility::Flags<std::uint64_t>;
using testing::Row;

/// One channel through the streamer, in place.
Row Stream(LookAheadStreamer& ioStreamer, Row inSamples, bool inIsSilent = false)
{
    float* rows[] = {inSamples.data()};
    ioStreamer.Process(rows, static_cast<int>(inSamples.size()), rows, SilenceFlags(inIsSilent ? 1u : 0u));
    return inSamples;
}

TEST(LookAheadStreamerTest, WrappedProcessorSeesItsLookAhead)
{
    testing::PeakAhead peak(2, 10);
    LookAheadStreamer streamer(peak);
    streamer.SetMode(1, 48000, 4);
    EXPECT_EQ(peak.GetMaxBlockSize(), 4);
    EXPECT_EQ(streamer.GetSystemDelay(), 12);
    // Each sample is divided by one more than the largest of itself and the two behind it.
    EXPECT_EQ(Stream(streamer, {1, 1, 3, 1}), (Row{0, 0, 0.25f, 0.25f}));
    EXPECT_EQ(Stream(streamer, {1}), (Row{0.75f})); // shorter than the look-ahead
    EXPECT_EQ(Stream(streamer, {7, 1, 1, 1, 1, 1}), (Row{0.125f, 0.125f, 0.875f, 0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(streamer.GetMaxBlockSize(), 6); // grown, and nothing lost
}

TEST(LookAheadStreamerTest, SilenceIsHandedOnOnceTheLookAheadHasRunOut)
{
    testing::PeakAhead peak(3);
    LookAheadStreamer streamer(peak);
    streamer.SetMode(1, 48000, 8);
    EXPECT_EQ(Stream(streamer, {9, 9}, true), (Row{0, 0}));
    EXPECT_EQ(peak.GetSilentChannels(), SilenceFlags(1u)); // the history starts silent
    EXPECT_EQ(Stream(streamer, {1, 1, 1}), (Row{0, 0, 0}));
    EXPECT_EQ(Stream(streamer, {9, 9}, true), (Row{0.5f, 0.5f}));
    EXPECT_EQ(Stream(streamer, {9}, true), (Row{0.5f}));
    EXPECT_EQ(peak.GetSilentChannels(), SilenceFlags());
    EXPECT_EQ(Stream(streamer, {9}, true), (Row{0}));
    EXPECT_EQ(peak.GetSilentChannels(), SilenceFlags(1u));
    Stream(streamer, {1, 1});
    streamer.Reset();
    EXPECT_EQ(Stream(streamer, {9, 9, 9}, true), (Row{0, 0, 0}));
    EXPECT_EQ(peak.GetSilentChannels(), SilenceFlags(1u));
}

TEST(LookAheadStreamerTest, BypassTouchesNoOutputAndKeepsTheHistoryFresh)
{
    testing::PeakAhead peak(2);
    LookAheadStreamer streamer(peak);
    streamer.SetMode(1, 48000, 4);
    EXPECT_FALSE(streamer.GetBypass());
    streamer.SetBypass(true);
    EXPECT_TRUE(streamer.GetBypass());
    EXPECT_EQ(Stream(streamer, {5, 1, 1}), (Row{5, 1, 1}));
    streamer.SetBypass(false);
    EXPECT_EQ(Stream(streamer, {1, 1}), (Row{0.5f, 0.5f}));
}

TEST(LookAheadStreamerTest, TakesOverAChangedLookAhead)
{
    testing::PeakAhead peak(1);
    LookAheadStreamer streamer(peak);
    streamer.SetMode(1, 48000, 4);
    Stream(streamer, {1});
    peak.SetLookAhead(3);
    streamer.TakeOverLookAhead();
    EXPECT_EQ(streamer.GetSystemDelay(), 3);
    // The history goes on in front of what the new one adds.
    EXPECT_EQ(Stream(streamer, {1, 1}), (Row{0.5f, 0}));
    EXPECT_EQ(Stream(streamer, {9, 9, 9, 9}, true), (Row{0, 0.5f, 0.5f, 0}));
    Stream(streamer, {1, 9, 9});
    Stream(streamer, {9, 9}, true); // the history is 9, 0, 0
    peak.SetLookAhead(1);
    streamer.TakeOverLookAhead(); // and 9 now
    EXPECT_EQ(streamer.GetSystemDelay(), 1);
    EXPECT_EQ(Stream(streamer, {9}, true), (Row{0.9f}));
    EXPECT_EQ(Stream(streamer, {9}, true), (Row{0}));
    EXPECT_EQ(peak.GetSilentChannels(), SilenceFlags(1u));
}

} // namespace

} // namespace tessaro
