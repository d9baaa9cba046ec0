#include <tessaro/restoration/prediction/Excitation.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeImpulse;
using testing::PlanarRows;
using testing::Row;

constexpr float kRate = 48000.0f;

/// Indices of what `Drive` returns
enum
{
    kExcitation,
    kForward,
    kBackward,
    kDelayed,
    kNumOutputs
};

std::vector<PlanarRows> Drive(Excitation& ioExcitation, PlanarRows inInput, std::size_t inBlock)
{
    const std::size_t length = inInput.GetLength();
    std::vector<PlanarRows> out(kNumOutputs, PlanarRows(inInput.GetChannelCount(), length));
    for (std::size_t done = 0; done < length; done += inBlock) {
        const auto count = static_cast<unsigned>(std::min(inBlock, length - done));
        const auto offset = static_cast<unsigned>(done);
        const testing::AllocationGuard guard;
        ioExcitation.Process(inInput.From(0), count, out[kExcitation].From(0), out[kForward].From(0),
                             out[kBackward].From(0), out[kDelayed].From(0), offset, offset);
    }
    return out;
}

void Make(Excitation& outExcitation, unsigned inChannels, unsigned inDelay = 0)
{
    outExcitation.StartNewStream(inChannels, kRate, inDelay);
    outExcitation.SetMode(0.05f, 15, 0.02f);
}

/// Pulses through two resonances
Row MakeVowel(std::size_t inLength, std::size_t inPeriod)
{
    Row row(inLength);
    for (std::size_t i = 0; i < inLength; i += inPeriod) {
        row[i] = 0.2f;
    }
    for (const double frequency : {700.0, 1800.0}) {
        const auto a = static_cast<float>(2.0 * 0.985 * std::cos(2.0 * M_PI * frequency / kRate));
        for (std::size_t i = 2; i < inLength; ++i) {
            row[i] += a * row[i - 1] - 0.970225f * row[i - 2];
        }
    }
    return row;
}

/// Even up to 0.39 of the rate and empty above, which asks for large predictors
Row MakeBand(std::size_t inLength)
{
    Row row(inLength);
    for (int i = 0; i < 39; ++i) {
        const Row sine = testing::MakeSine(inLength, 0.01 * i + 0.005, 1.0, 0.1, i * i);
        std::transform(row.begin(), row.end(), sine.begin(), row.begin(), std::plus<>());
    }
    return row;
}

TEST(ExcitationTest, PeaksAtThePulsesOfAVowel)
{
    constexpr std::size_t kPeriod = 400;
    Excitation excitation;
    Make(excitation, 1);
    const auto latency = excitation.GetLatency();
    EXPECT_EQ(latency, 1200u);
    const Row result = Drive(excitation, PlanarRows({MakeVowel(24000, kPeriod)}), 512)[kExcitation][0];
    for (std::size_t pulse = 8 * kPeriod; pulse + latency + kPeriod < result.size(); pulse += kPeriod) {
        const auto at = result.begin() + static_cast<std::ptrdiff_t>(pulse + latency - kPeriod / 2);
        const auto peak = std::max_element(at, at + kPeriod);
        EXPECT_NEAR(static_cast<double>(peak - at), kPeriod / 2.0, 8.0) << pulse;
        EXPECT_GT(*peak, 10.0 * testing::Rms({at, at + kPeriod / 2 - 20}));
    }
}

/// The fit as it is described: the coefficients have to stay within 10, or the order comes down.
Row Fit(const float* inFrame, unsigned ioOrder)
{
    Autocorr autocorr;
    autocorr.SetMode(480, ioOrder + 1, false);
    Row correlation(ioOrder + 1);
    Row a(ioOrder + 1);
    autocorr.GetAutocorr(inFrame, correlation.data(), ioOrder + 1);
    for (;;) {
        LpcCoeffs::RunLevinsonRecursion(ioOrder, correlation.data(), a.data());
        const auto largest = std::minmax_element(a.begin(), a.end());
        if (*largest.second <= 10.0f && *largest.first >= -10.0f) {
            a[0] = -1.0f;
            return a;
        }
        ioOrder -= 1 + ioOrder / 8;
        a.assign(ioOrder + 1, 0.0f);
    }
}

