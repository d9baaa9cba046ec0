#include <tessaro/dynamics/DynamicsBand.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro::dynamics {

namespace {

using testing::PlanarRows;
using testing::Row;
using testing::ToDecibels;

constexpr float kRate = 48000.0f;
constexpr int kBlock = 480;
constexpr int kDelay = 47;

DynamicsBand MakeBand(unsigned inChannels = 1)
{
    return {kRate, kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(inChannels), kBlock};
}

/// In place, block by block
void Drive(DynamicsBand& ioBand, PlanarRows& ioRows, DynamicsBand::ChannelMask inSkipped = {})
{
    for (std::size_t begin = 0; begin < ioRows.GetLength(); begin += kBlock) {
        const auto count = std::min<std::size_t>(kBlock, ioRows.GetLength() - begin);
        ioBand.ProcessInPlace(static_cast<unsigned>(count), ioRows.From(begin), inSkipped);
    }
}

struct Stage
{
    float mThreshold, mRatio, mAttack, mRelease;
};

void SetStages(DynamicsBand& ioBand, Stage inComp, Stage inLim, Stage inGate)
{
    ioBand.SetCompThreshold(inComp.mThreshold);
    ioBand.SetCompRatio(inComp.mRatio);
    ioBand.SetCompAttack(inComp.mAttack);
    ioBand.SetCompRelease(inComp.mRelease);
    ioBand.SetLimThreshold(inLim.mThreshold);
    ioBand.SetLimRatio(inLim.mRatio);
    ioBand.SetLimAttack(inLim.mAttack);
    ioBand.SetLimRelease(inLim.mRelease);
    ioBand.SetGateThreshold(inGate.mThreshold);
    ioBand.SetGateRatio(inGate.mRatio);
    ioBand.SetGateAttack(inGate.mAttack);
    ioBand.SetGateRelease(inGate.mRelease);
}

/// Far above and below all levels, and without effect on those between
constexpr Stage kNoLimiter = {100, 1, 5, 100};
constexpr Stage kNoGate = {-120, 1, 10, 100};

/// What a level held for a while comes out as; all in dB.
double OutputFor(DynamicsBand& ioBand, double inDecibels, std::size_t inSamples = 48000)
{
    PlanarRows rows(1, inSamples, static_cast<float>(std::pow(10.0, inDecibels / 20.0)));
    Drive(ioBand, rows);
    return ToDecibels(rows[0].back());
}

/// One gain for each sample, as the rules say it, sample by sample and without any short cut.
struct PlainBand
{
    Stage mComp, mLim, mGate;
    bool mRMS = true, mSmoothing = true, mMakeup = false;
    float mOutputGain = 0;

    float Gain(const std::vector<float>& inFrame)
    {
        float peak = 0, meanSquare = 0;
        for (const float x : inFrame) {
            peak = std::max(peak, std::abs(x));
            meanSquare += x * x / static_cast<float>(inFrame.size());
        }
        const float shorter = std::min(mComp.mAttack, mComp.mRelease);
        const float gateShorter = std::min(mGate.mAttack, mGate.mRelease);
        mR = (meanSquare - mR) * (1 - Kept(shorter / 8)) + mR;
        mP = peak > mP ? peak : mP * std::pow(0.03f, 1 / (kRate * 0.05f));
        const float level = std::max(1e-5f, mRMS ? std::sqrt(mR) : mP);

        const float tc = Linear(mComp.mThreshold), tl = Linear(mLim.mThreshold),
                    tg = Linear(mGate.mThreshold);
        const float compExponent = 1 / mComp.mRatio - 1;
        const float gc = level >= tc ? std::pow(level / tc, compExponent) : 1;
        const float gl = level >= tl ? std::pow(level / tl, 1 / mLim.mRatio - 1) : 1;
        const float gg = level < tg ? std::pow(level / tg, mGate.mRatio - 1) : 1;
        if (level <= tg) {
            mX += (gg - mX) * (1 - Kept(mGate.mRelease));
        } else {
            mX = mX * Kept(mGate.mAttack) + 1 - Kept(mGate.mAttack);
        }
        const float target = level >= tl ? gl * std::pow(tl / tc, compExponent) : gc;
        const Stage& stage = level >= tl ? mLim : mComp;
        if (mY > target) {
            mY += (target - mY) * (1 - Kept(stage.mAttack));
        } else {
            mY = mY * Kept(stage.mRelease) + 1 - Kept(stage.mRelease);
        }
        mX2 = mSmoothing ? (mX - mX2) * (1 - Kept(gateShorter / 2)) + mX2 : mX;
        mY2 = mSmoothing ? (mY - mY2) * (1 - Kept(shorter / 2)) + mY2 : mY;
        mLowest = std::min(mLowest, mY2);
        mLowestGate = std::min(mLowestGate, mX2);
        const float v = mX2 * mY2;
        mSum += 1.0 / v / v; // no longer than 4 s
        const auto makeup = static_cast<float>(std::sqrt(mSum / (4 * kRate)));
        return v * Linear(mOutputGain) * (mMakeup ? makeup : 1);
    }

