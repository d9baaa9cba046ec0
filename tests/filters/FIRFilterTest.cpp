#include <tessaro/filters/FIRFilter.h>
#include <tessaro/filters/IZFIRFilter.h>
#include <tessaro/filters/WindowedSinc.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeImpulse;
using testing::MakeNoise;
using testing::MakeSine;
using testing::Row;

Row ImpulseThrough(FIRFilter& ioFilter, std::size_t inLength)
{
    Row row = MakeImpulse(inLength);
    const testing::AllocationGuard guard;
    ioFilter.Process(row.data(), static_cast<int>(inLength));
    return row;
}

/// Amplitude of a sine behind the filter
double AmplitudeBehind(FIRFilter& ioFilter, double inFrequency, double inRate)
{
    Row sine = MakeSine(8192, inFrequency, inRate);
    ioFilter.Process(sine.data(), 8192);
    double energy = 0.0;
    for (std::size_t i = 4096; i < sine.size(); ++i) {
        energy += static_cast<double>(sine[i]) * sine[i];
    }
    return std::sqrt(energy / 2048.0);
}

TEST(FIRFilterTest, PassesItsBand)
{
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        FIRFilter filter;
        filter.GenerateFIRCoeffs(4000 / rate, 12000 / rate, 512);
        EXPECT_NEAR(AmplitudeBehind(filter, 8000, rate), 1.0, 0.01) << rate;
        EXPECT_LT(AmplitudeBehind(filter, 1000, rate), 0.01) << rate;
        EXPECT_LT(AmplitudeBehind(filter, 18000, rate), 0.01) << rate;
    }
}

TEST(FIRFilterTest, TheLastTapIsThatOfTheUpperEdgeAlone)
{
    // Window ends are 0, so the odd tap only shows where the number of taps is even.
    constexpr int kOrder = 15;
    FIRFilter band;
    band.GenerateFIRCoeffs(0.1, 0.3, kOrder);
    FIRFilter low;
    low.GenerateFIRCoeffs(0.0, 0.1, kOrder);
    FIRFilter high;
    high.GenerateFIRCoeffs(0.0, 0.3, kOrder);
    const Row bandTaps = ImpulseThrough(band, kOrder + 1);
    const Row lowTaps = ImpulseThrough(low, kOrder + 1);
    const Row highTaps = ImpulseThrough(high, kOrder + 1);
    for (std::size_t i = 0; i < kOrder; ++i) {
        EXPECT_NEAR(bandTaps[i], highTaps[i] - lowTaps[i], 1e-7);
    }
    EXPECT_NE(lowTaps[kOrder], 0.0f);
    EXPECT_EQ(bandTaps[kOrder], highTaps[kOrder]);
    // Without a lower edge the last one's taps are still taken off.
    band.GenerateFIRCoeffs(0.0, 0.3, kOrder);
    EXPECT_EQ(ImpulseThrough(band, kOrder + 1), bandTaps);
}

TEST(FIRFilterTest, WindowedSincIsThatOfItsFormula)
{
    const auto cosine = [](double inN) { return std::cos(M_PI * inN / 4); };
    const auto blackman = [&](double inN) { return 0.42 + 0.5 * cosine(inN) + 0.08 * cosine(2 * inN); };
    const auto expectSinc = [](const Row& inTaps, auto inWindow) {
        for (std::size_t i = 0; i < inTaps.size(); ++i) {
            const double n = static_cast<double>(i) - 4;
            const double scale = static_cast<double>(inTaps.size() - 1) / 8; // narrower for an even number
            const double x = M_PI * 0.4 * n * scale;
            EXPECT_NEAR(inTaps[i], inWindow(n) * 0.4 * (n == 0 ? 1.0 : std::sin(x) / x), 1e-7) << i;
        }
    };
    for (const int order : {8, 9}) {
        FIRFilter filter;
        filter.GenerateFIRCoeffs(0.0, 0.2, order);
        Row taps = ImpulseThrough(filter, static_cast<std::size_t>(order) + 1);
        expectSinc(taps, blackman);
        MakeWindowedSinc(0.4, SincWindow::kHann, taps.data(), order + 1);
        expectSinc(taps, [&](double inN) { return 0.5 + 0.5 * cosine(inN); });
        MakeWindowedSinc(0.4, SincWindow::kHamming, taps.data(), order + 1);
        expectSinc(taps, [&](double inN) { return 0.54 + 0.46 * cosine(inN); });
    }
}

