#include <tessaro/filters/FIR.h>

#include <cmath>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/filters/BiquadDesign.h>

#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::Row;

constexpr unsigned kN = 1024;
constexpr float kRate = 48000.0f;
constexpr float kBeta = 6.0f;

std::vector<unsigned> gSizes{256, kN};
std::vector<unsigned> gMinPhaseSizes{4 * kN};

double Decibels(double inLevel)
{
    return 20.0 * std::log10(inLevel);
}

/// The bin of a frequency
unsigned BinOf(double inFrequency, unsigned inN = kN, double inRate = kRate)
{
    return static_cast<unsigned>(std::lround(inFrequency * inN / inRate));
}

Row BuildNodes(const std::vector<NodeFR>& inNodes, unsigned inN = kN, float inRate = kRate,
               bool inDecibels = true)
{
    Row bins(inN / 2 + 1, 77.0f);
    FIR::RunBuildFreqResp(inNodes.data(), static_cast<unsigned>(inNodes.size()), bins.data(), inN, inRate,
                          inDecibels);
    return bins;
}

/// Magnitude of taps at a frequency, by the sum itself
double MagnitudeAt(const Row& inTaps, double inRadians)
{
    double re = 0.0;
    double im = 0.0;
    for (std::size_t n = 0; n < inTaps.size(); ++n) {
        re += inTaps[n] * std::cos(inRadians * static_cast<double>(n));
        im -= inTaps[n] * std::sin(inRadians * static_cast<double>(n));
    }
    return std::hypot(re, im);
}

NodeFR MakeNode(int inType, float inFrequency, float inGain, float inQ = 1.0f, float inScale = 1.0f,
                float inMix = 0.0f)
{
    return {inFrequency, inGain, inQ, inScale, inMix, inType};
}

TEST(FIRNodeTest, NoNodesPassEverything)
{
    EXPECT_EQ(BuildNodes({}), Row(kN / 2 + 1, 0.0f));
    EXPECT_EQ(BuildNodes({}, kN, kRate, false), Row(kN / 2 + 1, 1.0f));
    EXPECT_EQ(BuildNodes({MakeNode(7, 1000, 6), MakeNode(-1, 1000, 6)}), Row(kN / 2 + 1, 0.0f));
    const NodeFR node;
    EXPECT_EQ(node.mFrequency, 1000.0f);
    EXPECT_EQ(node.mQ, 1.0f);
    EXPECT_EQ(node.mScale, 1.0f);
}

