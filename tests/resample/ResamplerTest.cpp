#include <tessaro/resample/Resampler.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Measures.h"
#include "support/Signals.h"

namespace tessaro::utility {

namespace {

using testing::PlanarRows;
using testing::Row;

/// The kernel by its closed form, at a distance from the position in samples of the source.
class PlainKernel
{
public:
    PlainKernel(int inPhases, double inZeroCrossings, double inScale) : mPhases(inPhases), mScale(inScale)
    {
        const auto taps = std::lround(2.0 * inPhases * inZeroCrossings * inScale);
        mHalf = (taps | 1) / 2;
        for (long i = -mHalf; i <= mHalf; ++i) {
            mSum += Shape(i);
        }
    }
    double operator()(long inTapsAway) const
    {
        return std::abs(inTapsAway) > mHalf ? 0.0 : Shape(inTapsAway) * mPhases / mSum;
    }

private:
    double Shape(long inTap) const
    {
        const double x = std::numbers::pi * static_cast<double>(inTap) / (mPhases * mScale);
        const double u = static_cast<double>(inTap) / static_cast<double>(mHalf);
        return (inTap == 0 ? 1.0 : std::sin(x) / x) *
               std::cyl_bessel_i(0.0, 12.0 * std::sqrt(std::max(0.0, 1.0 - u * u)));
    }

    int mPhases;
    double mScale;
    long mHalf;
    double mSum = 0.0;
};

/// Every sample of the endless loop that the kernel reaches.
double ReadPlainly(const PlainKernel& inKernel, int inPhases, double inReach, const Row& inLoop,
                   double inPosition)
{
    const auto count = static_cast<long>(inLoop.size());
    const auto whole = static_cast<long>(std::floor(inPosition));
    const auto phase = static_cast<long>((inPosition - static_cast<double>(whole)) * inPhases + 0.5);
    const auto reach = static_cast<long>(inReach) + 2;
    double sum = 0.0;
    for (long i = whole - reach; i <= whole + reach; ++i) {
        const auto index = static_cast<std::size_t>((i % count + count) % count);
        sum += inKernel((i - whole) * inPhases - phase) * inLoop[index];
    }
    return sum;
}

struct Design
{
    int mPhases;
    float mZeroCrossings;
    float mSource;
    float mDestination;
};

} // namespace

TEST(ResamplerTest, ReadsTheLoopThroughTheKernelAtAnyPlaceOfBuffersOfAnyLength)
{
    for (const Design& design : {Design{8192, 16.0f, 44100.0f, 48000.0f}, Design{1024, 8.0f, 1.0f, 1.0f},
                                 Design{64, 5.3f, 96000.0f, 44100.0f}, Design{7, 4.0f, 3.0f, 2.0f},
                                 Design{1, 6.0f, 2.0f, 1.0f}, Design{16, 0.3f, 1.0f, 1.0f}}) {
        Resampler resampler(design.mPhases);
        resampler.SetOptimalKernel(design.mZeroCrossings, design.mSource, design.mDestination);
        const double scale = std::max(design.mSource / design.mDestination, 1.0f);
        const PlainKernel kernel(design.mPhases, design.mZeroCrossings, scale);
        EXPECT_GE(resampler.GetLookAround(), design.mZeroCrossings * scale);
        for (const std::size_t length : {1u, 5u, 33u, 400u}) {
            SCOPED_TRACE(::testing::Message() << design.mPhases << " phases, length " << length);
            const Row loop = testing::MakeNoise(length, 17);
            const auto count = static_cast<unsigned>(length);
            const double end = static_cast<double>(length);
            std::vector<double> positions{0.0,       0.4999, end - 1.0,      end - 1e-9,
                                          end + 3.7, -0.3,   -5 * end - 1.25};
            for (int i = 0; i < 100; ++i) {
                positions.push_back(i * end / 97.3);
            }
            for (const double position : positions) {
                ASSERT_NEAR(
                    resampler.InterpolateSingle(loop.data(), count, position),
                    ReadPlainly(kernel, design.mPhases, design.mZeroCrossings * scale, loop, position), 4e-6)
                    << position;
            }
        }
    }
}

TEST(ResamplerTest, ReadsManyAsItReadsOneInAnySplitAndDirection)
{
    Resampler resampler(8192);
    resampler.SetOptimalKernel(16.0f, 48000.0f, 44100.0f);
    auto input = PlanarRows::OfNoise(2, 1000, 3);
    for (const double step : {48000.0 / 44100.0, 0.25, -0.6, 0.0, 1.0, 37.5}) {
        PlanarRows whole(2, 900, 7.0f);
        PlanarRows split(2, 900, 7.0f);
        const double start = step < 0.0 ? 990.0 : 2.25;
        {
            testing::AllocationGuard guard;
            resampler.InterpolateNSamples(input.From(0), 2, 1000, start, whole.From(0), 5, 890, step, true);
            unsigned done = 0;
            for (const unsigned count : {0u, 1u, 3u, 64u, 65u, 757u}) {
                resampler.InterpolateNSamples(input.From(0), 2, 1000, start + done * step, split.From(0),
                                              5 + done, count, step, false);
                done += count;
            }
        }
        EXPECT_EQ(whole[1][4], 7.0f);
        EXPECT_EQ(whole[0][895], 7.0f);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            for (unsigned n = 0; n < 890; ++n) {
                ASSERT_NEAR(whole[channel][5 + n],
                            resampler.InterpolateSingle(input[channel].data(), 1000, start + n * step), 2e-6)
                    << step << ' ' << n;
                ASSERT_NEAR(whole[channel][5 + n], split[channel][5 + n], 1e-3) << step << ' ' << n;
            }
        }
    }
}

