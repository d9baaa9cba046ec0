#include <tessaro/restoration/prediction/Autocorr.h>

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeNoise;
using testing::MakeSine;
using testing::Row;

/// Sum of a[n] b[n + lag], the frames being zero outside
double DirectSum(const Row& inA, const Row& inB, int inLag)
{
    double sum = 0.0;
    for (int n = 0; n < static_cast<int>(inA.size()); ++n) {
        if (n + inLag >= 0 && n + inLag < static_cast<int>(inB.size())) {
            sum += double{inA[static_cast<std::size_t>(n)]} * inB[static_cast<std::size_t>(n + inLag)];
        }
    }
    return sum;
}

Row Windowed(Row inRow)
{
    for (std::size_t i = 0; i < inRow.size(); ++i) {
        inRow[i] *= static_cast<float>(
            1.0 - std::cos(2.0 * M_PI * (static_cast<double>(i) + 0.5) / static_cast<double>(inRow.size())));
    }
    return inRow;
}

void ExpectSums(const Row& inActual, const Row& inA, const Row& inB, int inFirstLag = 0)
{
    const double bound = 2e-6 * std::sqrt(DirectSum(inA, inA, 0) * DirectSum(inB, inB, 0));
    for (std::size_t m = 0; m < inActual.size(); ++m) {
        const int lag = inFirstLag + static_cast<int>(m);
        ASSERT_NEAR(inActual[m], DirectSum(inA, inB, lag), bound) << lag << " of " << inA.size();
    }
}

TEST(AutocorrTest, EqualsTheDirectSum)
{
    for (const unsigned length : {1u, 2u, 7u, 8u, 100u, 513u}) {
        for (const unsigned lags : {1u, length, length + 5}) {
            const Row frame = MakeNoise(length, length, 0.8);
            Autocorr autocorr;
            autocorr.SetMode(length, lags, false);
            EXPECT_EQ(autocorr.GetMaxLen(), length);
            Row result(lags, 99.0f);
            {
                const testing::AllocationGuard guard;
                autocorr.GetAutocorr(frame.data(), result.data(), lags, length, false);
            }
            ExpectSums(result, frame, frame);
        }
    }
}

TEST(AutocorrTest, WindowsFramesOfTheLengthSetOnly)
{
    const Row frame = MakeNoise(96, 5);
    const Row shorter(frame.begin(), frame.begin() + 40);
    for (const bool useHalf : {false, true}) {
        Autocorr autocorr;
        autocorr.SetMode(96, Autocorr::kAll, useHalf);
        Row result(97, 99.0f);
        autocorr.GetAutocorr(frame.data(), result.data()); // one less than the length
        EXPECT_EQ(result[95], 99.0f);
        ExpectSums(Row(result.begin(), result.begin() + 95), Windowed(frame), Windowed(frame));
        Row ofShorter(39);
        autocorr.GetAutocorr(shorter.data(), ofShorter.data(), Autocorr::kAll, 40, true);
        ExpectSums(ofShorter, shorter, shorter);
    }
}

TEST(AutocorrTest, LagsThatDoNotFitGoRoundAndFramesThatDoNotGiveZeros)
{
    const Row frame = MakeNoise(140, 9);
    Row result(20, 99.0f);
    Autocorr autocorr;
    autocorr.GetAutocorr(frame.data(), result.data(), 20, 120, false);
    EXPECT_EQ(result, Row(20));
    autocorr.ReserveMemory(2000);
    autocorr.SetMode(100, 28, true); // transform of 128
    result.assign(20, 99.0f);
    autocorr.GetAutocorr(frame.data(), result.data(), 20, 140, false);
    EXPECT_EQ(result, Row(20));
    const Row fitting(frame.begin(), frame.begin() + 120);
    autocorr.GetAutocorr(fitting.data(), result.data(), 20, 120, false);
    for (int lag = 0; lag < 20; ++lag) {
        const double expected = DirectSum(fitting, fitting, lag) + DirectSum(fitting, fitting, 128 - lag);
        EXPECT_NEAR(result[static_cast<std::size_t>(lag)], expected, 1e-4) << lag;
    }
}

TEST(AutocorrTest, CrossCorrelationFindsTheShiftOnEitherSide)
{
    const Row noise = MakeNoise(300, 11);
    const Row frame(noise.begin() + 40, noise.begin() + 240);
    const Row ahead(noise.begin() + 50, noise.begin() + 250);
    Autocorr autocorr;
    autocorr.SetMode(200, 30, false);
    Row result(59, 99.0f);
    autocorr.GetCrosscorr(frame.data(), ahead.data(), result.data(), 30, 200, false, true);
    ExpectSums(result, frame, ahead, -29);
    EXPECT_EQ(std::max_element(result.begin(), result.end()) - result.begin(), 29 - 10);
    Row oneSide(30);
    autocorr.GetCrosscorr(frame.data(), ahead.data(), oneSide.data(), 30, 200, true);
    ExpectSums(oneSide, Windowed(frame), Windowed(ahead));
}

TEST(AutocorrTest, RootShowsThePeriodBesideAStrongPartial)
{
    Row frame(1024);
    for (int partial = 1; partial <= 8; ++partial) {
        const Row sine = MakeSine(1024, 480.0 * partial, 48000, partial == 2 ? 1.0 : 0.05, 0.4 * partial);
        std::transform(frame.begin(), frame.end(), sine.begin(), frame.begin(), std::plus<>());
    }
    Autocorr autocorr;
    autocorr.SetMode(1024, 160, false);
    Row plain(160);
    Row root(160);
    autocorr.GetAutocorr(frame.data(), plain.data(), 160);
    autocorr.GetSqrtAutocorr(frame.data(), root.data(), 160);
    // The period is 100 samples, that of the strong partial half as long.
    const auto contrast = [](const Row& inRow) { return (inRow[100] - inRow[50]) / inRow[0]; };
    EXPECT_GT(contrast(root), contrast(plain) + 0.1f);
}

} // namespace
} // namespace tessaro