TEST(FIRFilterTest, EnableResetAndSingleSamplesAreAsCallersKnowThem)
{
    FIRFilter filter;
    filter.Enable();
    EXPECT_EQ(filter.ProcessOneSample(0.5f), 0.5f); // no design yet
    filter.GenerateFIRCoeffs(0.05, 0.3, 20);
    const Row taps = ImpulseThrough(filter, 21);
    Row row = MakeImpulse(5);
    filter.Process(row.data(), 5);
    filter.Reset(); // not the delay line: the rest of the taps still comes
    Row rest(16);
    filter.Process(rest.data(), 16);
    EXPECT_EQ(rest[0], taps[5]);
    // The sample given does not count, and what is in the delay line moves on.
    Row second = MakeImpulse(1);
    filter.Process(second.data(), 1);
    EXPECT_NEAR(filter.ProcessOneSample(100.0f), taps[1], 1e-6);
    filter.Disable();
    EXPECT_EQ(filter.ProcessOneSample(100.0f), 100.0f);
    Row same = MakeNoise(50, 1);
    const Row before = same;
    filter.Process(same.data(), 50);
    EXPECT_EQ(same, before);
    filter.GenerateFIRCoeffs(0.05, 0.3, 20); // nothing new: enables, and the past stays
    Row third(1);
    filter.Process(third.data(), 1);
    EXPECT_NEAR(third[0], taps[2], 1e-6);
    filter.GenerateFIRCoeffs(0.05, 0.31, 20); // a new one starts with silence
    Row fourth(8);
    filter.Process(fourth.data(), 8);
    EXPECT_EQ(fourth, Row(8));

    FIRFilter copy(filter);
    EXPECT_EQ(ImpulseThrough(copy, 21), ImpulseThrough(filter, 21));
    filter.GenerateFIRCoeffs(0.0, 0.25, -3);
    Row one{1.0f, 2.0f};
    filter.Process(one.data(), 2); // order 0: a gain
    EXPECT_NEAR(one[0], 0.5, 1e-6);
    EXPECT_NEAR(one[1], 1.0, 1e-6);
}

TEST(IZFIRFilterTest, RunsItsTapsOverAnySplit)
{
    const Row taps = MakeNoise(37, 2);
    const Row input = MakeNoise(500, 3);
    Row wanted(500);
    for (std::size_t n = 0; n < 500; ++n) {
        double sum = 0.0;
        for (std::size_t k = 0; k < taps.size() && k <= n; ++k) {
            sum += static_cast<double>(taps[k]) * input[n - k];
        }
        wanted[n] = static_cast<float>(sum);
    }
    for (const int block : {0, 1, 64, 1000}) {
        IZFIRFilter filter(taps.data(), 37, block);
        Row output(500);
        for (std::size_t done = 0; done < 500; done += 100) {
            filter.Process(0, nullptr, nullptr);
            filter.Process(99, input.data() + done, output.data() + done);
            output[done + 99] = filter.ProcessSingle(input[done + 99]);
        }
        for (std::size_t n = 0; n < 500; ++n) {
            ASSERT_NEAR(output[n], wanted[n], 1e-5) << block;
        }
        filter.Reset();
        Row inPlace = input;
        if (block != 0) {
            const testing::AllocationGuard guard;
            filter.ProcessInPlace(500, inPlace.data());
        } else {
            filter.ProcessInPlace(500, inPlace.data());
        }
        EXPECT_NEAR(inPlace[400], wanted[400], 1e-5);
    }
}

TEST(IZFIRFilterTest, TapsChangeWithOrWithoutThePast)
{
    IZFIRFilter filter(16);
    Row row{1.0f, 2.0f};
    filter.ProcessInPlace(2, row.data()); // no taps: nothing is written
    EXPECT_EQ(row, (Row{1.0f, 2.0f}));
    EXPECT_EQ(filter.ProcessSingle(1.0f), 0.0f);
    filter.Reset();
    filter.SetCoefficients(nullptr, 3, false);
    EXPECT_EQ(filter.ProcessSingle(1.0f), 0.0f);
    const float first[] = {1.0f, 10.0f};
    const float second[] = {2.0f, 20.0f};
    filter.SetCoefficients(first, 0, false);
    EXPECT_EQ(filter.ProcessSingle(1.0f), 0.0f);
    filter.SetCoefficients(first, 2, false);
    EXPECT_EQ(filter.ProcessSingle(1.0f), 1.0f);
    filter.SetCoefficients(second, 2, true);
    EXPECT_EQ(filter.ProcessSingle(0.0f), 20.0f);
    filter.ProcessSingle(1.0f);
    filter.SetCoefficients(first, 2, false);
    EXPECT_EQ(filter.ProcessSingle(0.0f), 0.0f);
    filter.ProcessSingle(1.0f);
    IZFIRFilter copy(filter);
    EXPECT_EQ(copy.ProcessSingle(0.0f), 0.0f); // a clear past
    EXPECT_EQ(filter.ProcessSingle(0.0f), 10.0f);
    const float longer[] = {3.0f, 0.0f, 0.0f};
    filter.ProcessSingle(1.0f);
    filter.SetCoefficients(longer, 3, true);
    EXPECT_EQ(filter.ProcessSingle(1.0f), 3.0f);
    filter.ProcessSingle(std::numeric_limits<float>::quiet_NaN());
    filter.Reset();
    EXPECT_EQ(filter.ProcessSingle(1.0f), 3.0f);

    IZFIRFilter growing(longer, 3, 0);
    growing.Allocate(64);
    Row noise = MakeNoise(64, 4);
    const testing::AllocationGuard guard; // room was made, and a change of as many taps needs none
    growing.ProcessInPlace(64, noise.data());
    growing.SetCoefficients(longer, 3, true);
}

} // namespace
} // namespace tessaro
