#include <tessaro/loudness/LoudnessStandards.h>
#include <tessaro/loudness/OvershootCounter.h>

#include <cmath>
#include <limits>
#include <thread>

#include <gtest/gtest.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {
namespace {

TEST(LoudnessStandardsTest, TheTableIsGivenForItsTwoStandardsAlone)
{
    using namespace loudness;
    struct Standard
    {
        int mStandard;
        double mTarget, mTolerance, mTruePeak;
        int mUnit;
    };
    for (const auto& s : {Standard{0, -24, 2, -2, 1}, Standard{1, -23, 0.5, -1, 0}}) {
        double target = 0, tolerance = 0, level = 0;
        EXPECT_TRUE(GetTargetLoudnessForLoudnessStandard(s.mStandard, target));
        EXPECT_TRUE(GetLoudnessToleranceForLoudnessStandard(s.mStandard, tolerance));
        EXPECT_TRUE(GetMaxTruePeakLevelForLoudnessStandard(s.mStandard, level));
        EXPECT_EQ(target, s.mTarget);
        EXPECT_EQ(tolerance, s.mTolerance);
        EXPECT_EQ(level, s.mTruePeak);
        EXPECT_EQ(GetUnitForLoudnessStandard(s.mStandard), s.mUnit);
        EXPECT_FALSE(AreCustomLoudnessSettings(s.mStandard, tolerance, level));
        EXPECT_TRUE(AreCustomLoudnessSettings(s.mStandard, tolerance + 0.1, level));
        EXPECT_TRUE(AreCustomLoudnessSettings(s.mStandard, tolerance, level - 0.1));
    }
    for (const int other : {-1, 2}) {
        double value = 7;
        EXPECT_FALSE(GetTargetLoudnessForLoudnessStandard(other, value));
        EXPECT_FALSE(GetLoudnessToleranceForLoudnessStandard(other, value));
        EXPECT_FALSE(GetMaxTruePeakLevelForLoudnessStandard(other, value));
        EXPECT_EQ(value, 7);
        EXPECT_EQ(GetUnitForLoudnessStandard(other), 1);
        EXPECT_FALSE(AreCustomLoudnessSettings(other, 99, 99));
    }
    EXPECT_EQ(GetLoudnessUnitString(1, true), u"LKFS");
    EXPECT_EQ(GetLoudnessUnitString(0, true), u"LUFS");
    EXPECT_EQ(GetLoudnessUnitString(1, false), u"LK");
    EXPECT_EQ(GetLoudnessUnitString(2, false), u"LU");
}

using Counts = std::map<unsigned, unsigned>;

TEST(OvershootCounterTest, ABlockCountsForTheHighestThresholdThatItPasses)
{
    dsp::OvershootCounter counter({0, 6, 3});
    const float atZero = 1.0f;
    counter.Process(&atZero, 1); // at the threshold is not above it
    const float rows[][2] = {{0.1f, -1.5f}, {1.2f, 0.0f}};
    const float* const pointers[] = {rows[0], rows[1]};
    counter.Process(pointers, 2, 2); // 3.5 dB
    counter.Process(pointers, 1, 1);
    counter.Process(pointers + 1, 1, 2); // 1.6 dB
    const float loud[] = {std::numeric_limits<float>::quiet_NaN(), 100.0f};
    counter.Process(loud, 2);
    counter.Process(pointers, 0, 2);
    EXPECT_EQ(counter.GetBuckets(), (Counts{{0, 1}, {3, 1}, {6, 1}}));
    EXPECT_EQ(counter.GetAndResetBuckets(), (Counts{{0, 1}, {3, 1}, {6, 1}}));
    EXPECT_EQ(counter.GetBuckets(), (Counts{{0, 0}, {3, 0}, {6, 0}}));
    counter.Process(loud, 2);
    counter.Reset();
    EXPECT_EQ(counter.GetBuckets(), (Counts{{0, 0}, {3, 0}, {6, 0}}));
    EXPECT_TRUE(dsp::OvershootCounter({}).GetBuckets().empty());
}

TEST(OvershootCounterTest, SilentChannelsOfABufferDoNotCount)
{
    AudioBuffer buffer(2, 4);
    buffer.ZeroBuffers();
    buffer[0][1] = 2.0f;
    buffer[1][2] = 1.1f;
    buffer.ClearZeroFlags();
    dsp::OvershootCounter counter({0, 3});
    counter.Process(buffer);
    EXPECT_EQ(counter.GetBuckets(), (Counts{{0, 0}, {3, 1}}));
    buffer.SetChannelZero(0, true); // says that it is silent, whatever its memory holds
    counter.Process(buffer);
    EXPECT_EQ(counter.GetBuckets(), (Counts{{0, 1}, {3, 1}}));
}

TEST(OvershootCounterTest, ReadingWhileProcessingLosesNoBlock)
{
    dsp::OvershootCounter counter({0});
    constexpr unsigned kBlocks = 200000;
    std::thread audio([&counter] {
        const float loud = 2.0f;
        for (unsigned i = 0; i < kBlocks; ++i) {
            counter.Process(&loud, 1);
        }
    });
    unsigned seen = 0;
    for (int i = 0; i < 1000; ++i) {
        seen += counter.GetAndResetBuckets()[0];
    }
    audio.join();
    EXPECT_EQ(seen + counter.GetBuckets()[0], kBlocks);
}

} // namespace
} // namespace tessaro
