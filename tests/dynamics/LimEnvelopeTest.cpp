#include <tessaro/dynamics/LimEnvelope.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::AllocationGuard;
using testing::MakeNoise;
using testing::Row;

constexpr float kRate = 8000.0f;

struct Mode
{
    float mLookAhead;
    float mRelease;
    float mLongWindow;
    float mCharacter;
};

constexpr Mode kModes[] = {{0.0f, 0.1f, 0.006f, 0.0f},     {0.0007f, 0.1f, 0.006f, 0.5f},
                           {0.002f, 0.115f, 0.006f, 1.0f}, {0.003f, 0.0f, 0.004f, 0.2f},
                           {0.0037f, 0.13f, 0.006f, 1.5f}, {0.002f, 0.1f, 0.0f, 0.5f}};

LimEnvelope MakeEnvelope(const Mode& inMode, bool inDouble, bool inConstrain = true)
{
    LimEnvelope envelope;
    envelope.StartNewStream(kRate, 100);
    envelope.EnableDoubleCurve(inDouble);
    if (inConstrain) {
        envelope.ConstrainLatency(0.0036742f, 0.006f);
    }
    envelope.SetMode(inMode.mLookAhead, inMode.mRelease, inMode.mLongWindow);
    envelope.SetCharacter(inMode.mCharacter);
    return envelope;
}

/// In blocks that do not divide the rings, some of them above the stream's maximum
Row Envelope(LimEnvelope& ioEnvelope, const Row& inLevels, const Row& inWeights)
{
    Row output(inLevels.size());
    const AllocationGuard guard;
    for (std::size_t done = 0, block = 1; done < output.size(); block = block * 7 % 733) {
        const auto count = std::min(block, output.size() - done);
        ioEnvelope.Process(inLevels.data() + done, output.data() + done, static_cast<int>(count),
                           inWeights.data() + done);
        done += count;
    }
    return output;
}

/// Levels of music in passages: silence, dense peaks, single ones, a plateau, silence, dense peaks
Row MakeLevels(std::size_t inLength)
{
    auto levels = MakeNoise(inLength, 7, 12.0);
    for (std::size_t i = 0; i < inLength; ++i) {
        const auto passage = i * 5 / inLength;
        const bool sounds = (passage == 0 && i > 200) || (passage == 1 && i % 501 == 0) || passage == 4;
        levels[i] = passage == 2 ? 6.0f : sounds ? std::max(levels[i], 0.0f) : 0.0f;
    }
    return levels;
}

Row MakeWeights(std::size_t inLength)
{
    auto weights = MakeNoise(inLength, 8);
    for (std::size_t i = 0; i < inLength; ++i) {
        weights[i] = i / 300 % 3 == 0 ? std::abs(weights[i]) : i / 300 % 3 == 1 ? 0.0f : 1.0f;
    }
    return weights;
}

/// The curve of the definition, with everything in place instead of late, and slowly.
class SlowEnvelope
{
public:
    SlowEnvelope(const Mode& inMode, std::size_t inLength)
        : mMode(inMode), mLength(static_cast<int>(inLength))
    {
    }

    [[nodiscard]] Row Make(const Row& inLevels, const Row& inWeights) const
    {
        const int reach = Samples(std::min(mMode.mLookAhead, 0.0036742f));
        const int fastReach = Samples(0.2 * std::min(mMode.mLookAhead, 0.0036742f));
        const auto main = Smooth(Combine(Hold(inLevels, reach), reach), reach);
        const auto fast = Smooth(Hold(inLevels, fastReach), fastReach);
        const auto weight = Smooth(Hold(inWeights, reach), reach);
        Row result(inLevels.size());
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = main[i] + (fast[i] - main[i]) * weight[i];
        }
        return result;
    }

private:
    static int Samples(double inSeconds) { return static_cast<int>(std::lround(inSeconds * kRate)); }
    [[nodiscard]] float At(const Row& inRow, int inIndex) const
    {
        return inIndex < 0 || inIndex >= mLength ? 0.0f : inRow[static_cast<std::size_t>(inIndex)];
    }

    [[nodiscard]] Row Hold(const Row& inRow, int inReach) const
    {
        Row held;
        for (int i = 0; i < mLength; ++i) {
            held.push_back(0.0f);
            for (int k = i - inReach; k <= i + inReach; ++k) {
                held.back() = std::max(held.back(), At(inRow, k));
            }
        }
        return held;
    }

    [[nodiscard]] Row Smooth(const Row& inRow, int inHalfWidth) const
    {
        Row smooth;
        const double window = 2 * inHalfWidth + 1;
        for (int i = 0; i < mLength; ++i) {
            double sum = 0.0;
            for (int k = -inHalfWidth; k <= inHalfWidth; ++k) {
                sum += At(inRow, i + k) * (1.0 + std::cos(2.0 * std::numbers::pi * k / window)) / window;
            }
            smooth.push_back(inHalfWidth == 0 ? At(inRow, i) : static_cast<float>(sum));
        }
        return smooth;
    }

    /// The share of the slow release at a sample is what the follower has a quarter of a window later. It
    /// starts as early as the first sample is seen.
    [[nodiscard]] Row Combine(const Row& inHeld, int inReach) const
    {
        const int halfWidth = Samples(mMode.mLongWindow);
        if (halfWidth == 0) {
            return inHeld;
        }
        const double q = mMode.mCharacter > 1.0f ? 2.0 * mMode.mCharacter - 1.0 : mMode.mCharacter;
        const double offset = std::clamp((q - 0.5) * 0.7, 0.0, 0.9);
        const double highest = std::min(1.0, std::pow(mMode.mCharacter / 0.3, 2.0));
        const double decay = mMode.mRelease > 0.0f ? std::exp(-1.0 / (mMode.mRelease * kRate)) : 0.0;
        double falling = 0.0;
        Row slow;
        Row activity;
        for (int i = 0; i < mLength; ++i) {
            falling = std::max(double{At(inHeld, i)}, decay * falling);
            slow.push_back(static_cast<float>(falling));
            activity.push_back(std::abs(At(inHeld, i) - At(inHeld, i - 1)));
        }
        activity = Smooth(activity, halfWidth);
        double share = 0.0;
        Row combined = inHeld;
        for (int i = -halfWidth - inReach; i < mLength; ++i) {
            const double busy = At(activity, i) * 9.0 * std::exp(2.0 * q) + offset;
            const double target = std::clamp(busy, 0.0, 1.0) * highest;
            share += (target - share) * (1.0 - std::exp(-1.0 / ((target > share ? 0.05 : 0.01) * kRate)));
            const int place = i - (halfWidth * 3 / 2 - halfWidth);
            if (place >= 0) {
                auto& value = combined[static_cast<std::size_t>(place)];
                value = std::max(value, static_cast<float>(At(slow, place) * share));
            }
        }
        return combined;
    }

    Mode mMode;
    int mLength;
};

