#include <tessaro/resample/Resample.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <numeric>
#include <random>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using namespace testing;

struct Conversion
{
    float mSource;
    float mDestination;
    int mOrder = 255;
    double mNoiseFloor = 150.0;
    double mNyquistShift = 0.3;
};

Resample Make(const Conversion& inSetup)
{
    Resample resample;
    resample.SetFilterOrder(inSetup.mOrder);
    resample.SetSampleRates(inSetup.mSource, inSetup.mDestination, false);
    resample.SetNoiseFloor(inSetup.mNoiseFloor);
    resample.SetNyquistShift(inSetup.mNyquistShift);
    return resample;
}

Row Convert(Resample& ioResample, const Row& inInput, std::size_t inFrom = 0, std::size_t inCount = ~0u)
{
    const auto count = static_cast<int>(std::min(inCount, inInput.size() - inFrom));
    Row output(static_cast<std::size_t>(ioResample.GetOutputBufferSize(count + 1)) + 1, -1000.0f);
    const auto produced = ioResample.Process(inInput.data() + inFrom, output.data(), count);
    EXPECT_LT(static_cast<std::size_t>(produced), output.size());
    EXPECT_TRUE(std::all_of(output.begin() + produced, output.end(), [](float x) { return x == -1000.0f; }));
    output.resize(static_cast<std::size_t>(produced));
    return output;
}

Row RunInBlocks(Resample& ioResample, const Row& inInput, std::size_t inLongest)
{
    std::mt19937 random(1);
    Row output;
    for (std::size_t done = 0; done < inInput.size();) {
        const auto count = std::min<std::size_t>(1 + random() % inLongest, inInput.size() - done);
        const auto block = Convert(ioResample, inInput, done, count);
        output.insert(output.end(), block.begin(), block.end());
        done += count;
    }
    return output;
}

std::span<const float> Part(const Row& inRow, std::size_t inFrom, std::size_t inCount)
{
    return std::span(inRow).subspan(inFrom, inCount);
}

/// What the converter is to compute, sample by sample from the position of each output.
class ClosedForm
{
public:
    explicit ClosedForm(const Conversion& inSetup) : mSetup(inSetup)
    {
        const double source = inSetup.mSource;
        const double destination = inSetup.mDestination;
        mRows = 1000;
        mStep = source * 1000 / destination;
        if (std::trunc(source) == source && std::trunc(destination) == destination) {
            const auto divisor = std::gcd(std::lround(source), std::lround(destination));
            if (destination / static_cast<double>(divisor) <= 1000) {
                mRows = std::lround(destination) / divisor;
                mStep = source / static_cast<double>(divisor);
            }
        }
        const double delay = (inSetup.mOrder - 1) / 2 * destination / source;
        mStart = (delay - std::trunc(delay) + 1e-12) * mStep;
        const double width = 12.5 / inSetup.mOrder;
        const auto rows = static_cast<double>(mRows);
        mDivisor = source > destination ? 1 / (rows / mStep - (inSetup.mNyquistShift - 0.31) * width)
                                        : 1 / (1 - inSetup.mNyquistShift * 0.6 * width);
    }

    /// The input sample that the output waits for
    [[nodiscard]] long GetNewest(std::size_t inOutput) const
    {
        return static_cast<long>(GetPosition(inOutput)) / mRows;
    }

    [[nodiscard]] double operator()(const Row& inInput, std::size_t inOutput) const
    {
        const double position = GetPosition(inOutput);
        const long row = static_cast<long>(position) % mRows;
        const auto newest = static_cast<double>(GetNewest(inOutput));
        if (mRows != 1000) {
            return Sum(inInput, newest, static_cast<double>(row) / static_cast<double>(mRows));
        }
        const double weight = position - std::floor(position);
        double next = Sum(inInput, newest, static_cast<double>(row + 1) / 1000);
        if (row == 999) {
            // The sample to come is not there yet: in its place stands the oldest one, or, once in as many
            // samples as there are taps, nothing.
            const auto last = GetNewest(inOutput);
            const long oldest = last - mSetup.mOrder + 1;
            next = Sum(inInput, newest + 1, 0.0);
            next += Tap(mSetup.mOrder - 1, 0.0) *
                    ((oldest >= 0 && last % mSetup.mOrder != mSetup.mOrder - 1 ? inInput[oldest] : 0.0f) -
                     inInput[std::min<std::size_t>(last + 1, inInput.size() - 1)]);
        }
        return next * weight + Sum(inInput, newest, static_cast<double>(row) / 1000) * (1 - weight);
    }

private:
    [[nodiscard]] double GetPosition(std::size_t inOutput) const
    {
        return mStart + static_cast<double>(inOutput) * mStep;
    }

