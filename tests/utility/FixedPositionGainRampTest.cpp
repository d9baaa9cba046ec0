#include <tessaro/utility/FixedPositionGainRamp.h>

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/buffering/AudioBuffer.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using kestrin::FrameRate;
using kestrin::TickTime;

constexpr FrameRate kRate(5292000);
constexpr std::int64_t kRampFrame = 1000;
constexpr float kSpeed = 0.01f; // 480 samples from 0 to 1

TickTime At(std::int64_t inFrame)
{
    return TickTime(inFrame, kRate);
}

/// The gain of the ramp on a frame, in closed form.
float GainOn(std::int64_t inFrame, float inInitial, float inTarget)
{
    if (inFrame < kRampFrame) {
        return inInitial;
    }
    const float moved = static_cast<float>(inFrame - kRampFrame + 1) / 480.0f;
    return inTarget < inInitial ? std::max(inInitial - moved, inTarget)
                                : std::min(inInitial + moved, inTarget);
}

class FixedPositionGainRampTest : public ::testing::Test
{
protected:
    void ExpectBlock(FixedPositionGainRamp& ioRamp, std::int64_t inFrame, unsigned inCount, float inInitial,
                     float inTarget)
    {
        AudioBuffer buffer(2, inCount);
        std::fill_n(buffer[0], inCount, 1.0f);
        std::fill_n(buffer[1], inCount, 2.0f);
        {
            testing::AllocationGuard guard;
            ioRamp.Process(At(inFrame), buffer);
        }
        for (unsigned i = 0; i < inCount; ++i) {
            const float gain = GainOn(inFrame + i, inInitial, inTarget);
            ASSERT_NEAR(buffer[0][i], gain, 2e-5f) << inFrame + i;
            ASSERT_NEAR(buffer[1][i], 2.0f * gain, 4e-5f) << inFrame + i;
        }
    }
};

TEST_F(FixedPositionGainRampTest, RampStandsAtItsPlaceForAnyBlocksAndSeeks)
{
    std::mt19937 random(5);
    for (const auto& [initial, target] : {std::pair(0.0f, 1.0f), std::pair(1.0f, 0.25f)}) {
        FixedPositionGainRamp ramp(kRate, At(kRampFrame), initial, target, kSpeed);
        std::int64_t frame = 0;
        for (int block = 0; block < 300; ++block) {
            if (random() % 8 == 0) {
                frame = static_cast<std::int64_t>(random() % 2500) - 300;
            }
            const auto count = static_cast<unsigned>(1 + random() % 200);
            ASSERT_NO_FATAL_FAILURE(ExpectBlock(ramp, frame, count, initial, target));
            frame += count;
        }
        ExpectBlock(ramp, kRampFrame - 1, 2, initial, target);
        ExpectBlock(ramp, kRampFrame, 3, initial, target);
    }
}

TEST_F(FixedPositionGainRampTest, BlockBehindASplitOneArrivesAsASeekUnlessItLiesTwiceAsFar)
{
    FixedPositionGainRamp ramp(kRate, At(kRampFrame), 0.0f, 1.0f, kSpeed);
    ExpectBlock(ramp, kRampFrame - 50, 100, 0.0f, 1.0f);
    // The expected position is now a block too far on: a block there does not count as a seek, so the ramp
    // goes on from where it was.
    AudioBuffer buffer(1, 1);
    buffer[0][0] = 1.0f;
    ramp.Process(At(kRampFrame + 150), buffer);
    EXPECT_NEAR(buffer[0][0], GainOn(kRampFrame + 50, 0.0f, 1.0f), 1e-5f);
}

TEST_F(FixedPositionGainRampTest, SilentBlocksKeepTheRampInPlaceAndSilenceIsFlagged)
{
    FixedPositionGainRamp ramp(kRate, At(kRampFrame), 1.0f, 0.0f, kSpeed);
    AudioBuffer buffer(1, 400);
    buffer.Zero();
    ramp.Process(At(kRampFrame - 200), buffer);
    ExpectBlock(ramp, kRampFrame + 200, 280, 1.0f, 0.0f);
    buffer.ClearZeroFlags();
    ramp.Process(At(kRampFrame + 480), buffer);
    EXPECT_TRUE(buffer.IsZero());
}

TEST_F(FixedPositionGainRampTest, PositionsOffTheSampleGridAndDefaultsWork)
{
    FixedPositionGainRamp ramp(kRate, At(kRampFrame) + TickTime(5), 0.0f, 1.0f, kSpeed);
    ExpectBlock(ramp, kRampFrame, 10, 0.0f, 1.0f); // the sample in which the position lies
    FixedPositionGainRamp unity;
    AudioBuffer buffer(1, 4);
    std::fill_n(buffer[0], 4, 3.0f);
    unity.Process(TickTime(), buffer);
    EXPECT_EQ(buffer[0][3], 3.0f);
    FixedPositionGainRamp jump(FrameRate(), TickTime(), 0.0f, 0.5f, kSpeed);
    jump.Process(TickTime(1), buffer);
    EXPECT_EQ(buffer[0][0], 1.5f);
}

} // namespace

} // namespace tessaro
