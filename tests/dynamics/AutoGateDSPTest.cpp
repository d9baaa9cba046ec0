#include <tessaro/dynamics/AutoGateDSP.h>

#include <algorithm>
#include <cmath>
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
constexpr unsigned kBlock = 480;
constexpr unsigned kDelay = 479;

AutoGateDSP MakeGate(unsigned inChannels = 1, bool inIsBlockMode = false)
{
    return {kRate, kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(inChannels), kBlock,
            inIsBlockMode};
}

void Drive(AutoGateDSP& ioGate, PlanarRows& ioRows, AutoGateDSP::ChannelMask inSkipped = {})
{
    for (std::size_t begin = 0; begin < ioRows.GetLength(); begin += kBlock) {
        const auto count = std::min<std::size_t>(kBlock, ioRows.GetLength() - begin);
        ioGate.Process(static_cast<unsigned>(count), ioRows.From(begin), ioRows.From(begin), inSkipped);
    }
}

/// The lowest gain of a stretch of one level.
double LowestGain(AutoGateDSP& ioGate, float inLevel, std::size_t inSamples)
{
    PlanarRows rows(1, inSamples, inLevel);
    ioGate.EnableGainReductionMeasurement(true);
    Drive(ioGate, rows);
    return ioGate.GetGainReduction();
}

/// One gain for each sample, as the rules say it.
class PlainGate
{
public:
    PlainGate(bool inRMS, bool inIsBlockMode) : mRMS(inRMS), mIsBlockMode(inIsBlockMode) {}

    static constexpr float kThreshold = -20, kRatio = 3, kAttack = 0.05f, kRelease = 4;
    static constexpr unsigned kHoldSamples = 143; // 3 ms

    std::vector<float> Gains(const std::vector<Row>& inBlock)
    {
        const float threshold = Linear(kThreshold);
        Row signal(inBlock[0].size());
        for (std::size_t i = 0; i < signal.size(); ++i) {
            for (const auto& row : inBlock) {
                const auto square = row[i] * row[i] / static_cast<float>(inBlock.size());
                signal[i] = mRMS ? signal[i] + square : std::max(signal[i], std::abs(row[i]));
            }
        }
        float m = *std::max_element(signal.begin(), signal.end());
        m = mRMS ? std::sqrt(m) : m;
        float e = 1, c = Kept(kAttack);
        if (mIsBlockMode && m < threshold) {
            const float d = m < 1e-20f ? -400 : 20 * std::log10(m);
            e = Linear((d - kThreshold) * kRatio + kThreshold - d);
            c = 1 - Kept(kRelease);
        } else if (!mIsBlockMode && !mSeen) {
            mGain = m > threshold ? 1 : 0;
            mSeen = true;
        }
        for (float& x : signal) {
            mS = mRMS ? (x - mS) * (1 - std::exp(-8000 / (kRate * 0.5f))) + mS : mS;
            x = Step(mRMS ? std::sqrt(mS) : x, threshold, e, c);
        }
        return signal;
    }

private:
    float Step(float inLevel, float inThreshold, float inE, float inC)
    {
        if (mIsBlockMode) {
            mGain += (inE - mGain) * inC;
        } else if (inLevel > inThreshold) {
            mGain = mGain * Kept(kAttack) + 1 - Kept(kAttack);
            mHold = kHoldSamples;
        } else if (mHold != 0) {
            --mHold;
        } else {
            const float curve = inLevel < 1e-8f ? 0 : std::pow(inLevel / inThreshold, kRatio - 1);
            mGain += (curve - mGain) * (1 - Kept(kRelease));
        }
        return mGain;
    }
    static float Linear(float inDecibels) { return std::exp(inDecibels * 0.115129255f); }
    static float Kept(float inMillis) { return std::exp(-1000 / inMillis / (kRate * 0.5f)); }

    bool mRMS, mIsBlockMode;
    float mGain = 1, mS = 0;
    unsigned mHold = 0;
    bool mSeen = false;
};

