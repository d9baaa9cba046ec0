#include <tessaro/resample/ResampleInt.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::PlanarRows;
using testing::Row;

struct Options
{
    int mUp;
    int mDown;
    int mTaps;
    float mBeta;
};

constexpr Options kOptions[] = {{9, 1, 144, 5.0f}, {5, 1, 64, 5.0f}, {1, 3, 60, 8.0f},
                                {3, 2, 49, 6.0f},  {2, 3, 30, 4.0f}, {1, 1, 16, 5.0f}};

std::vector<double> DesignPlainly(const Options& inOptions)
{
    std::vector<double> taps(static_cast<std::size_t>(inOptions.mTaps), 0.0);
    const double center = (inOptions.mTaps - 2) / 2.0;
    const double spacing = std::max(inOptions.mUp, inOptions.mDown);
    double sum = 0.0;
    for (int i = 0; i < inOptions.mTaps - 1; ++i) {
        const double x = (i - center) * std::numbers::pi / spacing;
        const double u = (i - center) / center;
        const double window = std::cyl_bessel_i(0.0, inOptions.mBeta * std::sqrt(std::max(0.0, 1 - u * u)));
        sum += taps[static_cast<std::size_t>(i)] = (x == 0.0 ? 1.0 : std::sin(x) / x) * window;
    }
    for (double& tap : taps) {
        tap *= inOptions.mUp / sum;
    }
    return taps;
}

/// Zeros between the inputs, all taps over all of it, and one result of `mDown` kept.
Row ConvertPlainly(const Options& inOptions, const Row& inRow)
{
    const auto taps = DesignPlainly(inOptions);
    std::vector<double> stuffed(inRow.size() * static_cast<std::size_t>(inOptions.mUp), 0.0);
    for (std::size_t i = 0; i < inRow.size(); ++i) {
        stuffed[i * static_cast<std::size_t>(inOptions.mUp)] = inRow[i];
    }
    Row output;
    for (std::size_t p = 0; p < stuffed.size(); p += static_cast<std::size_t>(inOptions.mDown)) {
        double sum = 0.0;
        for (std::size_t k = 0; k < std::min(taps.size(), p + 1); ++k) {
            sum += taps[k] * stuffed[p - k];
        }
        output.push_back(static_cast<float>(sum));
    }
    return output;
}

void Configure(ResampleInt& ioResampler, const Options& inOptions, int inChannels)
{
    ioResampler.SetOptions(inOptions.mUp, inOptions.mDown, inOptions.mTaps, inOptions.mBeta);
    ioResampler.SetMode(inChannels, 48000, 512);
}

/// Largest difference of two rows of one length.
float Difference(const Row& inA, const Row& inB)
{
    EXPECT_EQ(inA.size(), inB.size());
    float largest = 0.0f;
    for (std::size_t i = 0; i < std::min(inA.size(), inB.size()); ++i) {
        largest = std::max(largest, std::abs(inA[i] - inB[i]));
    }
    return largest;
}

} // namespace

TEST(ResampleIntTest, GivesWhatAPlainConvolutionOfTheStuffedInputGivesInAnySplit)
{
    for (const Options& options : kOptions) {
        SCOPED_TRACE(::testing::Message() << options.mUp << '/' << options.mDown);
        ResampleInt resampler;
        Configure(resampler, options, 2);
        const auto up = static_cast<std::size_t>(options.mUp);
        const auto down = static_cast<std::size_t>(options.mDown);
        auto input = PlanarRows::OfNoise(2, 400 * down, 11);
        PlanarRows output(2, 400 * up);
        std::size_t position = 0;
        for (const std::size_t iterations : {0u, 1u, 2u, 7u, 50u, 340u}) {
            const std::size_t frames = options.mUp < 2 ? iterations * down : iterations;
            testing::AllocationGuard guard;
            resampler.Process(input.From(position * down), static_cast<int>(frames),
                              output.From(position * up), {});
            position += iterations;
        }
        ASSERT_EQ(position, 400u);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            EXPECT_LT(Difference(output[channel], ConvertPlainly(options, input[channel])), 2e-6f);
        }
    }
}

TEST(ResampleIntTest, LeavesTheRemainderOfADecimatedBlockUnread)
{
    ResampleInt resampler;
    Configure(resampler, {1, 4, 32, 5.0f}, 1);
    auto input = PlanarRows::OfNoise(1, 16, 3);
    PlanarRows output(1, 4, 7.0f);
    resampler.Process(input.From(0), 15, output.From(0), {});
    EXPECT_EQ(output[0][3], 7.0f);
    resampler.Process(input.From(12), 4, output.From(3), {});
    EXPECT_LT(Difference(output[0], ConvertPlainly({1, 4, 32, 5.0f}, input[0])), 1e-6f);
}