TEST(FIRNodeTest, ShapesHaveTheirHeightWhereTheyShould)
{
    constexpr unsigned n = 65536;
    for (const float rate : {44100.0f, 48000.0f, 96000.0f, 192000.0f}) {
        const auto at = [&](const NodeFR& inNode, double inFrequency) {
            return BuildNodes({inNode}, n, rate)[BinOf(inFrequency, n, rate)];
        };
        const double tolerance = 0.03;                            // the bins are up to 3 Hz wide
        const auto bell = MakeNode(NodeFR::kBell, 2000, 5, 2, 2); // 10 dB, e^-0.5 to e^0.5 about 2 kHz
        EXPECT_NEAR(at(bell, 2000), 10, tolerance);
        EXPECT_NEAR(at(bell, 2000 * std::exp(0.25)), 5, tolerance);
        EXPECT_NEAR(at(bell, 2000 * std::exp(-0.25)), 5, tolerance);
        EXPECT_EQ(at(bell, 2000 * std::exp(0.51)), 0);
        EXPECT_EQ(at(bell, 2000 * std::exp(-0.51)), 0);

        const double slopeOf =
            6.0 / (2.0 - std::sqrt(2.0)) / std::sqrt(2.0); // dB for each width below the corner
        for (const float scale : {1.0f, 2.0f}) {
            const auto lowpass = MakeNode(NodeFR::kLowpass, 2000, 99, 1, scale);
            EXPECT_NEAR(at(lowpass, 2000), -3 * scale, tolerance);
            EXPECT_EQ(at(lowpass, 2000 * std::exp(-1.01)), 0);
            EXPECT_NEAR(at(lowpass, 4000), scale * (-3 - slopeOf * std::log(2.0)), tolerance);
            const auto highpass = MakeNode(NodeFR::kHighpass, 2000, 99, 1, scale);
            EXPECT_NEAR(at(highpass, 2000), -3 * scale, tolerance);
            EXPECT_EQ(at(highpass, 2000 * std::exp(1.01)), 0);
            EXPECT_NEAR(at(highpass, 1000), scale * (-3 - slopeOf * std::log(2.0)), tolerance);
            EXPECT_NEAR(at(highpass, 0), scale * (-3 - slopeOf * (std::log(2000.0) + 10.0)), tolerance);
        }
        const auto low = MakeNode(NodeFR::kLowShelf, 500, -8, 4);
        const double width = 1.0 / 4.0 / 2.0;
        EXPECT_EQ(at(low, 0), -8);
        EXPECT_NEAR(at(low, 500), -4, 0.2);
        EXPECT_EQ(at(low, 500 * std::exp(1.1 * width)), 0);
        const auto high = MakeNode(NodeFR::kHighShelf, 5000, 6, 4);
        EXPECT_EQ(at(high, rate / 2), 6);
        EXPECT_NEAR(at(high, 5000), 3, tolerance);
        EXPECT_EQ(at(high, 5000 * std::exp(-1.1 * width)), 0);
    }
    const auto sum = BuildNodes({MakeNode(NodeFR::kLowShelf, 500, -8), MakeNode(NodeFR::kLowShelf, 500, 2)});
    EXPECT_EQ(sum[0], -6.0f);
    EXPECT_NEAR(BuildNodes({MakeNode(NodeFR::kLowShelf, 500, -6.0206f)}, kN, kRate, false)[0], 0.5, 1e-5);
}

TEST(FIRNodeTest, NarrowBellsAreWidenedAndStayInTheBand)
{
    const auto widthOf = [](const Row& inBins) {
        return static_cast<double>(
            std::count_if(inBins.begin(), inBins.end(), [](float inLevel) { return inLevel != 0.0f; }));
    };
    EXPECT_NEAR(widthOf(BuildNodes({MakeNode(NodeFR::kBell, 10000, 6, 1000)})), 20, 2);
    const auto atTheEnd = BuildNodes({MakeNode(NodeFR::kBell, 23900, 6, 1000)});
    EXPECT_NEAR(widthOf(atTheEnd), 20, 3);
    EXPECT_EQ(atTheEnd.back(), 0.0f); // strictly below half the rate
    const auto atTheStart = BuildNodes({MakeNode(NodeFR::kBell, 5, 6, 1000)});
    EXPECT_GT(widthOf(atTheStart), 5);
    EXPECT_EQ(atTheStart[0], 0.0f);
}

TEST(FIRTest, SectionsGiveTheirClosedFormAndMultiply)
{
    double sections[12];
    PeakingEQCoefficients(sections, kRate, 3000, 6, 1);
    PeakingEQCoefficients(sections + 6, kRate, 3000, 6, 1);
    FIR fir(gSizes, gMinPhaseSizes);
    Row bins(kN / 2 + 1, 1.0f);
    fir.BuildDigitalIIRFreqResp(sections, 2, bins.data(), kN, kRate, false);
    EXPECT_NEAR(Decibels(bins[BinOf(3000)]), 12, 1e-3);
    fir.BuildDigitalIIRFreqResp(sections, 1, bins.data(), kN, kRate, true);
    EXPECT_NEAR(Decibels(bins[BinOf(3000)]), 18, 1e-3);
    const double w0 = 2.0 * M_PI * 3000.0;
    const double analog[] = {1, 0, 0, 1, std::sqrt(2.0) / w0, 1 / (w0 * w0)}; // Butterworth
    fir.BuildAnalogFreqResp(analog, 1, bins.data(), kN, kRate, false);
    EXPECT_NEAR(Decibels(bins[BinOf(3000)]), -3.01, 1e-3 + 0.01);
    fir.BuildAnalogFreqResp(analog, 0, bins.data(), kN, kRate, false);
    EXPECT_EQ(bins, Row(kN / 2 + 1, 1.0f));
}

