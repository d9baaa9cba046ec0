#include <tessaro/eq/ParametricEQ.h>

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace eq {

namespace {

using kestrin::AudioChannelDescription;
using tessaro::testing::PlanarRows;
using tessaro::testing::Row;

constexpr int kBlock = 512;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

auto Layout(unsigned inChannels)
{
    return AudioChannelDescription::CreateDiscreteChannelLayout(inChannels);
}

void RunBlocks(ParametricEQ& ioEQ, PlanarRows& ioRows)
{
    for (std::size_t done = 0; done < ioRows.GetLength(); done += kBlock) {
        const auto count = std::min<std::size_t>(kBlock, ioRows.GetLength() - done);
        ioEQ.ProcessInPlace(static_cast<unsigned>(count), ioRows.From(done));
    }
}

Row Impulse(ParametricEQ& ioEQ, std::size_t inLength = 30000)
{
    PlanarRows rows({tessaro::testing::MakeImpulse(inLength)});
    RunBlocks(ioEQ, rows);
    return rows[0];
}

double Magnitude(const double* inTaps, double inFrequency)
{
    const auto z = std::polar(1.0, -2.0 * std::numbers::pi * inFrequency);
    return std::abs((inTaps[0] + z * (inTaps[1] + z * inTaps[2])) /
                    (inTaps[3] + z * (inTaps[4] + z * inTaps[5])));
}

TEST(ParametricEQTest, ImpulseHasTheResponseOfTheBandsInSeries)
{
    for (const double rate : tessaro::testing::kSampleRates) {
        ParametricEQ equalizer(kBlock, static_cast<float>(rate), Layout(1));
        equalizer.SetBandEnable(0, true);
        equalizer.SetFrequency(0, 200.0f);
        equalizer.SetGain(1, 6.0f);
        equalizer.SetFrequency(3, 1000.0f);
        equalizer.SetGain(3, -12.0f);
        equalizer.SetQ(3, 2.0f);
        equalizer.SetBandEnable(5, true);
        const auto impulse = Impulse(equalizer);
        const struct
        {
            unsigned shape;
            float frequency, gain, q;
        } bands[] = {{2, 200, 0, 0.7f}, {0, 180, 6, 0.3f}, {0, 1000, -12, 2.0f}, {1, 10000, 0, 0.7f}};
        for (const double frequency : {40.0, 200.0, 700.0, 1000.0, 5000.0, 10000.0, 18000.0}) {
            double wanted = 1.0;
            for (const auto& band : bands) {
                double taps[6];
                ParametricEQ::CalculateIIRCoefficients(taps, static_cast<float>(rate), band.shape,
                                                       band.frequency, band.gain, band.q);
                wanted *= Magnitude(taps, frequency / rate);
            }
            EXPECT_NEAR(tessaro::testing::MagnitudeOfImpulse(impulse, frequency / rate), wanted, 1e-4)
                << frequency << " of " << rate;
        }
    }
}

TEST(ParametricEQTest, PeaksHaveTheirGainAtTheCentreAndHalfOfItsDecibelsAtTheEdges)
{
    constexpr double kRate = 48000.0;
    ParametricEQ equalizer(kBlock, 48000.0f, Layout(1));
    equalizer.SetFrequency(2, 1000.0f);
    equalizer.SetQ(2, 4.0f);
    equalizer.SetGain(2, 12.0f);
    const auto impulse = Impulse(equalizer);
    const auto decibels = [&](double inFrequency) {
        return tessaro::testing::Decibels(tessaro::testing::MagnitudeOfImpulse(impulse, inFrequency / kRate));
    };
    EXPECT_NEAR(decibels(1000.0), 12.0, 0.001);
    const double halfWidth = 1.0 / 8.0;
    EXPECT_NEAR(decibels(1000.0 * (std::sqrt(1.0 + halfWidth * halfWidth) + halfWidth)), 6.0, 0.02);
    EXPECT_NEAR(decibels(20.0), 0.0, 0.01);

    // As a low-pass of the same Q, the corner rises by that Q.
    equalizer.Reset();
    equalizer.SetBandShape(2, ParametricEQ::kLowpass);
    EXPECT_NEAR(tessaro::testing::MagnitudeOfImpulse(Impulse(equalizer), 1000.0 / kRate), 4.0, 0.001);
}

TEST(ParametricEQTest, AddsAFaintSquareWaveThatStartsAnewWithEachBlock)
{
    // No band has a gain, so nothing else happens.
    ParametricEQ equalizer(kBlock, 48000.0f, Layout(3));
    PlanarRows rows(3, 2 * kBlock - 100);
    RunBlocks(equalizer, rows);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const float offset = channel == 1 ? 2e-10f : 1e-10f;
        for (std::size_t i = 0; i < rows.GetLength(); ++i) {
            ASSERT_EQ(rows[channel][i], (i % kBlock) / 128 % 2 == 0 ? offset : -offset)
                << channel << ":" << i;
        }
    }
    ParametricEQ nothing(kBlock, 48000.0f, {});
    nothing.ProcessInPlace(kBlock, nullptr);
}

/// A constant rests in the memory of a peaking band: whoever clears it starts with another sample.
bool KeepsHistory(unsigned inBand, void (*inChange)(ParametricEQ&))
{
    ParametricEQ equalizer(kBlock, 48000.0f, Layout(1));
    equalizer.SetGain(2, -20.0f);
    equalizer.SetFrequency(2, 1000.0f);
    equalizer.SetBandEnable(inBand, true);
    PlanarRows rows(1, 40 * kBlock, 0.5f);
    RunBlocks(equalizer, rows);
    inChange(equalizer);
    PlanarRows next(1, 1, 0.5f);
    RunBlocks(equalizer, next);
    return std::abs(next[0][0] - 0.5f) < 1e-4f;
}

TEST(ParametricEQTest, OnlyLargeMovesAndResetClearTheMemory)
{
    using EQ = ParametricEQ;
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetFrequency(2, 1990.0f); }));
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetFrequency(2, 505.0f); }));
    EXPECT_FALSE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetFrequency(2, 2000.0f); }));
    EXPECT_FALSE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetFrequency(2, 490.0f); }));
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetFrequency(3, 50.0f); })) << "of another band";
    EXPECT_FALSE(KeepsHistory(2, [](EQ& ioEQ) {
        ioEQ.SetFrequency(2, kNaN);
        ioEQ.SetFrequency(2, 1000.0f);
    })) << "a move from NaN is no small one";
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetQ(2, 0.9f); }));
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.SetGain(2, 20.0f); }));
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) {
        ioEQ.SetBandShape(2, EQ::kLowpass);
        ioEQ.SetQ(2, 0.5f);
    }));
    EXPECT_TRUE(KeepsHistory(2, [](EQ& ioEQ) {
        ioEQ.SetBandEnable(2, false);
        PlanarRows rows(1, 3, -0.7f);
        RunBlocks(ioEQ, rows);
        ioEQ.SetBandEnable(2, true);
    })) << "a band that is out stands still";
    EXPECT_FALSE(KeepsHistory(2, [](EQ& ioEQ) { ioEQ.Reset(); }));
}