    [[nodiscard]] double Tap(int inTap, double inFraction) const
    {
        auto& row = mTaps[inFraction];
        for (int tap = static_cast<int>(row.size()); tap < mSetup.mOrder; ++tap) {
            row.push_back(ComputeTap(tap, inFraction));
        }
        return row[static_cast<std::size_t>(inTap)];
    }

    [[nodiscard]] double ComputeTap(int inTap, double inFraction) const
    {
        const int half = (mSetup.mOrder - 1) / 2;
        const double t = inTap - half - inFraction;
        const double x = std::numbers::pi * t / mDivisor;
        const double sinc = x == 0 ? 1 : std::sin(x) / x;
        if (mSetup.mNoiseFloor >= 60) {
            const double beta = (mSetup.mNoiseFloor - 8.7) * 0.1102;
            const double u = t / (half + 1);
            return sinc / mDivisor * Bessel(beta * std::sqrt(1 - u * u)) / Bessel(beta);
        }
        const double v = std::numbers::pi * t / half;
        return sinc / mDivisor * (0.42 + 0.5 * std::cos(v) + 0.08 * std::cos(2 * v));
    }

    static double Bessel(double inX)
    {
        double sum = 1;
        for (int k = 1; k <= 19; ++k) {
            sum += std::exp(2 * (k * std::log(std::max(inX, 1e-300) / 2) - std::lgamma(k + 1)));
        }
        return sum;
    }

    [[nodiscard]] double Sum(const Row& inInput, double inNewest, double inFraction) const
    {
        double sum = Tap(0, inFraction) * 0.0;
        const auto& taps = mTaps[inFraction];
        for (int tap = 0; tap < mSetup.mOrder; ++tap) {
            const long index = static_cast<long>(inNewest) - mSetup.mOrder + 1 + tap;
            if (index >= 0 && index < static_cast<long>(inInput.size())) {
                sum += taps[static_cast<std::size_t>(tap)] * static_cast<double>(inInput[index]);
            }
        }
        return sum;
    }

    Conversion mSetup;
    long mRows;
    double mStep;
    double mStart;
    mutable std::map<double, std::vector<double>> mTaps;
    double mDivisor;
};

const Conversion kConversions[] = {{44100, 48000},           {48000, 44100},
                                   {44100, 33013, 31},       {44100, 48013.65f, 5, 60.0},
                                   {44100, 88200, 1},        {88200, 44100, 63},
                                   {48000, 48, 255},         {192000, 8000, 127, 59.9},
                                   {44100, 32000, 9, 0},     {11025, 96000, 63},
                                   {48000, 47999.5f, 5, 60}, {8000, 192000, 2047, 100, 0.9},
                                   {44101, 1000, 7, 60.0},   {22050, 32000, 31, 300.0}};

TEST(ResampleTest, ComputesTheWindowedSincAtEachPositionWhateverTheBlocks)
{
    for (const auto& setup : kConversions) {
        SCOPED_TRACE(::testing::Message() << setup.mSource << " to " << setup.mDestination);
        const auto input = MakeNoise(5000, 1);
        auto resample = Make(setup);
        const auto output = Convert(resample, input);
        const ClosedForm expected(setup);
        ASSERT_NEAR(static_cast<double>(output.size()), 5000.0 * setup.mDestination / setup.mSource, 1.0);
        const std::size_t step = std::max<std::size_t>(output.size() / 3000, 1);
        for (std::size_t i = 0; i < output.size(); i += step) {
            ASSERT_NEAR(output[i], expected(input, i), 2e-7) << i; // a float's rounding, of up to 3
        }
        for (const std::size_t longest : {3, 300, 3000}) {
            auto other = Make(setup);
            ASSERT_EQ(RunInBlocks(other, input, longest), output) << longest;
        }
    }
}

TEST(ResampleTest, OutputDrivenConsumesWhatOutputsTakeAndTheSampleBehindIfNoneIsDue)
{
    for (const auto& setup : kConversions) {
        SCOPED_TRACE(::testing::Message() << setup.mSource << " to " << setup.mDestination);
        const auto input = MakeNoise(6000, 2);
        auto inputDriven = Make(setup);
        const auto expected = Convert(inputDriven, input);
        const ClosedForm form(setup);
        auto resample = Make(setup);
        Row output(expected.size() + 1000);
        std::mt19937 random(1);
        std::size_t produced = 0;
        long consumed = 0;
        while (form.GetNewest(produced + 301) + 2 < 5000) {
            const int count = 1 + static_cast<int>(random() % 300);
            consumed += resample.Process2(input.data() + consumed, output.data() + produced, count);
            produced += static_cast<std::size_t>(count);
            const long taken = form.GetNewest(produced - 1) + 1;
            ASSERT_EQ(consumed, taken + (form.GetNewest(produced) >= taken)) << produced;
        }
        // Going on by input begins behind what was consumed.
        const auto rest = Convert(resample, input, static_cast<std::size_t>(consumed));
        output.resize(produced);
        output.insert(output.end(), rest.begin(), rest.end());
        ASSERT_EQ(output, expected);
    }
}

