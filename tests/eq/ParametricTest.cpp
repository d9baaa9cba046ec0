#include <tessaro/eq/Parametric.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace parametric {

namespace {

using tessaro::testing::Row;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::array kSwitches{7, 11, 15, 19, 23, 26, 27, 28, 29, 30, 37, 40};

Row Process(Parametric& ioEqualizer, const Row& inInput, std::size_t inBlock = 256)
{
    Row output(inInput.size());
    for (std::size_t done = 0; done < inInput.size(); done += inBlock) {
        const auto count = std::min(inBlock, inInput.size() - done);
        ioEqualizer.Process(inInput.data() + done, output.data() + done, static_cast<int>(count));
    }
    return output;
}

Row Impulse(Parametric& ioEqualizer, std::size_t inLength = 30000)
{
    return Process(ioEqualizer, tessaro::testing::MakeImpulse(inLength));
}

Parametric Make(double inRate, std::initializer_list<std::pair<int, float>> inParameters)
{
    Parametric equalizer;
    equalizer.SetSampleRate(static_cast<int>(inRate));
    for (const auto& [index, value] : inParameters) {
        equalizer.SetParameter(index, value);
    }
    equalizer.Resume();
    return equalizer;
}

/// Largest third difference: small for low tones, large for a click
double Roughness(const Row& inRow, std::size_t inBegin)
{
    double largest = 0.0;
    for (std::size_t i = inBegin + 3; i < inRow.size(); ++i) {
        largest = std::max<double>(
            largest, std::abs(inRow[i] - 3.0f * inRow[i - 1] + 3.0f * inRow[i - 2] - inRow[i - 3]));
    }
    return largest;
}

TEST(ParametricTest, ParametersHaveTheirDefaultsAndRanges)
{
    struct Entry
    {
        std::vector<int> indices;
        float minimum, maximum;
        std::vector<float> defaults;
    };
    for (const int rate : {44100, 96000}) {
        const float nyquist = static_cast<float>(rate) / 2.0f;
        const Entry table[] = {
            {{0, 2, 38, 41}, 20, nyquist, {40, 18000, 20, 20000}},
            {{4, 8, 12, 16, 20}, 20, nyquist, {50, 200, 800, 3200, 12800}},
            {{5, 9, 13, 17, 21}, 0.0001f, 10000, {2, 2, 2, 2, 2}},
            {{32, 33, 34, 35, 36}, 0.0001f, 10000, {25, 100, 400, 1600, 6400}},
            {{1, 3, 6, 10, 14, 18, 22}, -48, 48, {0, 0, 0, 0, 0, 0, 0}},
            {{7, 11, 15, 19, 23, 25, 29, 30}, -0.5f, 1.49f, {1, 1, 1, 1, 1, 1, 1, 1}},
            {{26, 27, 28, 37, 40}, -0.5f, 1.49f, {0, 0, 0, 0, 0}},
            {{24}, -96, 48, {0}},
            {{31}, 0, 192000, {static_cast<float>(rate)}},
            {{39, 42}, 1, 8, {4, 4}},
            {{43, 44}, 0, 1, {0, 0}},
        };
        Parametric equalizer;
        equalizer.SetSampleRate(rate);
        int seen = 0;
        for (const auto& entry : table) {
            for (std::size_t i = 0; i < entry.indices.size(); ++i, ++seen) {
                const int index = entry.indices[i];
                float minimum = 0.0f, maximum = 0.0f;
                equalizer.GetBounds(index, minimum, maximum);
                EXPECT_EQ(minimum, entry.minimum) << index;
                EXPECT_EQ(maximum, entry.maximum) << index;
                EXPECT_EQ(equalizer.GetParameter(index), entry.defaults[i]) << index;
            }
        }
        EXPECT_EQ(seen, Parametric::kNumParameters);
    }
    const Parametric equalizer;
    for (const int index : {-1, 45}) {
        float minimum = 7.0f, maximum = 8.0f;
        equalizer.GetBounds(index, minimum, maximum);
        EXPECT_EQ(minimum + maximum, 15.0f);
        EXPECT_EQ(equalizer.GetParameter(index), 0.0f);
        Parametric other;
        other.SetParameter(index, 1.0f);
        other.SetBounds(index, 0.0f, 1.0f);
    }
    EXPECT_EQ(equalizer.GetLatency(), 0);
}

TEST(ParametricTest, ValuesOutsideTheirRangeGoToItsMiddle)
{
    for (int index = 0; index < Parametric::kNumParameters; ++index) {
        if (index == 31) {
            continue;
        }
        const bool isSwitch = std::ranges::find(kSwitches, index) != kSwitches.end();
        Parametric equalizer;
        float minimum = 0.0f, maximum = 0.0f;
        equalizer.GetBounds(index, minimum, maximum);
        const float middle = isSwitch ? 0.0f : (minimum + maximum) / 2.0f;
        for (const float value : {minimum - 1.0f, maximum + 1.0f, kNaN}) {
            equalizer.SetParameter(index, minimum);
            equalizer.SetParameter(index, value);
            EXPECT_EQ(equalizer.GetParameter(index), middle) << index << " by " << value;
        }
        equalizer.SetParameter(index, maximum);
        EXPECT_EQ(equalizer.GetParameter(index), isSwitch ? 1.0f : maximum);
        equalizer.SetParameter(index, 0.6f);
        if (minimum < 0.6f && maximum > 0.6f) {
            EXPECT_EQ(equalizer.GetParameter(index), isSwitch ? 1.0f : 0.6f) << index;
        }
    }
    Parametric equalizer;
    equalizer.SetBounds(1, -10.0f, 20.0f);
    equalizer.SetParameter(1, -12.0f);
    EXPECT_EQ(equalizer.GetParameter(1), 5.0f);
}

TEST(ParametricTest, FrequencyQAndBandwidthOfABandFollowEachOther)
{
    for (int band = 0; band < 5; ++band) {
        const int frequency = 4 + 4 * band, q = frequency + 1, bandwidth = 32 + band;
        Parametric equalizer;
        equalizer.SetParameter(frequency, 1000.0f);
        EXPECT_EQ(equalizer.GetParameter(bandwidth), 500.0f);
        equalizer.SetParameter(q, 5.0f);
        EXPECT_EQ(equalizer.GetParameter(bandwidth), 200.0f);
        equalizer.SetParameter(bandwidth, 100.0f);
        EXPECT_EQ(equalizer.GetParameter(q), 10.0f);
        equalizer.SetParameter(25, 0.0f);
        equalizer.SetParameter(frequency, 2000.0f);
        EXPECT_EQ(equalizer.GetParameter(q), 20.0f);
        EXPECT_EQ(equalizer.GetParameter(bandwidth), 100.0f);
        equalizer.SetParameter(bandwidth, 0.0002f);
        EXPECT_GT(equalizer.GetParameter(q), 9e6f) << "no limit here";
        equalizer.SetParameter(frequency, 3000.0f);
        EXPECT_EQ(equalizer.GetParameter(q), 10000.0f) << "limited here";
        equalizer.SetParameter(25, 0.49f);
        EXPECT_EQ(equalizer.GetParameter(25), 0.49f) << "read at a half, but stored as given";
        equalizer.SetParameter(q, 0.001f);
        EXPECT_EQ(equalizer.GetParameter(bandwidth), 3000.0f / 0.001f);
        equalizer.SetParameter(25, 0.51f);
        equalizer.SetParameter(frequency, 4000.0f);
        EXPECT_EQ(equalizer.GetParameter(bandwidth), 10000.0f);
    }
}

TEST(ParametricTest, TheRateParameterMovesFrequenciesOnly)
{
    Parametric equalizer;
    equalizer.SetParameter(31, 44100.3f);
    EXPECT_EQ(equalizer.GetParameter(0), 40.0f) << "the present rate";
    equalizer.SetParameter(31, 22050.0f);
    const auto rescaled = [](float inFrequency) {
        return (inFrequency - 20.0f) * (11025.0f - 20.0f) / (22050.0f - 20.0f) + 20.0f;
    };
    EXPECT_FLOAT_EQ(equalizer.GetParameter(2), rescaled(18000.0f));
    EXPECT_FLOAT_EQ(equalizer.GetParameter(12), rescaled(800.0f));
    EXPECT_FLOAT_EQ(equalizer.GetParameter(34), rescaled(800.0f) / 2.0f);
    EXPECT_EQ(equalizer.GetParameter(38), 20.0f);
    EXPECT_EQ(equalizer.GetParameter(31), 44100.0f);
    float minimum = 0.0f, maximum = 0.0f;
    equalizer.GetBounds(2, minimum, maximum);
    EXPECT_EQ(maximum, 22050.0f);
    equalizer.SetParameter(31, 192000.0f);
    EXPECT_EQ(equalizer.GetParameter(41), 22050.0f) << "no further than half of the rate of now";

    equalizer.SetSampleRate(32000);
    EXPECT_EQ(equalizer.GetParameter(31), 32000.0f);
    EXPECT_EQ(equalizer.GetParameter(41), 16000.0f);
}

TEST(ParametricTest, ImpulseHasTheResponseThatIsDrawn)
{
    for (const double rate : tessaro::testing::kSampleRates) {
        for (const float secondOrder : {0.0f, 1.0f}) {
            for (const float stateVariable : {0.0f, 1.0f}) {
                auto equalizer = Make(rate, {{0, 150.0f},
                                             {1, 6.0f},
                                             {2, 6000.0f},
                                             {3, -9.0f},
                                             {26, secondOrder},
                                             {27, secondOrder},
                                             {28, stateVariable},
                                             {4, 100.0f},
                                             {6, -4.0f},
                                             {12, 1000.0f},
                                             {14, 12.0f},
                                             {13, 3.0f},
                                             {22, 3.0f},
                                             {20, 9000.0f}});
                const auto impulse = Impulse(equalizer);
                for (const double frequency : {30.0, 100.0, 150.0, 400.0, 1000.0, 6000.0, 9000.0, 17000.0}) {
                    const double drawn = equalizer.ComputeFilterResponse(static_cast<float>(frequency));
                    EXPECT_NEAR(tessaro::testing::MagnitudeOfImpulse(impulse, frequency / rate), drawn,
                                2e-4 * drawn)
                        << frequency << " of " << rate << ", order " << 1 + secondOrder << stateVariable;
                }
            }
        }
    }
}

TEST(ParametricTest, GainsAreWhereTheyAreSet)
{
    for (const double rate : tessaro::testing::kSampleRates) {
        const auto decibels = [&](Parametric inEqualizer, double inFrequency) {
            return tessaro::testing::Decibels(
                tessaro::testing::MagnitudeOfImpulse(Impulse(inEqualizer), inFrequency / rate));
        };
        const auto band = Make(rate, {{14, 12.0f}, {13, 2.0f}});
        EXPECT_NEAR(decibels(band, 800.0), 12.0, 0.01);
        EXPECT_NEAR(decibels(band, 0.0), 0.0, 0.01);
        const auto half = Make(rate, {{14, 5.0f}, {13, 8.0f}});
        const double edge = std::sqrt(1.0 + 1.0 / 256.0) + 1.0 / 16.0;
        EXPECT_NEAR(decibels(half, 800.0 * edge), 2.5, 0.02);
        const auto shelves = Make(rate, {{0, 400.0f}, {1, -6.0f}, {2, 2000.0f}, {3, 8.0f}, {24, -3.0f}});
        EXPECT_NEAR(decibels(shelves, 0.0), -9.0, 0.01);
        EXPECT_NEAR(decibels(shelves, rate / 2.0), 5.0, 0.01);
        const auto cuts =
            Make(rate, {{37, 1.0f}, {38, 300.0f}, {39, 2.6f}, {40, 1.0f}, {41, 5000.0f}, {42, 7}});
        EXPECT_NEAR(decibels(cuts, 300.0), -3.01, 0.02);
        EXPECT_NEAR(decibels(cuts, 5000.0), -3.01, 0.02);
        EXPECT_NEAR(decibels(cuts, 30.0), -60.0, 0.1) << "order 3";
        auto drawn = cuts;
        EXPECT_NEAR(drawn.ComputeFilterResponse(300.0f), std::sqrt(0.5f), 1e-3f);
        EXPECT_NEAR(drawn.ComputeFilterResponse(10000.0f), 1.0 / std::sqrt(1.0 + std::pow(2.0, 14)), 1e-6);
    }
    Parametric equalizer;
    for (const float frequency : {0.0f, 1.0f, 1000.0f, 22050.0f}) {
        EXPECT_EQ(equalizer.ComputeFilterResponse(frequency), 1.0f);
    }
    equalizer.SetParameter(1, 48.0f);
    equalizer.SetParameter(6, 48.0f);
    EXPECT_EQ(equalizer.ComputeFilterResponse(45.0f), 256.0f);
    EXPECT_EQ(Parametric::ComputeButterResponse(true, 3.0f, 1.0f, 1, 2.0f), 2.0f / std::sqrt(10.0f));
    EXPECT_EQ(Parametric::ComputeButterResponse(false, 1.0f, 3.0f, 1, 2.0f), 2.0f / std::sqrt(10.0f));
}

TEST(ParametricTest, BypassCopiesAndSingleSamplesLeaveBypassAndCutsOut)
{
    const auto noise = tessaro::testing::MakeNoise(2000, 4);
    auto equalizer = Make(48000, {{14, 9.0f}, {1, -6.0f}, {24, 6.0f}});
    auto cut = Make(48000, {{14, 9.0f}, {1, -6.0f}, {24, 6.0f}, {37, 1.0f}, {38, 2000.0f}, {40, 1.0f}});
    cut.SetParameter(43, 0.5f);
    EXPECT_EQ(cut.GetParameter(43), 0.5f);
    EXPECT_EQ(Process(cut, noise), noise);

    const auto wanted = Process(equalizer, noise);
    Row actual(noise.size());
    for (std::size_t i = 0; i < noise.size(); ++i) {
        cut.ProcessOneSample(&noise[i], &actual[i]);
    }
    EXPECT_LT(tessaro::testing::NullDepthInDecibels(wanted, actual), -120.0);

    cut.SetChannels(3);
    const float silence[] = {0.0f, 0.0f, 0.0f};
    const float frame[] = {0.0f, 0.5f, 0.0f};
    float output[3] = {};
    for (int i = 0; i < 2000; ++i) {
        cut.ProcessOneSample(i == 1999 ? frame : silence, output);
    }
    EXPECT_EQ(output[0], 0.0f);
    EXPECT_NE(output[1], 0.0f);
    EXPECT_EQ(output[2], 0.0f);
}

TEST(ParametricTest, GlidesLandOnTheirTargetWithoutClicks)
{
    constexpr double kRate = 48000.0;
    constexpr std::size_t kRamp = 1323;
    const auto sine = tessaro::testing::MakeSine(16000, 500.0, kRate, 0.25);
    const Row first(sine.begin(), sine.begin() + 8000), second(sine.begin() + 8000, sine.end());
    struct Move
    {
        int index;
        float from, to;
    };
    for (const float stateVariable : {0.0f, 1.0f}) {
        // Frequency, Q and gain of a band, both shelves, and a band that comes on
        for (const Move move : {Move{12, 400.0f, 900.0f},
                                {13, 1.0f, 4.0f},
                                {14, 3.0f, 12.0f},
                                {1, 3.0f, 9.0f},
                                {3, -3.0f, -9.0f},
                                {15, 0.0f, 1.0f}}) {
            auto equalizer = Make(
                kRate, {{0, 300.0f}, {2, 3000.0f}, {14, 6.0f}, {28, stateVariable}, {move.index, move.from}});
            auto there = Make(
                kRate, {{0, 300.0f}, {2, 3000.0f}, {14, 6.0f}, {28, stateVariable}, {move.index, move.to}});
            Process(equalizer, first);
            equalizer.SetParameter(move.index, move.to);
            const auto moved = Process(equalizer, second);
            Process(there, first);
            const auto wanted = Process(there, second);
            const Row end(moved.end() - 3000, moved.end()), wantedEnd(wanted.end() - 3000, wanted.end());
            EXPECT_LT(tessaro::testing::NullDepthInDecibels(wantedEnd, end), -80.0) << move.index;
            EXPECT_NE(moved[kRamp / 2], wanted[kRamp / 2]);
            // A tone of at most four times its level, and no step above a thousandth of full scale
            const double rest = Roughness(wanted, 0);
            EXPECT_LT(Roughness(moved, 0), 2.0 * rest + 1e-3) << move.index << " " << stateVariable;
        }
    }
    // To show what the measure finds: a switch off has no glide.
    auto equalizer = Make(kRate, {{14, 12.0f}});
    Process(equalizer, first);
    equalizer.SetParameter(15, 0.0f);
    EXPECT_EQ(Process(equalizer, second)[0], second[0]);
}

TEST(ParametricTest, GainsNextToZeroSwitchSectionsOff)
{
    const auto noise = tessaro::testing::MakeNoise(500, 4);
    auto equalizer = Make(48000, {{1, 6.0f}, {3, 6.0f}, {6, 6.0f}});
    EXPECT_NE(Process(equalizer, noise), noise);
    for (const int index : {1, 3, 6}) {
        equalizer.SetParameter(index, 0.00009f);
    }
    EXPECT_EQ(Process(equalizer, noise), noise);
    equalizer.SetParameter(1, 0.0002f);
    EXPECT_NE(Process(equalizer, noise), noise);

    // A band that is off stays off when its gain moves, and a shelf that changes its order comes back on.
    auto off = Make(48000, {{7, 0.0f}, {29, 0.0f}, {1, 6.0f}});
    off.SetParameter(6, 6.0f);
    EXPECT_EQ(Process(off, noise), noise);
    off.SetParameter(26, 1.0f);
    EXPECT_NE(Process(off, noise), noise);
}

TEST(ParametricTest, CatchesUpInWhateverOrderItIsCalled)
{
    const auto noise = tessaro::testing::MakeNoise(3000, 4);
    Parametric equalizer;
    equalizer.SetParameter(14, 12.0f);
    const auto fadesIn = Process(equalizer, noise);
    EXPECT_NE(fadesIn, noise);
    auto resumed = equalizer;
    resumed.Resume();
    EXPECT_NE(Process(resumed, noise), fadesIn) << "starts on its target";
    const auto copy = resumed;
    EXPECT_EQ(copy.GetParameter(14), 12.0f);

    Row poisoned = noise;
    poisoned[10] = kNaN;
    resumed.SetParameter(37, 1.0f);
    EXPECT_TRUE(std::isnan(Process(resumed, poisoned).back()));
    resumed.SetupFilters();
    EXPECT_TRUE(std::isnan(Process(resumed, noise).back())) << "nothing while it runs";
    resumed.Suspend();
    resumed.SetupFilters();
    EXPECT_FALSE(std::isnan(Process(resumed, noise).back()));

    resumed.Resume();
    resumed.SetParameter(14, -12.0f);
    resumed.SetParameter(38, 500.0f);
    resumed.SetParameter(28, 1.0f);
    Row row = noise;
    tessaro::testing::AllocationGuard guard;
    resumed.Process(row.data(), row.data(), 3000);
    resumed.Process(row.data(), row.data(), 0);
}

} // namespace

} // namespace parametric