TEST(LimEnvelopeTest, MatchesTheSlowCurveOneLatencyLater)
{
    const auto levels = MakeLevels(6000);
    for (const bool isDouble : {false, true}) {
        for (const auto& mode : kModes) {
            SCOPED_TRACE(::testing::Message() << "character " << mode.mCharacter << " double " << isDouble);
            const auto weights = isDouble ? MakeWeights(levels.size()) : Row(levels.size(), 0.0f);
            auto envelope = MakeEnvelope(mode, isDouble);
            const auto latency = static_cast<std::size_t>(envelope.GetLatency());
            EXPECT_EQ(latency, 2 * 29 + 48 * 3 / 2); // of the limits, whatever the mode
            const auto output = Envelope(envelope, levels, weights);
            const auto expected = SlowEnvelope(mode, levels.size()).Make(levels, weights);
            // Behind the end the slow curve knows nothing, and the activity reaches far ahead.
            for (std::size_t i = latency; i < output.size() - 200; ++i) {
                ASSERT_NEAR(output[i], expected[i - latency], 2e-5f) << i - latency;
            }
        }
    }
}

TEST(LimEnvelopeTest, CoversEveryPeakInTime)
{
    const auto levels = MakeLevels(20000);
    const auto weights = MakeWeights(levels.size());
    for (const auto& mode : kModes) {
        for (const bool isDouble : {false, true}) {
            auto envelope = MakeEnvelope(mode, isDouble, mode.mCharacter != 0.5f);
            const auto latency = static_cast<std::size_t>(envelope.GetLatency());
            const auto output = Envelope(envelope, levels, weights);
            for (std::size_t i = latency; i < output.size(); ++i) {
                ASSERT_GE(output[i], levels[i - latency] - 1e-5f) << mode.mCharacter << ", " << i;
            }
        }
    }
}

TEST(LimEnvelopeTest, BusyLevelsKeepTheReductionDown)
{
    Row busy(8000, 0.0f);
    for (std::size_t i = 0; i < 7000; i += 40) {
        busy[i] = 10.0f;
    }
    auto steady = busy;
    std::fill_n(steady.begin(), 7000, 10.0f);
    auto envelope = MakeEnvelope(kModes[1], false);
    const auto afterEnd = static_cast<std::size_t>(7000 + envelope.GetLatency() + 40);
    EXPECT_GT(Envelope(envelope, busy, busy)[afterEnd], 4.0f);
    envelope.Reset();
    EXPECT_LT(Envelope(envelope, steady, steady)[afterEnd], 2.0f);
}

TEST(LimEnvelopeTest, ResetAndCopiesStandAlone)
{
    const auto levels = MakeLevels(3000);
    const auto weights = MakeWeights(3000);
    auto envelope = MakeEnvelope(kModes[2], true);
    const auto expected = Envelope(envelope, levels, weights);
    auto poison = levels;
    poison[2000] = std::numeric_limits<float>::quiet_NaN();
    poison[2990] = std::numeric_limits<float>::infinity();
    (void)Envelope(envelope, poison, poison);
    {
        const AllocationGuard guard;
        envelope.Reset();
    }
    auto copy = envelope;
    EXPECT_EQ(Envelope(envelope, levels, weights), expected);
    EXPECT_EQ(Envelope(copy, levels, weights), expected);
    {
        const AllocationGuard guard; // all modes within the limits have room
        envelope.SetMode(1.0f, 0.1f, 1.0f);
        envelope.SetCharacter(1.5f);
    }
    EXPECT_EQ(envelope.GetLatency(), copy.GetLatency());
    copy = LimEnvelope(); // without rate and mode
    EXPECT_EQ(copy.GetLatency(), 0);
    EXPECT_EQ(Envelope(copy, levels, weights), levels);
}

} // namespace

} // namespace tessaro