TEST(ResampleTest, GivesAsManySamplesAsTheRatesSay)
{
    for (const float rate :
         {32000.0f, 33013.0f, 12345.72f, 48000.0f, 53129.0f, 48013.65f, 6150.0f, 196000.0f}) {
        const float source = rate == 196000.0f ? 8000.0f : 44100.0f;
        auto resample = Make({source, rate, 15});
        const auto produced = RunInBlocks(resample, Row(400000), 8000).size();
        const double expected = 400000.0 * static_cast<double>(rate) / static_cast<double>(source);
        EXPECT_NEAR(static_cast<double>(produced), expected, 0.9999) << rate;
    }
}

/// Level of the output but for its first and last `order` samples
double MeasureSweep(const Conversion& inSetup, double inStart, double inEnd)
{
    auto resample = Make(inSetup);
    const auto output = Convert(resample, MakeSweep(100000, inStart, inEnd, inSetup.mSource));
    const auto order = static_cast<std::size_t>(inSetup.mOrder);
    return ToDecibels(Rms(Part(output, order, output.size() - 2 * order)));
}

TEST(ResampleTest, StopBandLiesBelowTheNoiseFloor)
{
    for (int noiseFloor = 80; noiseFloor <= 150; noiseFloor += 10) {
        const double level = MeasureSweep({44100, 32000, 255, 1.0 * noiseFloor}, 17028, 21021);
        EXPECT_LT(level, -(noiseFloor + 6)) << noiseFloor;
    }
}

TEST(ResampleTest, ShiftMovesTheTransitionDownAndOrderMakesItSteeper)
{
    double level = 0.0;
    for (int shift = 0; shift <= 9; ++shift) {
        const double shifted = MeasureSweep({44100, 32000, 255, 150.0, 0.1 * shift}, 15950, 16050);
        EXPECT_LT(shifted, level) << shift;
        level = shifted;
    }
    double slope = 0.0;
    for (int order = 64; order <= 2048; order *= 2) {
        const Conversion setup{44100, 32000, order};
        const double steeper = MeasureSweep(setup, 15850, 15950) - MeasureSweep(setup, 16050, 16150);
        EXPECT_GT(steeper, 1.8 * slope) << order;
        slope = steeper;
    }
}

/// What the output holds beside the sine, in dB below it, without its first samples
double MeasureResidue(const Row& inOutput, double inFrequency, double inRate, std::size_t inSkip)
{
    const auto phase = [&](std::size_t i) {
        return 2 * std::numbers::pi * std::fmod(inFrequency / inRate * static_cast<double>(i), 1.0);
    };
    double ss = 0, sc = 0, cc = 0, sy = 0, cy = 0;
    for (std::size_t i = inSkip; i < inOutput.size(); ++i) {
        const double s = std::sin(phase(i)), c = std::cos(phase(i)), y = inOutput[i];
        ss += s * s, sc += s * c, cc += c * c, sy += s * y, cy += c * y;
    }
    const double determinant = ss * cc - sc * sc;
    const double a = (sy * cc - cy * sc) / determinant;
    const double b = (cy * ss - sy * sc) / determinant;
    double residue = 0;
    for (std::size_t i = inSkip; i < inOutput.size(); ++i) {
        residue += std::pow(inOutput[i] - a * std::sin(phase(i)) - b * std::cos(phase(i)), 2);
    }
    return 10 * std::log10(2 * residue / (a * a + b * b) / static_cast<double>(inOutput.size() - inSkip));
}

TEST(ResampleTest, SinesStayPure)
{
    for (const auto& [order, edge] : {std::pair{127, 17000.0}, {255, 19500.0}, {511, 20700.0}}) {
        for (const auto rate : {48000.0f, 96000.0f, 48013.65f}) {
            for (const double frequency : {997.0, edge}) {
                auto resample = Make({44100, rate, order});
                const auto output = Convert(resample, MakeSine(60000, frequency, 44100));
                const auto residue =
                    MeasureResidue(output, frequency, rate, 2 * static_cast<std::size_t>(order) * 3);
                // Rounding to floats; and where rows are interpolated, an eighth of (2 pi f / fs / 1000)^2.
                const bool isInterpolated = rate == 48013.65f && frequency == edge;
                EXPECT_LT(residue, isInterpolated ? -128.0 : -147.0)
                    << order << " " << rate << " " << frequency;
            }
        }
    }
}