TEST(FIRTest, LinearPhaseTapsAreSymmetricAndHaveTheWantedResponse)
{
    const auto wanted = BuildNodes(
        {MakeNode(NodeFR::kBell, 4000, 9, 1), MakeNode(NodeFR::kLowShelf, 300, -6)}, kN, kRate, false);
    FIR fir(gSizes, gMinPhaseSizes);
    Row taps(kN, 77.0f);
    fir.DesignFIR(wanted.data(), kN, kBeta, taps.data(), nullptr, 0);
    EXPECT_EQ(taps[kN - 1], 0.0f);
    for (unsigned i = 0; i < kN - 1; ++i) {
        EXPECT_NEAR(taps[i], taps[kN - 2 - i], 1e-7);
    }
    for (const double frequency : {60.0, 1000.0, 2500.0, 4000.0, 9000.0, 20000.0}) {
        const unsigned bin = BinOf(frequency);
        EXPECT_NEAR(Decibels(MagnitudeAt(taps, 2.0 * M_PI * bin / kN)), Decibels(wanted[bin]), 0.1)
            << frequency;
    }
    // A size that was not prepared is designed all the same, and a few taps are the middle of many.
    Row other(kN);
    FIR unprepared(gMinPhaseSizes, gMinPhaseSizes);
    unprepared.DesignFIR(wanted.data(), kN, kBeta, other.data(), nullptr, 0);
    EXPECT_EQ(other, taps);
    Row few(101);
    fir.DesignFIR(wanted.data(), kN, 0.0f, few.data(), nullptr, 100);
    Row even(100);
    FIR::RunDesignFIR(wanted.data(), kN, 0.0f, even.data(), nullptr, 100);
    EXPECT_EQ(Row(few.begin(), few.begin() + 100), even);
    EXPECT_EQ(*std::max_element(even.begin(), even.end()), even[50]); // time 0 at half the number
    Row many(kN);
    fir.DesignFIR(wanted.data(), kN, 0.0f, many.data(), nullptr, 0);
    EXPECT_NEAR(even[20], many[kN / 2 - 1 - 30], 1e-7);
}

TEST(FIRTest, PhaseMovesTheTapsInTime)
{
    const Row flat(kN / 2 + 1, 1.0f);
    Row phase(kN / 2 + 1);
    for (std::size_t bin = 0; bin < phase.size(); ++bin) {
        phase[bin] = static_cast<float>(-2.0 * M_PI * static_cast<double>(bin) * 3.0 / kN);
    }
    Row taps(21);
    FIR::RunDesignFIR(flat.data(), kN, 0.0f, taps.data(), phase.data(), 21);
    for (int i = 0; i < 21; ++i) {
        EXPECT_NEAR(taps[static_cast<std::size_t>(i)], i == 13 ? 1.0 : 0.0, 1e-5);
    }
    FIR::RunDesignFIR(flat.data(), kN, kBeta, taps.data(), phase.data(), 21);
    EXPECT_NEAR(taps[13], std::cyl_bessel_i(0, kBeta * std::sqrt(1 - 0.09)) / std::cyl_bessel_i(0, kBeta),
                1e-5);
    FIR::RunDesignFIR(flat.data(), kN, 0.0f, taps.data(), phase.data(), 21);
    Row magnitude(1, 5.0f);
    FIR::RunDesignFIR(magnitude.data(), 1000, 0.0f, taps.data(), nullptr, 5); // no power of two: nothing
    EXPECT_NEAR(taps[13], 1.0, 1e-5);
}