TEST(AutoGateDSPTest, FollowsThePlainModelInAllModes)
{
    for (const bool isBlockMode : {false, true}) {
        for (const bool hasRMS : {false, true}) {
            SCOPED_TRACE(::testing::Message() << isBlockMode << hasRMS);
            auto gate = MakeGate(3, isBlockMode);
            PlainGate plain(hasRMS, isBlockMode);
            gate.SetThreshold(PlainGate::kThreshold);
            gate.SetRatio(PlainGate::kRatio);
            gate.SetAttack(PlainGate::kAttack);
            gate.SetRelease(PlainGate::kRelease);
            gate.SetHold(3);
            gate.SetRMSDetection(hasRMS);
            auto input = PlanarRows::OfNoise(3, 40 * kBlock, 8, 1.0);
            for (std::size_t i = 0; i < input.GetLength(); ++i) {
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    input[channel][i] *=
                        static_cast<float>(std::pow(0.3, static_cast<double>(i / 900 * 5 % 7)));
                }
            }
            auto output = input;
            Drive(gate, output, 2); // all but the second channel
            for (std::size_t begin = 0; begin < input.GetLength(); begin += kBlock) {
                std::vector<Row> block;
                for (const std::size_t channel : {0, 2}) {
                    const auto start = input[channel].begin() + static_cast<std::ptrdiff_t>(begin);
                    block.emplace_back(start, start + kBlock);
                }
                const auto gains = plain.Gains(block);
                for (std::size_t i = 0; i < kBlock && begin > 0; ++i) {
                    const float expected = gains[i] * input[2][begin + i - kDelay];
                    ASSERT_NEAR(output[2][begin + i], expected, 3e-5 * std::abs(expected) + 1e-8)
                        << begin + i;
                    ASSERT_EQ(output[1][begin + i], input[1][begin + i]);
                }
            }
        }
    }
}

TEST(AutoGateDSPTest, TheFirstBlockDecidesHowItStarts)
{
    for (const bool hasRMS : {false, true}) {
        auto gate = MakeGate();
        gate.SetRMSDetection(hasRMS);
        gate.SetThreshold(-20);
        gate.SetAttack(1e6f);
        gate.SetHold(100);
        PlanarRows nothing(1, 0), loud(1, 10, 0.2f), silence(1, 10);
        EXPECT_EQ(gate.GetState(), AutoGateState::kNone);
        gate.Process(0, nothing.From(0), nothing.From(0), {});
        EXPECT_EQ(LowestGain(gate, 0.2f, 10), 1.0) << "open at once, in spite of the long attack";
        EXPECT_EQ(LowestGain(gate, 0.0f, 10), 1.0) << "then held";
        gate.Reset();
        EXPECT_EQ(gate.GetState(), AutoGateState::kNone);
        EXPECT_EQ(LowestGain(gate, 0.0f, 10), 0.0) << "closed at once, and Reset ends the hold";
        EXPECT_EQ(gate.GetState(), AutoGateState::kClosed);
        EXPECT_LT(LowestGain(gate, 0.2f, 480), 0.01) << "opens by attack then";
        gate.SetAudioChannelLayout(kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(1));
        EXPECT_NE(gate.GetState(), AutoGateState::kNone) << "the same layout";
        gate.SetSampleRate(kRate);
        EXPECT_EQ(gate.GetState(), AutoGateState::kNone) << "a rate, be it the same, resets";
        (void)LowestGain(gate, 0.0f, 10);
        gate.SetMaxProcessingBlockSize(kBlock);
        EXPECT_EQ(gate.GetState(), AutoGateState::kNone) << "so does a block size";
    }
}