TEST(ResamplerTest, WithoutKernelOrPlaceGivesZerosOrTheCopyAndIgnoresWhatMakesNoKernel)
{
    Resampler resampler(32);
    resampler.SetOptimalKernel(0.0f, 1.0f, 1.0f);
    resampler.SetOptimalKernel(8.0f, -1.0f, 1.0f);
    resampler.SetOptimalKernel(8.0f, 1.0f, std::numeric_limits<float>::quiet_NaN());
    resampler.SetOptimalKernel(1e9f, 1.0f, 1.0f);
    EXPECT_EQ(resampler.GetLookAround(), 2u);
    PlanarRows input({Row{1.0f, 2.0f, 3.0f}});
    PlanarRows output(1, 8, 7.0f);
    EXPECT_EQ(resampler.InterpolateSingle(input[0].data(), 3, 1.0), 0.0f);
    resampler.InterpolateNSamples(input.From(0), 1, 3, 0.5, output.From(0), 0, 2, 1.0, false);
    resampler.InterpolateNSamples(input.From(0), 1, 3, 4.5, output.From(0), 2, 5, 1.0, true);
    EXPECT_EQ(output[0], (Row{0.0f, 0.0f, 3.0f, 1.0f, 2.0f, 3.0f, 1.0f, 7.0f}));

    resampler.SetOptimalKernel(8.0f, 1.0f, 1.0f);
    EXPECT_EQ(resampler.GetLookAround(), 17u / 2 + 2);
    const Resampler copy(resampler);
    EXPECT_EQ(copy.InterpolateSingle(input[0].data(), 3, 1.3),
              resampler.InterpolateSingle(input[0].data(), 3, 1.3));
    EXPECT_EQ(copy.InterpolateSingle(input[0].data(), 0, 1.3), 0.0f);

    for (const double position : {1e300, -1e17, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(copy.InterpolateSingle(input[0].data(), 3, position), 0.0f);
        copy.InterpolateNSamples(input.From(0), 1, 3, position, output.From(0), 0, 8, 1.0, true);
        EXPECT_EQ(output[0], Row(8, 0.0f));
    }
}

namespace {

/// What is left of a converted sine after the best sine of its frequency is taken away, in dB below it. The
/// row is a second long and holds whole periods, so its ends meet.
double NoiseOfConvertedSine(unsigned inSource, unsigned inDestination, double inFrequency, float inQuality)
{
    const Row sine = testing::MakeSine(inSource, inFrequency, inSource, 0.5);
    Row output;
    Resample(inSource, inDestination, inSource, sine.data(), output, inQuality);
    EXPECT_EQ(output.size(), inDestination);
    // A gain that is off is no noise: the deviation of the level is checked on its own.
    const double amplitude = testing::AmplitudeAt(output, inFrequency, inDestination);
    EXPECT_NEAR(testing::ToDecibels(amplitude / 0.5), 0.0, 0.05) << inFrequency;
    return testing::NullDepthInDecibels(
        testing::MakeSine(inDestination, inFrequency, inDestination, amplitude), output);
}

} // namespace

TEST(WholeBufferResampleTest, KeepsSinesCleanUpToTheEdgeOfTheBand)
{
    // Rounding to one of 8192 places leaves noise in proportion to the frequency; doubling the rate has none.
    for (const float quality : {0.0f, 0.5f, 1.0f}) {
        EXPECT_LT(NoiseOfConvertedSine(44100, 48000, 997.0, quality), -105.0);
        EXPECT_LT(NoiseOfConvertedSine(48000, 44100, 997.0, quality), -105.0);
        EXPECT_LT(NoiseOfConvertedSine(44100, 88200, 997.0, quality), quality > 0.0f ? -138.0 : -110.0);
    }
    EXPECT_LT(NoiseOfConvertedSine(44100, 48000, 17000.0, 0.5f), -80.0);
    EXPECT_LT(NoiseOfConvertedSine(44100, 48000, 19000.0, 1.0f), -80.0);
    EXPECT_LT(NoiseOfConvertedSine(48000, 44100, 19000.0, 1.0f), -80.0);
    EXPECT_LT(NoiseOfConvertedSine(44100, 88200, 19000.0, 1.0f), -120.0);
}

TEST(WholeBufferResampleTest, UpAndDownAgainNullsAndWhatDoesNotFitTheBandGoesAway)
{
    const auto low = [](std::size_t inCount) {
        Row row = testing::MakeSine(inCount, 100.0, 44100.0, 0.3);
        const Row high = testing::MakeSine(inCount, 15000.0, 44100.0, 0.3);
        std::transform(row.begin(), row.end(), high.begin(), row.begin(), std::plus<>());
        return row;
    }(44100);
    Row up;
    Row back;
    Resample(44100, 88200, 44100, low.data(), up, {});
    Resample(88200, 44100, 88200, up.data(), back, {});
    EXPECT_LT(testing::NullDepthInDecibels(low, back), -95.0);

    const Row tooHigh = testing::MakeSine(96000, 30000.0, 96000.0, 0.5);
    Row down;
    Resample(96000, 44100, 96000, tooHigh.data(), down, 1.0f);
    EXPECT_LT(testing::ToDecibels(testing::Rms(down)), -120.0);
}

TEST(WholeBufferResampleTest, QualityIsClampedAndAHalfWhenNotSetAndAllFormsAgree)
{
    auto input = PlanarRows::OfNoise(3, 1000, 5);
    const auto convert = [&](const ombrel::checked_value<float>& inQuality) {
        Row output;
        Resample(44100, 48000, 1000, input[2].data(), output, inQuality);
        return output;
    };
    EXPECT_EQ(convert({}), convert(0.5f));
    EXPECT_EQ(convert(2.0f), convert(1.0f));
    EXPECT_EQ(convert(-1.0f), convert(0.0f));
    EXPECT_NE(convert(0.0f), convert(0.5f));
    EXPECT_NE(convert(1.0f), convert(0.5f));
    EXPECT_EQ(convert({}).size(), 1088u); // 1088.4

    std::vector<Row> rows(7);
    Resample(44100, 48000, 1000, 3, input.From(0), rows, {});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[2], convert({}));
    EXPECT_NE(rows[1], rows[2]);

    // The resampler is designed for the rates, 16 zero crossings to each side.
    Resampler resampler(8192);
    resampler.SetOptimalKernel(16.0f, 44100.0f, 48000.0f);
    EXPECT_NEAR(rows[1][700], resampler.InterpolateSingle(input[1].data(), 1000, 700 * 44100.0 / 48000.0),
                1e-6);
}