/// How much of the energy has come after each tap
std::vector<double> EnergyOf(const Row& inTaps)
{
    std::vector<double> energy;
    double sum = 0.0;
    for (const float tap : inTaps) {
        energy.push_back(sum += static_cast<double>(tap) * tap);
    }
    return energy;
}

TEST(FIRTest, MinimumPhaseKeepsTheMagnitudeAndComesFirst)
{
    auto wanted = BuildNodes({MakeNode(NodeFR::kBell, 4000, 9, 1), MakeNode(NodeFR::kHighShelf, 9000, -6)},
                             kN, kRate, false);
    FIR fir(gSizes, gMinPhaseSizes);
    Row linear(kN);
    Row minimum(kN, 77.0f);
    fir.DesignFIR(wanted.data(), kN, kBeta, linear.data(), nullptr, 0);
    fir.DesignFIRMinPhase(wanted.data(), kN, kBeta, minimum.data(), 4 * kN);
    for (const double frequency : {60.0, 1000.0, 2500.0, 4000.0, 9000.0, 20000.0}) {
        const double w = 2.0 * M_PI * frequency / kRate;
        EXPECT_NEAR(Decibels(MagnitudeAt(minimum, w)), Decibels(MagnitudeAt(linear, w)), 0.01) << frequency;
    }
    const auto early = EnergyOf(minimum);
    const auto late = EnergyOf(linear);
    for (std::size_t i = 0; i < kN; ++i) {
        ASSERT_GE(early[i] + 1e-6, late[i]);
    }
    EXPECT_GT(early[16], 0.95 * early.back());
    EXPECT_LT(late[16], 1e-6);

    Row unchanged(kN, 77.0f);
    fir.DesignFIRMinPhase(wanted.data(), kN, kBeta, unchanged.data(), 2 * kN); // not in the list
    EXPECT_EQ(unchanged, Row(kN, 77.0f));
    double known[] = {0.5, 1.0}; // its zero is outside the circle; reflected: 1 + 0.5 / z
    fir.ConvertToMinPhase(known, 2, 4 * kN);
    EXPECT_NEAR(known[0], 1.0, 1e-9);
    EXPECT_NEAR(known[1], 0.5, 1e-9);
    fir.ConvertToMinPhase(known, 2, 17);
    EXPECT_NEAR(known[0], 1.0, 1e-9);
}

TEST(FIRTest, MixedPhaseGoesFromMinimumThroughLinearToMaximum)
{
    FIR fir(gSizes, gMinPhaseSizes);
    const auto centerOf = [](const Row& inTaps) {
        double moment = 0.0;
        double energy = 0.0;
        for (std::size_t i = 0; i < inTaps.size(); ++i) {
            moment += static_cast<double>(i) * inTaps[i] * inTaps[i];
            energy += inTaps[i] * inTaps[i];
        }
        return moment / energy;
    };
    // The taps before the middle are the maximum-phase part's, those behind it the minimum-phase part's.
    double before = kN;
    for (const float mix : {-1.0f, -0.5f, 0.0f, 0.5f, 1.0f}) {
        const auto node = MakeNode(NodeFR::kLowpass, 2000, 0, 1, 4, mix);
        Row taps(kN, 77.0f);
        fir.DesignFIRMixedPhase(&node, 1, kN, kRate, kBeta, taps.data());
        EXPECT_EQ(taps[kN - 1], 0.0f);
        const auto wanted = BuildNodes({node}, kN, kRate, false);
        for (const double frequency : {100.0, 1000.0, 2000.0, 4000.0}) {
            const unsigned bin = BinOf(frequency);
            EXPECT_NEAR(Decibels(MagnitudeAt(taps, 2.0 * M_PI * bin / kN)), Decibels(wanted[bin]), 0.5)
                << mix << " at " << frequency;
        }
        EXPECT_LT(centerOf(taps), before - 1.0) << mix;
        before = centerOf(taps);
    }
    // Without the size for minimum phase the outer parts stay linear.
    FIR outerLinear(gSizes, gSizes);
    const auto steep = MakeNode(NodeFR::kLowpass, 2000, 0, 1, 4, 1.0f);
    Row unturned(kN);
    outerLinear.DesignFIRMixedPhase(&steep, 1, kN, kRate, 0.0f, unturned.data());
    Row plain(kN);
    outerLinear.DesignFIR(BuildNodes({steep}, kN, kRate, false).data(), kN, 0.0f, plain.data(), nullptr, 0);
    for (unsigned i = 0; i < kN; ++i) {
        ASSERT_NEAR(unturned[i], plain[i], 1e-6) << i;
    }
    // Reversed in time, the one is the other: the middle is index N / 2 - 1.
    const auto first = MakeNode(NodeFR::kBell, 3000, 9, 1, 1, -1.0f);
    const auto last = MakeNode(NodeFR::kBell, 3000, 9, 1, 1, 1.0f);
    Row minimum(kN);
    Row maximum(kN);
    fir.DesignFIRMixedPhase(&first, 1, kN, kRate, 0.0f, minimum.data());
    fir.DesignFIRMixedPhase(&last, 1, kN, kRate, 0.0f, maximum.data());
    for (unsigned i = 0; i < kN - 1; ++i) {
        ASSERT_NEAR(minimum[i], maximum[kN - 2 - i], 2e-5) << i;
    }
}