TEST(ResampleIntTest, OversamplingKeepsTheLevelAndIsAsLateAsItSays)
{
    for (const Options& options : {kOptions[0], kOptions[1]}) {
        ResampleInt resampler;
        Configure(resampler, options, 1);
        EXPECT_EQ(resampler.GetSystemDelay(), options.mTaps / 2 - 1);
        const double rate = 48000.0 * options.mUp;
        const auto delay = static_cast<std::size_t>(resampler.GetSystemDelay());
        PlanarRows input({testing::MakeSine(4800, 1000.0, 48000.0, 0.5)});
        PlanarRows output(1, 4800 * static_cast<std::size_t>(options.mUp));
        resampler.Process(input.From(0), 4800, output.From(0), {});
        const Row expected = testing::MakeSine(output.GetLength(), 1000.0, rate, 0.5);
        const std::span<const float> settled(output[0].data() + delay + 1000, output.GetLength() - 2000);
        EXPECT_LT(testing::NullDepthInDecibels({expected.data() + 1000, settled.size()}, settled), -60.0);
    }
}

TEST(ResampleIntTest, LeavesSilentChannelsAloneAndRunsInPlaceWithoutOutput)
{
    ResampleInt resampler;
    Configure(resampler, {3, 1, 24, 5.0f}, 2);
    const Row noise = testing::MakeNoise(90, 5);
    const testing::PoisonedRow silent(30, false);
    Row converted(noise);
    converted.resize(270);
    Row untouched(90, 7.0f);
    const auto* silentRow = const_cast<float*>(silent.Get());
    const float* rows[] = {converted.data(), silentRow};
    resampler.Process(rows, 90, nullptr, ombrel::utility::Flags<std::uint64_t>::Bit(1));
    EXPECT_LT(Difference(converted, ConvertPlainly({3, 1, 24, 5.0f}, noise)), 1e-6f);

    float* outputs[] = {converted.data(), untouched.data()};
    resampler.Process(rows, 30, outputs, ombrel::utility::Flags<std::uint64_t>::Below(2));
    EXPECT_EQ(untouched, Row(90, 7.0f));
}

TEST(ResampleIntTest, IsAsNewAfterResetAndAfterTheSameMode)
{
    ResampleInt resampler;
    Configure(resampler, kOptions[0], 1);
    auto poison = PlanarRows({Row(40, std::numeric_limits<float>::quiet_NaN())});
    auto input = PlanarRows::OfNoise(1, 40, 9);
    PlanarRows output(1, 360);
    const Row expected = ConvertPlainly(kOptions[0], input[0]);
    for (int way = 0; way < 3; ++way) {
        resampler.Process(poison.From(0), 40, output.From(0), {});
        if (way == 0) {
            resampler.Reset();
        } else {
            resampler.SetMode(1, 48000, way == 1 ? 1024 : 512); // which keeps the block size of the first
        }
        EXPECT_EQ(resampler.GetMaxBlockSize(), 512);
        resampler.Process(input.From(0), 40, output.From(0), {});
        EXPECT_LT(Difference(output[0], expected), 2e-6f);
    }
}

TEST(ResampleIntTest, TakesOptionsBeforeAndAfterTheModeAndKeepsItsPastWhenTheyAreTheSame)
{
    ResampleInt resampler;
    resampler.SetMode(1, 48000, 64);
    auto input = PlanarRows::OfNoise(1, 60, 13);
    PlanarRows output(1, 300, 7.0f);
    resampler.Process(input.From(0), 60, output.From(0), {});
    EXPECT_EQ(output[0], Row(300, 7.0f)) << "there is no filter yet";
    EXPECT_EQ(resampler.GetSystemDelay(), 0);

    resampler.SetOptions(5, 1, 64, 5.0f);
    resampler.Process(input.From(0), 30, output.From(0), {});
    resampler.SetOptions(5, 1, 64, 5.0f);
    resampler.Process(input.From(30), 30, output.From(150), {});
    EXPECT_LT(Difference(output[0], ConvertPlainly(kOptions[1], input[0])), 2e-6f);

    resampler.SetOptions(5, 1, 65, 5.0f);
    resampler.Process(input.From(0), 60, output.From(0), {});
    EXPECT_LT(Difference(output[0], ConvertPlainly({5, 1, 65, 5.0f}, input[0])), 2e-6f);
}

} // namespace tessaro