TEST(WholeBufferResampleTest, CopiesAtEqualRatesAndRoundsLengthsAwayFromZero)
{
    const Row input = testing::MakeNoise(5, 3);
    Row output(9, 1.0f);
    Resample(48000, 48000, 5, input.data(), output, 0.7f);
    EXPECT_EQ(output, input);
    std::vector<Row> rows;
    const float* inputs[] = {input.data(), input.data() + 2};
    Resample(48000, 48000, 3, 2, inputs, rows, {});
    EXPECT_EQ(rows[1], Row(input.begin() + 2, input.end()));
    Resample(2, 1, 5, input.data(), output, {});
    EXPECT_EQ(output.size(), 3u); // 2.5
    Resample(44100, 48000, 0, input.data(), output, {});
    EXPECT_TRUE(output.empty());
    Resample(0, 48000, 5, input.data(), output, {});
    EXPECT_TRUE(output.empty());
}

TEST(WholeBufferResampleTest, LetsTheEdgesHearEachOther)
{
    Row output;
    const Row impulse = testing::MakeImpulse(200, 199);
    Resample(44100, 88200, 200, impulse.data(), output, {});
    const double scale = output[398];
    EXPECT_NEAR(scale, 1.0, 1e-3);
    EXPECT_GT(output[399], 0.6f * scale);
    EXPECT_NEAR(output[1], output[2 * 199 - 3], 1e-6) << "symmetric about the impulse, around the edge";
    EXPECT_LT(output[1], -0.1f);
}

} // namespace tessaro::utility