/// Sums straight from the formula, in the second hop
TEST(ExcitationTest, ResidualsAreThoseOfTheFittedPredictor)
{
    constexpr unsigned kOrder = 30;
    constexpr std::size_t kHop = 600;
    constexpr std::size_t kLatency = 240;
    for (const bool isBand : {false, true}) {
        const Row input = isBand ? MakeBand(2 * kHop) : MakeVowel(2 * kHop, 150);
        Excitation excitation;
        excitation.SetMode(0.01f, kOrder, 0.0125f);
        excitation.StartNewStream(1, kRate, 0);
        ASSERT_EQ(excitation.GetLatency(), kLatency);
        const auto out = Drive(excitation, PlanarRows({input}), 2 * kHop);
        const Row a = Fit(input.data() + kHop - 2 * kLatency, kOrder);
        EXPECT_EQ(a.size() <= kOrder, isBand);
        for (std::size_t i = kHop; i < 2 * kHop; ++i) {
            const float* const now = input.data() + i - kLatency;
            double f = 0.0;
            double b = 0.0;
            for (int k = 0; k < static_cast<int>(a.size()); ++k) {
                f += double{a[static_cast<std::size_t>(k)]} * now[-k];
                b += double{a[static_cast<std::size_t>(k)]} * now[k];
            }
            ASSERT_NEAR(out[kForward][0][i], f, 1e-5) << i;
            ASSERT_NEAR(out[kBackward][0][i], b, 1e-5) << i;
            f = std::abs(f);
            b = std::abs(b);
            ASSERT_NEAR(out[kExcitation][0][i], 2 * f * b / (f + b + 1e-9), 2e-5) << i;
            ASSERT_EQ(out[kDelayed][0][i], *now);
        }
    }
}

TEST(ExcitationTest, PredictsFromTwoSamplesAtLeast)
{
    const PlanarRows input({MakeVowel(2000, 150)});
    std::vector<PlanarRows> results;
    for (const unsigned order : {1u, 2u}) {
        Excitation excitation;
        excitation.SetMode(0.01f, order, 0.0125f);
        excitation.StartNewStream(1, kRate, 0);
        results.push_back(Drive(excitation, input, 500)[kExcitation]);
    }
    EXPECT_EQ(results[0][0], results[1][0]);
}

TEST(ExcitationTest, LatencyIsHalfTheFrameOrTheOrder)
{
    Excitation excitation;
    EXPECT_EQ(excitation.GetLatency(), 0u);
    excitation.Process(nullptr, 10, nullptr);
    Make(excitation, 1, 70);
    EXPECT_EQ(excitation.GetLatency(), 1270u);
    EXPECT_EQ(Excitation::GetLatencySafe(0.05f, kRate, 15), 2400u);
    excitation.SetMode(0.0f, 40, 0.0f); // frame of 8, hop of 1
    EXPECT_EQ(excitation.GetLatency(), 110u);
    EXPECT_EQ(Excitation::GetLatencySafe(0.0f, kRate, 40), 40u);
    EXPECT_EQ(Excitation::GetLatencySafe(0.0f, kRate, 4), 8u);
    const auto out = Drive(excitation, PlanarRows({MakeImpulse(600, 300)}), 50);
    EXPECT_EQ(out[kDelayed][0], MakeImpulse(600, 410));
    EXPECT_EQ(out[kExcitation][0][410], 1.0f);
    EXPECT_EQ(out[kExcitation][0], MakeImpulse(600, 410)); // no 0 / 0 in silence
}

TEST(ExcitationTest, NumbersThatAreNoneLeaveAgain)
{
    PlanarRows input = PlanarRows::OfNoise(1, 20000, 8);
    input[0][3000] = std::numeric_limits<float>::quiet_NaN();
    input[0][3100] = std::numeric_limits<float>::infinity();
    Excitation excitation;
    Make(excitation, 1);
    const Row result = Drive(excitation, input, 480)[kExcitation][0];
    EXPECT_TRUE(testing::AreAllFinite({result.begin() + 3100 + 2400 + 960, result.end()}));
    EXPECT_GT(testing::Rms({result.begin() + 8000, result.end()}), 0.01);
}

} // namespace
} // namespace tessaro
