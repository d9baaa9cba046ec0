#include <tessaro/resample/LinearResample.h>

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using namespace testing;

Row Convert(LinearResample& ioResample, const Row& inInput, std::size_t inBlock)
{
    Row output;
    for (std::size_t done = 0; done < inInput.size(); done += inBlock) {
        const auto count = static_cast<int>(std::min(inBlock, inInput.size() - done));
        Row block(static_cast<std::size_t>(ioResample.GetOutputBufferSize(count)));
        int produced = 0;
        {
            const AllocationGuard guard;
            produced = ioResample.Process(inInput.data() + done, block.data(), count);
        }
        EXPECT_LE(produced, static_cast<int>(block.size()));
        output.insert(output.end(), block.begin(), block.begin() + produced);
    }
    return output;
}

/// Sample n is n + 1, so that a sample that lies one before the stream is 0, and an output is its position.
Row MakeRamp(std::size_t inLength)
{
    Row ramp(inLength);
    for (std::size_t i = 0; i < inLength; ++i) {
        ramp[i] = static_cast<float>(i + 1);
    }
    return ramp;
}

TEST(LinearResampleTest, DrawsLinesThroughTheSamplesOneSampleLate)
{
    for (const auto& [in, out] :
         {std::pair{44100.0f, 48000.0f}, {44100.0f, 192000.0f}, {48000.0f, 44100.0f}}) {
        LinearResample resample(in, out);
        const double ratio = static_cast<double>(in) / static_cast<double>(out);
        EXPECT_EQ(resample.GetRatio(), ratio);
        EXPECT_EQ(resample.GetLatency(), 1);
        EXPECT_GE(resample.GetInputBufferSizeForOutput(1000), 1000 * ratio + 2);
        const auto output = Convert(resample, MakeRamp(5000), 5000);
        ASSERT_NEAR(static_cast<double>(output.size()), 5000 / ratio, 2);
        double position = 0.0;
        for (std::size_t i = 0; i < output.size(); ++i) {
            const double stepped = std::floor(position);
            position += ratio;
            const double current = std::floor(position);
            const double partner = ratio < 1 ? current - 1 : stepped;
            ASSERT_NEAR(output[i], partner + 1 + (position - current) * (current - partner), 1e-3) << i;
        }
        // Below a ratio of 1 no step leaves a block.
        resample.Reset();
        if (ratio < 1) {
            EXPECT_EQ(Convert(resample, MakeRamp(5000), 7), output);
        }
    }
}

TEST(LinearResampleTest, TheFirstOutputIsLeftOutOnlyWhenLatencyIsEaten)
{
    LinearResample resample(1.0f, 2.0f);
    EXPECT_TRUE(resample.GetEatLatency());
    EXPECT_EQ(Convert(resample, {8, 16}, 1), (Row{4, 8, 12}));
    EXPECT_EQ(Convert(resample, {24}, 1), (Row{16, 20}));
    resample.Reset();
    resample.SetEatLatency(false);
    resample.SetState(2.0);
    EXPECT_EQ(Convert(resample, {8, 16}, 2), (Row{2, 5, 8, 12}));
}

TEST(LinearResampleTest, LongStepsKeepTheOldPartnerAndAreCutAtTheBlocksEnd)
{
    LinearResample resample(3.0f, 1.0f);
    resample.SetEatLatency(false);
    // Every third sample is current; the line begins at the one before that was current, and its fraction is
    // 0.
    EXPECT_EQ(Convert(resample, MakeRamp(7), 7), (Row{0, 1, 4}));
    // The step from sample 6 led to 9, two samples behind the block: they are not taken off the next one.
    EXPECT_EQ(Convert(resample, {20, 21, 22, 23}, 4), (Row{7, 20}));
    LinearResample half(5.0f, 2.0f);
    half.SetEatLatency(false);
    EXPECT_EQ(Convert(half, MakeRamp(8), 8), (Row{0, 1 + 0.5f * (3 - 1), 3, 6 + 0.5f * (8 - 6)}));
}

TEST(LinearResampleTest, EqualRatesCopyAndCount)
{
    const auto input = MakeNoise(333, 1);
    LinearResample resample(48000.0f, 48000.0f);
    Row output(333);
    double last = 0.0;
    double position = 10.0;
    int index = 10;
    EXPECT_EQ(resample.Process(input.data(), output.data(), 333, last, position, index), 333);
    EXPECT_EQ(output, input);
    EXPECT_EQ(last, input.back());
    EXPECT_EQ(position, 343.0);
    EXPECT_EQ(index, 343);
    EXPECT_EQ(resample.Process(input.data(), output.data(), 0, last, position, index), 0);
}

TEST(LinearResampleTest, RatesChangeTheRatioOnResetOrWhileProcessing)
{
    LinearResample resample;
    EXPECT_EQ(Convert(resample, {1, 2, 3}, 3), (Row{1, 2, 3}));
    resample.SetInputSampleRate(1.0f);
    resample.SetOutputSampleRate(2.0f);
    EXPECT_EQ(resample.GetRatio(), 0.5);
    EXPECT_EQ(Convert(resample, {1, 2, 3}, 3), Row()); // no ratio in force yet
    resample.Reset();
    EXPECT_EQ(Convert(resample, {8, 16}, 2), (Row{4, 8, 12}));
    resample.UpdateSampleRatesWhileProcessing(1.0f, 4.0f);
    EXPECT_EQ(Convert(resample, {24, 32}, 2), (Row{16, 18, 20, 22, 24, 26, 28, 30}));

    // State with the caller is the same stream.
    double last = 0.0;
    double position = 0.0;
    int index = 0;
    LinearResample driver(44100.0f, 48000.0f);
    LinearResample reference(44100.0f, 48000.0f);
    const auto input = MakeNoise(1000, 2);
    const auto expected = Convert(reference, input, 1000);
    Row output(1200);
    int produced = driver.Process(input.data(), output.data(), 400, last, position, index);
    produced += driver.Process(input.data() + 400, output.data() + produced, 600, last, position, index);
    output.resize(static_cast<std::size_t>(produced));
    EXPECT_EQ(output, expected);
    EXPECT_EQ(Convert(driver, input, 1000), expected);
}

} // namespace
} // namespace tessaro