TEST(ResampleTest, UpAndDownAgainIsTheInput)
{
    for (const float rate : {48000.0f, 88200.0f, 96000.0f, 44143.0f}) {
        auto up = Make({44100, rate, 511});
        auto down = Make({rate, 44100, 511});
        const auto input = MakeSweep(40000, 20, 20000, 44100, 0.5);
        auto high = Convert(up, input);
        high.erase(high.begin(), high.begin() + up.GetLatency());
        const auto output = Convert(down, high);
        const auto latency = static_cast<std::size_t>(down.GetLatency());
        EXPECT_LT(NullDepthInDecibels(Part(input, 1000, 37000), Part(output, 1000 + latency, 37000)), -130.0)
            << rate;
    }
}

TEST(ResampleTest, LatencyIsThatOfTheOddOrderAndExact)
{
    // At twice the rate the latency is as many samples as there are taps, less one.
    for (const auto& [order, taps] : {std::pair{256, 255}, {255, 255}, {64, 63}, {2, 1}, {1, 1}, {-7, 1}}) {
        EXPECT_EQ(Make({24000, 48000, order}).GetLatency(), taps - 1) << order;
    }
    auto resample = Make({44100, 48000});
    const auto output = Convert(resample, MakeSine(3000, 441, 44100));
    ASSERT_EQ(resample.GetLatency(), 138);
    const auto expected = MakeSine(1000, 441, 48000, 1.0, 2 * std::numbers::pi * 441 * 1000 / 48000);
    EXPECT_LT(NullDepthInDecibels(expected, Part(output, 1138, 1000)), -110.0);
}

TEST(ResampleTest, IsSilentWithoutRatesAndCopiesWithEqualOnes)
{
    const auto input = MakeNoise(100, 3);
    Row output(200, 7.0f);
    Resample resample;
    EXPECT_EQ(resample.GetSourceSampleRate(), 48000.0f);
    EXPECT_EQ(resample.GetDestSampleRate(), 44100.0f);
    EXPECT_EQ(resample.Process(input.data(), output.data(), 100), 0);
    EXPECT_EQ(resample.Process2(input.data(), output.data(), 100), 0);
    EXPECT_EQ(output, Row(200, 7.0f));
    for (const float rate : {44100.0f, 44100.4f}) { // equal once rounded
        resample.SetSampleRates(44100.0f, rate, true);
        EXPECT_EQ(resample.Process(input.data(), output.data(), 100), 100);
        EXPECT_TRUE(std::equal(input.begin(), input.end(), output.begin()));
        EXPECT_EQ(resample.GetLatency(), 0);
        EXPECT_FALSE(resample.IsInitialized());
    }
    resample.SetSampleRates(44100, 48000);
    const float unusable[] = {0.0f, -1.0f, NAN, INFINITY, 3e9f, 0.4f};
    for (const float rate : unusable) {
        resample.SetSampleRates(rate, rate, true);
        EXPECT_EQ(resample.GetSourceSampleRate(), 44100.0f);
        EXPECT_EQ(resample.GetDestSampleRate(), 48000.0f);
    }
    EXPECT_EQ(resample.GetOutputBufferSize(441), 482);
    EXPECT_EQ(resample.Process(nullptr, output.data(), 100), 0);
    EXPECT_EQ(resample.Process(input.data(), nullptr, 100), 0);
    EXPECT_EQ(resample.Process(input.data(), output.data(), 0), 0);
    EXPECT_FALSE(resample.IsInitialized());
}