TEST(AutoGateDSPTest, HoldsForAsManySamplesAsItSaysAndTellsItsState)
{
    auto gate = MakeGate();
    EXPECT_EQ(gate.GetLatency(), static_cast<int>(kDelay));
    gate.SetRMSDetection(false);
    gate.SetThreshold(-20);
    gate.SetRelease(0);
    gate.SetHold(20); // 959 samples
    (void)LowestGain(gate, 0.5f, kDelay);
    EXPECT_EQ(gate.GetState(), AutoGateState::kClosed) << "what comes out is the silence before";
    (void)LowestGain(gate, 0.5f, 480);
    EXPECT_EQ(gate.GetState(), AutoGateState::kOpen);
    EXPECT_EQ(LowestGain(gate, 0.0f, 480), 1.0);
    EXPECT_EQ(gate.GetState(), AutoGateState::kOpen) << "the rest of the sound comes out";
    EXPECT_EQ(LowestGain(gate, 0.0f, 478), 1.0);
    EXPECT_EQ(gate.GetState(), AutoGateState::kHold);
    EXPECT_EQ(LowestGain(gate, 0.0f, 1), 1.0) << "the last sample of hold";
    EXPECT_EQ(gate.GetState(), AutoGateState::kHold);
    EXPECT_EQ(LowestGain(gate, 0.0f, 1), 0.0);
    EXPECT_EQ(gate.GetState(), AutoGateState::kClosed);

    gate.SetHold(0);
    (void)LowestGain(gate, 0.5f, 480);
    EXPECT_EQ(LowestGain(gate, 0.0f, 1), 0.0) << "no hold";
}

TEST(AutoGateDSPTest, TimesCountAtHalfTheSamplingRateAndThresholdsAreNotAbove)
{
    auto gate = MakeGate();
    gate.SetRMSDetection(false);
    gate.SetHold(0);
    gate.SetRelease(20);
    gate.SetRatio(2);
    EXPECT_LT(LowestGain(gate, 1.0f, 1), 0.01) << "starts closed at the threshold";
    (void)LowestGain(gate, 2.0f, 960);
    EXPECT_NEAR(LowestGain(gate, 0.5f, 480), 0.5 + 0.5 / M_E, 1e-3) << "10 ms";
    EXPECT_NEAR(LowestGain(gate, 0.5f, 48000), 0.5, 1e-4) << "6 dB below 0 dB at 1:2";
    gate.SetRelease(0);
    gate.SetAttack(1e6f);
    (void)LowestGain(gate, 1.0f, 1);
    EXPECT_EQ(LowestGain(gate, 1.0f, 1), 1.0) << "at the threshold by release, to 1";
}

TEST(AutoGateDSPTest, ABlockModeAttackStepsByWhatItsSmootherKeeps)
{
    for (const auto& [attack, gain] : {std::pair(1000.0f, 1.0), {0.01f, 0.5 + 0.5 * 0.0155}, {0.0f, 1.0}}) {
        auto gate = MakeGate(1, true);
        gate.SetThreshold(-20);
        gate.SetRatio(2);
        gate.SetRelease(0);
        gate.SetAttack(attack);
        EXPECT_NEAR(LowestGain(gate, 0.05f, 480), 0.5, 1e-4) << "6 dB below the threshold at 1:2";
        EXPECT_NEAR(LowestGain(gate, 0.2f, 1), gain, 1e-3) << "after one sample of an attack of " << attack;
        gate.SetRatio(1.05f);
        EXPECT_NEAR(ToDecibels(LowestGain(gate, 0.0f, 480)), -19, 1e-3) << "380 dB below it at 1:1.05";
    }
}

TEST(AutoGateDSPTest, SkippedRowsAreZeroedOrLeftAloneInPlaceButDelayedOn)
{
    auto gate = MakeGate(2);
    gate.SetRatio(1);
    auto input = PlanarRows::OfNoise(2, kBlock, 4, 2.0);
    PlanarRows output(2, kBlock, 9.0f);
    auto inPlace = input;
    gate.Process(kBlock, input.From(0), output.From(0), 1);
    EXPECT_EQ(output[0], Row(kBlock, 0.0f));
    Drive(gate, inPlace, 3);
    EXPECT_EQ(inPlace, input);
    gate.Process(kBlock, input.From(0), output.From(0), {});
    EXPECT_NEAR(output[0][0], input[0][1], 1e-6);
}

TEST(AutoGateDSPTest, MeasuresGainReductionOnlyWhenToldTo)
{
    auto gate = MakeGate();
    PlanarRows silence(1, 480);
    Drive(gate, silence);
    EXPECT_EQ(gate.GetGainReduction(), 1.0f);
    EXPECT_EQ(LowestGain(gate, 0.0f, 480), 0.0);
    EXPECT_EQ(gate.GetGainReduction(), 1.0f);
}

} // namespace

} // namespace tessaro::dynamics