TEST(ParametricEQTest, OnlyANewConfigurationPutsTheBandsBack)
{
    const auto change = [](auto inChange) {
        ParametricEQ equalizer(kBlock, 48000.0f, Layout(1));
        equalizer.SetGain(2, 6.0f);
        inChange(equalizer);
        const auto impulse = Impulse(equalizer, 100);
        return impulse[0] != 1.0f; // bands of the table pass everything
    };
    using EQ = ParametricEQ;
    EXPECT_TRUE(change([](EQ& ioEQ) { ioEQ.SetSampleRate(48000.0f); }));
    EXPECT_TRUE(change([](EQ& ioEQ) { ioEQ.SetMaxProcessingBlockSize(kBlock); }));
    EXPECT_TRUE(change([](EQ& ioEQ) { ioEQ.SetAudioChannelLayout(Layout(1)); }));
    EXPECT_FALSE(change([](EQ& ioEQ) { ioEQ.SetSampleRate(96000.0f); }));
    EXPECT_FALSE(change([](EQ& ioEQ) { ioEQ.SetMaxProcessingBlockSize(2 * kBlock); }));
    EXPECT_FALSE(change(
        [](EQ& ioEQ) { ioEQ.SetAudioChannelLayout(AudioChannelDescription::CreateMonoChannelLayout()); }));
    EXPECT_FALSE(change([](EQ& ioEQ) { ioEQ.SetGain(2, 0.0f); })) << "bypassed at 0 dB";
    EXPECT_FALSE(change([](EQ& ioEQ) {
        ioEQ.SetGain(2, 0.0f);
        ioEQ.SetBandShape(2, 7);
        ioEQ.SetGain(2, 6.0f);
    })) << "an unknown shape leaves the bypass as it was";
    EXPECT_TRUE(change([](EQ& ioEQ) {
        ioEQ.SetGain(2, 0.0f);
        ioEQ.SetBandShape(2, EQ::kLowpass);
    })) << "a low-pass has no gain to be bypassed by";
}