    static float Linear(float inDecibels) { return std::exp(inDecibels * 0.115129255f); }
    static float Kept(float inMillis)
    {
        return inMillis > 0 ? std::exp(-1000 / inMillis / (kRate * 0.5f)) : 0;
    }

    float mLowest = 1, mLowestGate = 1;
    float mP = 0, mR = 0, mX = 1, mX2 = 1, mY = 1, mY2 = 1;
    double mSum = 0;
};

/// Noise in bursts of all levels, other ones in each channel
PlanarRows Bursts(std::size_t inChannels, std::size_t inLength)
{
    auto rows = PlanarRows::OfNoise(inChannels, inLength, 5, 1.0);
    for (std::size_t channel = 0; channel < inChannels; ++channel) {
        for (std::size_t i = 0; i < inLength; ++i) {
            const auto burst = (i / 2000 * 7 + channel * 3) % 11;
            rows[channel][i] *= static_cast<float>(std::pow(10.0, -0.4 * static_cast<double>(burst)));
        }
    }
    return rows;
}

TEST(DynamicsBandTest, FollowsThePlainModelInAllModes)
{
    for (const unsigned mode : {0u, 1u, 2u, 3u, 4u, 7u, 12u, 15u}) {
        SCOPED_TRACE(mode);
        auto band = MakeBand(3);
        PlainBand plain{{-30, 2.5f, 8, 30}, {-12, 20, 1, 50}, {-45, 1.8f, 2, 20}};
        SetStages(band, plain.mComp, plain.mLim, plain.mGate);
        band.SetRMSDetection(plain.mRMS = (mode & 1) != 0);
        band.SetAutoSmoothing(plain.mSmoothing = (mode & 2) != 0);
        band.SetAutoMakeupGain(plain.mMakeup = (mode & 4) != 0);
        band.SetGainReductionEnabled((mode & 8) != 0);
        band.SetOutputGain(plain.mOutputGain = 2.5f);

        const auto input = Bursts(3, 40000);
        auto output = input;
        Drive(band, output, 2); // all but the second channel
        for (std::size_t i = 0; i < input.GetLength(); ++i) {
            const float gain = plain.Gain({input[0][i], input[2][i]});
            const float expected = i < kDelay ? 0.0f : gain * input[2][i - kDelay];
            ASSERT_NEAR(output[2][i], expected, 2e-5 * std::abs(expected) + 1e-9) << i;
            ASSERT_EQ(output[1][i], input[1][i]) << i;
        }
        const double reduction = (mode & 8) != 0 ? plain.mLowest * plain.mLowestGate : 1.0;
        EXPECT_NEAR(band.GetGainReduction(), reduction, 1e-5);
        EXPECT_EQ(band.GetGainReduction(), 1.0f);
    }
}

TEST(DynamicsBandTest, PassesAudioUnchangedButLateByDefault)
{
    auto band = MakeBand(2);
    EXPECT_EQ(band.GetSystemDelay(), kDelay);
    EXPECT_EQ(DynamicsBand::GetSystemDelay(44100.0f), 43);
    const auto input = PlanarRows::OfNoise(2, 9600, 3, 4.0);
    auto output = input;
    Drive(band, output);
    for (std::size_t i = kDelay; i < input.GetLength(); ++i) {
        ASSERT_EQ(output[1][i], input[1][i - kDelay]) << i;
    }
}

TEST(DynamicsBandTest, HasTheCurvesOfItsThreeStages)
{
    struct Point
    {
        double mInput, mOutput;
    };
    // 3:1 from -30 dB, 10:1 from -12 dB where the compressor gives -24 dB, 1:2 below -50 dB
    for (const auto [input, output] : {Point{-70, -90},
                                       {-56, -62},
                                       {-50, -50},
                                       {-40, -40},
                                       {-30, -30},
                                       {-24, -28},
                                       {-12, -24},
                                       {-2, -23}}) {
        auto band = MakeBand();
        SetStages(band, {-30, 3, 10, 100}, {-12, 10, 5, 100}, {-50, 2, 10, 100});
        EXPECT_NEAR(OutputFor(band, input), output, 0.02) << "for " << input << " dB";
    }
    auto band = MakeBand();
    band.SetLimThreshold(-20);
    band.SetLimRatio(std::numeric_limits<float>::infinity());
    EXPECT_NEAR(OutputFor(band, -3), -20, 0.02) << "a limiter alone";
}

TEST(DynamicsBandTest, TimesCountAtHalfTheSamplingRate)
{
    auto band = MakeBand();
    band.SetRMSDetection(false);
    band.SetAutoSmoothing(false);
    SetStages(band, {-20, 2, 20, 50}, kNoLimiter, kNoGate);
    const float decay = band.GetFactorDetection();
    const double settled = std::pow(10.0, -0.5); // 20 dB over the threshold at 2:1
    EXPECT_NEAR(OutputFor(band, 0, 480), ToDecibels(settled + (1 - settled) / M_E), 0.02) << "10 ms";
    EXPECT_NEAR(OutputFor(band, 0), ToDecibels(settled), 0.02);
    // 2 dB over the threshold the curve is at -1 dB; the gain rises towards 0 dB all the same.
    band.SetFactorDetection(0.5f);
    EXPECT_NEAR(OutputFor(band, -18, 1200) + 18, ToDecibels(1 - (1 - settled) / M_E), 0.02) << "25 ms";
    band.SetFactorDetection(decay);
    EXPECT_NEAR(OutputFor(band, -18) + 18, -1, 0.02);
}

TEST(DynamicsBandTest, LevelsAtTheThresholdsAreAboveForTheLimiterAndNotAboveForTheGate)
{
    constexpr float kNever = 1e6f;
    auto band = MakeBand();
    band.SetRMSDetection(false);
    band.SetAutoSmoothing(false);
    SetStages(band, {0, 1, 10, kNever}, {0, 2, 5, 0}, kNoGate);
    (void)OutputFor(band, 12);
    band.SetFactorDetection(0.0f);
    EXPECT_NEAR(OutputFor(band, -1, 480), -7, 0.2) << "below, by the compressor's release";
    EXPECT_NEAR(OutputFor(band, 0, 480), 0, 1e-4) << "at the threshold, by the limiter's";

    for (const auto& [level, output] : {std::pair(0.0, 0.0), std::pair(1.0, -5.0)}) {
        auto gate = MakeBand();
        gate.SetRMSDetection(false);
        gate.SetAutoSmoothing(false);
        SetStages(gate, {100, 1, 10, 100}, kNoLimiter, {0, 2, kNever, 0});
        EXPECT_NEAR(OutputFor(gate, -6, 480), -12, 0.02);
        gate.SetFactorDetection(1.0f);
        EXPECT_NEAR(OutputFor(gate, level, 480), output, 0.02) << "by release at the threshold only";
    }
}

TEST(DynamicsBandTest, MakeupRestoresTheLevelAfterFourSecondsAndItsSumOutlivesReset)
{
    auto band = MakeBand();
    band.SetAutoMakeupGain(true);
    band.SetCompThreshold(-30);
    band.SetCompRatio(3);
    EXPECT_NEAR(OutputFor(band, -9, 48000), -9 - 6.02, 0.1) << "a quarter of the time";
    EXPECT_NEAR(OutputFor(band, -9, 4 * 48000), -9, 0.01);
    EXPECT_NEAR(OutputFor(band, -9, 7 * 48000), -9, 0.01);
    band.Reset();
    EXPECT_NEAR(OutputFor(band, -9, 5 * 48000), -9 + 3.01, 0.01);
    band.SetSampleRate(44100);
    EXPECT_NEAR(OutputFor(band, -9, 5 * 44100), -9, 0.01) << "another rate starts anew";
}

TEST(DynamicsBandTest, MakeupSurvivesWhatIsNotANumberAndClosedGates)
{
    for (const float poison :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        for (const bool hasRMS : {false, true}) {
            auto band = MakeBand();
            band.SetAutoMakeupGain(true);
            band.SetRMSDetection(hasRMS);
            band.SetCompRatio(3);
            band.SetCompThreshold(-30);
            PlanarRows rows(1, 4800, poison);
            Drive(band, rows);
            band.Reset();
            EXPECT_NEAR(OutputFor(band, -30, 9 * 48000), -30, 0.15) << poison << hasRMS;
        }
    }
    auto band = MakeBand();
    band.SetAutoMakeupGain(true);
    band.SetGateThreshold(-40);
    band.SetGateRatio(100);
    PlanarRows silence(1, 5 * 48000);
    Drive(band, silence);
    EXPECT_TRUE(std::isfinite(OutputFor(band, -20)));
    EXPECT_NEAR(OutputFor(band, -20, 9 * 48000), -20, 0.01) << "once the silence is over";
}

TEST(DynamicsBandTest, LevelsAreThePeaksOfTheLatestBlockOfEachChannel)
{
    auto band = MakeBand(2);
    PlanarRows loud(2, 10, 0.5f), soft(2, 10, -0.25f);
    Drive(band, loud);
    Drive(band, soft, 2);
    std::vector<float> tooFew(1, 7.0f), levels(2);
    band.GetLevels(tooFew);
    EXPECT_EQ(tooFew[0], 7.0f);
    band.GetLevels(levels);
    EXPECT_EQ(levels, (std::vector<float>{0.25f, 0.5f}));
    band.GetLevels(levels);
    EXPECT_EQ(levels, (std::vector<float>{0.0f, 0.0f}));
}

TEST(DynamicsBandTest, LeavesSkippedOutputRowsAloneButDelaysOn)
{
    auto band = MakeBand(2);
    auto input = PlanarRows::OfNoise(2, 100, 4);
    PlanarRows output(2, 100, 9.0f);
    band.Process(100, input.From(0), output.From(0), 1);
    EXPECT_EQ(output[0], Row(100, 9.0f));
    EXPECT_EQ(output[1][99], input[1][99 - kDelay]);
    band.Process(10, input.From(0), output.From(0), {});
    EXPECT_EQ(output[0][0], input[0][100 - kDelay]);
    band.Process(10, input.From(0), output.From(0), ~std::uint64_t{0});
}

TEST(DynamicsBandTest, KeepsTheThresholdsOfTheDisplayInOrder)
{
    auto band = MakeBand();
    const auto ordered = [&] {
        const auto thresholds = band.GetOrderedThresholds();
        return std::vector<float>{thresholds.mLimiter, thresholds.mCompressor, thresholds.mGate};
    };
    using Thresholds = std::vector<float>;
    using Setter = void (DynamicsBand::*)(float);
    constexpr Setter kLim = &DynamicsBand::SetLimThreshold, kComp = &DynamicsBand::SetCompThreshold,
                     kGate = &DynamicsBand::SetGateThreshold;
    for (const auto& [setter, value, expected] : {std::tuple(kComp, -20, Thresholds{0, -20, -120}),
                                                  {kGate, -10, {0, -10, -10}},
                                                  {kLim, -30, {-30, -30, -30}},
                                                  {kComp, -25, {-25, -25, -30}},
                                                  {kGate, 5, {5, 5, 5}},
                                                  {kComp, -40, {5, -40, -40}}}) {
        (band.*setter)(static_cast<float>(value));
        EXPECT_EQ(ordered(), expected);
    }
    EXPECT_EQ(band.GetLimThreshold(), -30.0f);
    EXPECT_EQ(band.GetCompThreshold(), -40.0f);
    EXPECT_EQ(band.GetGateThreshold(), 5.0f);
}

TEST(DynamicsBandTest, DetectionFallsToThreePercentInFiftyMillisecondsUnlessOverridden)
{
    auto band = MakeBand();
    EXPECT_NEAR(std::pow(band.GetFactorDetection(), 2400.0), 0.03, 1e-4);
    band.SetFactorDetection(0.5f);
    band.SetMaxProcessingBlockSize(kBlock);
    EXPECT_EQ(band.GetFactorDetection(), 0.5f);
    band.SetMaxProcessingBlockSize(kBlock + 1);
    EXPECT_NEAR(std::pow(band.GetFactorDetection(), 2400.0), 0.03, 1e-4) << "all factors are made anew";
}

} // namespace

} // namespace tessaro::dynamics
