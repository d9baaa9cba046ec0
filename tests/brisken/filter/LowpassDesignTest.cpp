#include <brisken/filter/LowpassDesign.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace brisken::filter {
namespace {

std::vector<double> Design(double inCutoff, unsigned inNumTaps, bool inNormalize)
{
    std::vector<double> taps(inNumTaps);
    std::vector<unsigned char> work(FIRGetWorkBufferSize(inNumTaps));
    GenerateLowpassFIRCoefficients(inCutoff, inNumTaps, taps.data(), utility::DSPWindowType(3), inNormalize,
                                   work.data());
    return taps;
}

double GainDB(const std::vector<double>& inTaps, double inFrequency)
{
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < inTaps.size(); ++n) {
        sum += std::polar(inTaps[n], -2.0 * std::numbers::pi * inFrequency * static_cast<double>(n));
    }
    return 20.0 * std::log10(std::abs(sum));
}

TEST(LowpassDesignTest, PassesBelowAndStopsAboveTheCutoff)
{
    const auto taps = Design(0.12, 71, true);
    EXPECT_NEAR(GainDB(taps, 0.0), 0.0, 1e-12);
    // A Blackman window's transition is 6 / (N - 1) wide, its ripple 0.002 dB and its stop band below -74 dB.
    const auto half = 0.5 * 6 / 70;
    for (double f = 0.0; f < 0.12 - half; f += 0.003) {
        EXPECT_NEAR(GainDB(taps, f), 0.0, 0.002) << f;
    }
    EXPECT_NEAR(GainDB(taps, 0.12), 20.0 * std::log10(0.5), 0.01);
    for (double f = 0.12 + half; f < 0.5; f += 0.003) {
        EXPECT_LT(GainDB(taps, f), -74.0) << f;
    }
}

TEST(LowpassDesignTest, TapsAreSymmetricWithEndsOfZero)
{
    for (unsigned numTaps : {2u, 5u, 70u, 71u}) {
        const auto taps = Design(0.2, numTaps, false);
        EXPECT_EQ(taps, std::vector<double>(taps.rbegin(), taps.rend()));
        EXPECT_EQ(taps.front(), 0.0);
    }
    // The middle tap of an odd count is the whole of the ideal response at its centre.
    EXPECT_NEAR(Design(0.2, 71, false)[35], 0.4, 1e-15);
}

TEST(LowpassDesignTest, ScalesToUnityOnlyOnRequestAndHandlesTheEnds)
{
    const auto sum = [](const std::vector<double>& inTaps) {
        return std::accumulate(inTaps.begin(), inTaps.end(), 0.0);
    };
    EXPECT_NEAR(sum(Design(0.01, 21, true)), 1.0, 1e-15);
    EXPECT_LT(sum(Design(0.01, 21, false)), 0.5);
    EXPECT_EQ(Design(-1.0, 21, true), std::vector<double>(21, 0.0));
    EXPECT_EQ(Design(2.0, 21, false), Design(0.5, 21, false));
    EXPECT_EQ(Design(0.25, 1, true), std::vector<double>{1.0});
    EXPECT_TRUE(Design(0.25, 0, true).empty());
}

} // namespace
} // namespace brisken::filter