TEST(FIRTest, AnalysisOfADelayedTap)
{
    FIR fir(gSizes, gMinPhaseSizes);
    Row taps(40);
    taps[25] = 0.5f;
    Row magnitude(129);
    Row phase(129);
    Row delay(129);
    fir.GetGroupDelay(taps.data(), 40, 256, delay.data(), -1.0f);
    for (const float value : delay) {
        EXPECT_NEAR(value, 25.0, 1e-3);
    }
    fir.GetFreqResp(taps.data(), 40, 256, magnitude.data(), phase.data(), true, delay.data());
    for (unsigned bin = 0; bin < 129; ++bin) {
        EXPECT_NEAR(magnitude[bin], 0.5, 1e-5);
        EXPECT_NEAR(phase[bin], -2.0 * M_PI * 25.0 * bin / 256.0, 2e-3);
        EXPECT_NEAR(delay[bin], 25.0, 1e-2);
    }
    Row again(129);
    FIR::RunGetFreqResp(taps.data(), 40, 256, nullptr, again.data(), true, nullptr);
    EXPECT_EQ(again, phase);
    fir.GetPhaseResponse(taps.data(), 40, 256, again.data(), false);
    EXPECT_NEAR(again[3], std::remainder(-2.0 * M_PI * 25.0 * 3 / 256.0, 2.0 * M_PI), 1e-4);

    const Row silence(40);
    fir.GetGroupDelay(silence.data(), 40, 256, delay.data(), -7.0f);
    EXPECT_EQ(delay, Row(129, -7.0f));
    fir.GetPhaseResponse(silence.data(), 40, 256, phase.data(), true);
    EXPECT_EQ(phase, Row(129, 0.0f));
    Row untouched(10, 77.0f);
    fir.GetPhaseResponse(taps.data(), 40, 512, untouched.data(), true);
    fir.GetGroupDelay(taps.data(), 40, 512, untouched.data(), 0.0f);
    fir.GetFreqResp(taps.data(), 40, 512, untouched.data(), nullptr, true, nullptr);
    EXPECT_EQ(untouched, Row(10, 77.0f));
    EXPECT_EQ(fir.getFFTStateIndex(kN).GetValue(), 1u);
    EXPECT_FALSE(fir.getFFTStateIndex(512).IsValid());
    EXPECT_EQ(fir.getDHTStateIndex(4 * kN).GetValue(), 0u);
}

} // namespace
} // namespace tessaro