TEST(ResampleTest, SettersWaitForDeinitializeAndInitializeAloneKeepsTheStreamsPlace)
{
    const auto input = MakeNoise(3000, 4);
    auto resample = Make({44100, 48000, 31});
    const auto expected = Convert(resample, input);
    const auto change = [&resample] {
        resample.SetFilterOrder(63);
        resample.SetNyquistShift(0.9);
        resample.SetSampleRates(8000, 11025);
    };
    change();
    resample.Initialize(); // clears the past; the place between two samples stays
    EXPECT_NE(Convert(resample, input), expected);
    resample.Deinitialize(false);
    resample.SetSampleRates(44100, 48000); // starts anew
    EXPECT_EQ(Convert(resample, input), expected);
    resample.Deinitialize(false);
    change();
    auto other = Make({8000, 11025, 63, 150, 0.9});
    EXPECT_EQ(Convert(resample, input), Convert(other, input));
    EXPECT_EQ(resample.GetLatency(), other.GetLatency());

    // One in two samples comes out; an odd count before leaves the next one out of turn, for a new table too.
    for (const double noiseFloor : {150.0, 40.0}) {
        auto half = Make({88200, 44100, 9});
        ASSERT_EQ(Convert(half, input, 0, 3).size(), 2u);
        half.SetNoiseFloor(noiseFloor);
        half.Initialize();
        EXPECT_EQ(Convert(half, input, 0, 3).size(), 1u);
    }
    // A noise floor that comes late waits for the next table.
    auto late = Make({88200, 44100, 9});
    late.Initialize();
    late.SetNoiseFloor(40.0);
    auto early = Make({88200, 44100, 9});
    EXPECT_EQ(Convert(late, input), Convert(early, input));
}

/// Allocations of `Initialize`: those of a table are added to those of the past.
std::size_t CountAllocations(Resample& ioResample)
{
    const AllocationCounter counter;
    ioResample.Initialize();
    return counter.GetAllocations();
}

TEST(ResampleTest, EqualSettingsShareATableUntilSixtyFourOthersCame)
{
    const auto make = [](double inNoiseFloor, double inShift = 0.5) {
        return Make({10000, 20000, 7, inNoiseFloor, inShift});
    };
    auto first = make(100.0);
    const auto built = CountAllocations(first);
    auto second = make(100.0);
    const auto shared = CountAllocations(second);
    ASSERT_LT(shared, built);
    auto near = make(100.000009, 0.499991);
    EXPECT_EQ(CountAllocations(near), shared);
    for (int i = 1; i < 64; ++i) {
        auto other = make(100.0 + i);
        EXPECT_GT(CountAllocations(other), shared) << i;
    }
    auto last = make(100.0); // the oldest of 64, and as old after it was found
    EXPECT_EQ(CountAllocations(last), shared);
    auto evicting = make(90.0);
    EXPECT_GT(CountAllocations(evicting), shared);
    auto again = make(100.0);
    EXPECT_GT(CountAllocations(again), shared);
    const auto input = MakeNoise(100, 5);
    EXPECT_EQ(Convert(first, input), Convert(again, input)); // the evicted table lives on where it is used
}

TEST(ResampleTest, ThreadsMayInitializeAtOnce)
{
    const auto input = MakeNoise(500, 8);
    std::vector<Row> outputs(4);
    std::vector<std::thread> threads;
    for (auto& output : outputs) {
        threads.emplace_back([&] {
            for (int i = 0; i < 80; ++i) {
                auto resample = Make({3000, 4000, 5, 70.0 + i % 70});
                output = Convert(resample, input);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(outputs, std::vector<Row>(4, outputs[0]));
}

TEST(ResampleTest, CopiesGoTheirOwnWaysAndProcessingDoesNotAllocate)
{
    const auto input = MakeNoise(2000, 6);
    auto resample = Make({44100, 48000});
    resample.Initialize();
    Row output(3000);
    {
        AllocationGuard guard;
        resample.Process(input.data(), output.data(), 1000);
    }
    Resample copy(resample);
    Resample assigned;
    assigned = copy;
    const auto expected = Convert(resample, input, 1000);
    {
        AllocationGuard guard;
        copy.Process2(input.data() + 1000, output.data(), 900);
    }
    EXPECT_TRUE(std::equal(output.begin(), output.begin() + 900, expected.begin()));
    EXPECT_EQ(Convert(assigned, input, 1000), expected);
}

TEST(ResampleTest, NotANumberIsGoneAfterAsManySamplesAsTaps)
{
    for (const auto& conversion : kConversions) {
        auto input = MakeNoise(9000, 7);
        auto clean = Make(conversion);
        const auto expected = Convert(clean, input);
        const ClosedForm form(conversion);
        input[3000] = std::numeric_limits<float>::quiet_NaN();
        input[3001] = std::numeric_limits<float>::infinity();
        auto resample = Make(conversion);
        const auto output = RunInBlocks(resample, input, 7);
        ASSERT_EQ(output.size(), expected.size());
        for (std::size_t i = 0; i < output.size(); ++i) {
            const long newest = form.GetNewest(i);
            const bool isHit = newest >= 3000 && newest <= 3001 + conversion.mOrder - 1;
            ASSERT_EQ(std::isfinite(output[i]), !isHit) << conversion.mDestination << " " << i;
            if (!isHit) {
                ASSERT_NEAR(output[i], expected[i], 1e-7);
            }
        }
    }
}

} // namespace
} // namespace tessaro