TEST(ParametricEQTest, SettingsOutOfRangeFollowTheDesigns)
{
    ParametricEQ equalizer(kBlock, 48000.0f, Layout(1));
    equalizer.SetBandEnable(5, true);
    equalizer.SetFrequency(5, 30000.0f);
    EXPECT_NEAR(Impulse(equalizer, 100)[0], 1.0f, 1e-6f) << "a low-pass above half the rate passes";
    equalizer.SetBandEnable(0, true);
    equalizer.SetFrequency(0, 30000.0f);
    EXPECT_EQ(Impulse(equalizer, 100), Row(100)) << "a high-pass there mutes";
    equalizer.SetFrequency(0, 30.0f);
    equalizer.SetGain(3, kNaN);
    EXPECT_TRUE(std::isnan(Impulse(equalizer, 100)[0])) << "NaN is not 0 dB";
    equalizer.SetGain(3, 3.0f);
    equalizer.Reset();
    EXPECT_TRUE(tessaro::testing::AreAllFinite(Impulse(equalizer, 100)));

    double taps[6] = {7.0, 7.0, 7.0, 7.0, 7.0, 7.0};
    ParametricEQ::CalculateIIRCoefficients(taps, 48000.0f, 3, 1000.0f, 3.0f, 1.0f);
    EXPECT_EQ(taps[0], 7.0) << "no such shape";
}

TEST(ParametricEQTest, ChannelsDoNotMeetAndNothingAllocates)
{
    ParametricEQ equalizer(kBlock, 48000.0f, Layout(5));
    auto rows = PlanarRows::OfNoise(5, 4000, 3);
    auto alone = rows;
    {
        tessaro::testing::AllocationGuard guard;
        equalizer.SetGain(1, 3.0f);
        equalizer.SetFrequency(4, 3000.0f);
        equalizer.SetGain(4, -9.0f);
        equalizer.SetQ(4, 5.0f);
        equalizer.SetBandShape(5, ParametricEQ::kPeaking);
        equalizer.SetBandEnable(5, true);
        equalizer.Reset();
        RunBlocks(equalizer, rows);
    }
    for (std::size_t channel = 0; channel < 5; ++channel) {
        ParametricEQ single(kBlock, 48000.0f, Layout(1));
        single.SetGain(1, 3.0f);
        single.SetFrequency(4, 3000.0f);
        single.SetGain(4, -9.0f);
        single.SetQ(4, 5.0f);
        PlanarRows row({alone[channel]});
        RunBlocks(single, row);
        EXPECT_LT(tessaro::testing::NullDepthInDecibels(row[0], rows[channel]), -140.0) << channel;
    }
}

} // namespace

} // namespace eq
