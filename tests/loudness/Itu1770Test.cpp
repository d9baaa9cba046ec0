#include <tessaro/loudness/Itu1770.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeNoise;
using testing::MakeSine;
using testing::PoisonedRow;
using testing::Row;

using Labels = std::vector<Itu1770::ChannelLabel>;

const Labels kMono{Itu1770::kCenter};
const Labels kStereo{Itu1770::kLeft, Itu1770::kRight};
const Labels kSurround{Itu1770::kLeft,         Itu1770::kRight,        Itu1770::kCenter,
                       Itu1770::kLowFrequency, Itu1770::kLeftSurround, Itu1770::kRightSurround};

double FromDecibels(double inLevel)
{
    return std::pow(10.0, inLevel / 20.0);
}

std::vector<const float*> PointersTo(const std::vector<Row>& inRows, std::size_t inOffset = 0)
{
    std::vector<const float*> pointers;
    for (const auto& row : inRows) {
        pointers.push_back(row.data() + inOffset);
    }
    return pointers;
}

float Measure(const std::vector<Row>& inRows, const Labels& inLabels, float inRate, unsigned inBlock = 1024)
{
    Itu1770 meter;
    meter.Init(inBlock, inRate, inLabels);
    for (std::size_t done = 0; done < inRows[0].size(); done += inBlock) {
        const auto count = std::min<std::size_t>(inBlock, inRows[0].size() - done);
        meter.Process(PointersTo(inRows, done).data(), static_cast<unsigned>(count));
    }
    return meter.GetLKFS();
}

struct Tone
{
    double mSeconds;
    double mLevel; ///< dB of the peak
};

/// Tones of 1000 Hz one after the other
Row MakeTones(const std::vector<Tone>& inTones, double inRate)
{
    Row row;
    for (const auto& [seconds, level] : inTones) {
        const Row tone =
            MakeSine(static_cast<std::size_t>(seconds * inRate), 1000.0, inRate, FromDecibels(level));
        row.insert(row.end(), tone.begin(), tone.end());
    }
    return row;
}

/// EBU Tech 3341, minimum requirements test signals 1 to 6: integrated loudness -23 (-33 in case 2), within
/// 0.1 LU
TEST(Itu1770Test, MeetsTheMinimumRequirementSignals)
{
    struct Case
    {
        std::vector<Tone> mTones;
        double mLoudness;
    };
    const Case cases[] = {
        {{{20, -23}}, -23},
        {{{20, -33}}, -33},
        {{{10, -36}, {60, -23}, {10, -36}}, -23},
        {{{10, -72}, {10, -36}, {60, -23}, {10, -36}, {10, -72}}, -23},
        {{{20, -26}, {20.1, -20}, {20, -26}}, -23},
    };
    int number = 1;
    for (const auto& [tones, loudness] : cases) {
        const Row row = MakeTones(tones, 48000);
        const float measured = Measure({row, row}, kStereo, 48000);
        std::printf("3341 case %d: %.3f\n", number++, measured);
        EXPECT_NEAR(measured, loudness, 0.1);
    }
    const auto tone = [](double inLevel) { return MakeTones({{20, inLevel}}, 48000); };
    const float surround =
        Measure({tone(-28), tone(-28), tone(-24), tone(0), tone(-30), tone(-30)}, kSurround, 48000);
    std::printf("3341 case 6: %.3f\n", surround);
    EXPECT_NEAR(surround, -23, 0.1);
}

/// The power response of a second-order section as the Recommendation tabulates it, for 48 kHz
double PowerOf(const double (&inB)[3], const double (&inA)[3], double inFrequency)
{
    const double w = 2.0 * M_PI * inFrequency / 48000.0;
    const auto power = [w](const double(&c)[3]) {
        return c[0] * c[0] + c[1] * c[1] + c[2] * c[2] + 2.0 * c[1] * (c[0] + c[2]) * std::cos(w) +
               2.0 * c[0] * c[2] * std::cos(2.0 * w);
    };
    return power(inB) / power(inA);
}

constexpr double kPrefilterB[] = {1.53512485958697, -2.69169618940638, 1.19839281085285};
constexpr double kPrefilterA[] = {1.0, -1.69065929318241, 0.73248077421585};
constexpr double kRLBB[] = {1.0, -2.0, 1.0};
constexpr double kRLBA[] = {1.0, -1.99004745483398, 0.99007225036621};

/// As in ITU-R BS.2217: tones over the band, mono, stereo and 5.1, at the levels that read -23 and -24
TEST(Itu1770Test, TonesOverTheBandReadTheirComplianceLevel)
{
    double worst = 0.0;
    for (const double frequency : {25.0, 100.0, 500.0, 1000.0, 2000.0, 10000.0}) {
        const double gain = PowerOf(kPrefilterB, kPrefilterA, frequency) * PowerOf(kRLBB, kRLBA, frequency);
        for (const double loudness : {-23.0, -24.0}) {
            for (const auto* labels : {&kMono, &kStereo, &kSurround}) {
                const double weight = labels == &kMono ? 1.0 : labels == &kStereo ? 2.0 : 3.0 + 2.0 * 1.41;
                const double power = std::pow(10.0, (loudness + 0.691) / 10.0) / (gain * weight);
                const Row tone = MakeSine(10 * 48000, frequency, 48000, std::sqrt(2.0 * power));
                const float measured = Measure(std::vector<Row>(labels->size(), tone), *labels, 48000);
                EXPECT_NEAR(measured, loudness, 0.1) << frequency << " Hz, " << labels->size();
                worst = std::max(worst, std::fabs(measured - loudness));
            }
        }
    }
    std::printf("tones over the band: off by %.4f LU at most\n", worst);
    EXPECT_LT(worst, 0.01);
}

TEST(Itu1770Test, FiltersAreThoseOfTheRecommendation)
{
    const auto pre = Itu1770::CalculatePrefilterCoefficients(48000);
    const auto rlb = Itu1770::CalculateRLBfilterCoefficients(48000);
    EXPECT_NEAR(pre.b0, kPrefilterB[0], 1e-12);
    EXPECT_NEAR(pre.b1, kPrefilterB[1], 1e-12);
    EXPECT_NEAR(pre.b2, kPrefilterB[2], 1e-12);
    EXPECT_NEAR(pre.a1, kPrefilterA[1], 1e-12);
    EXPECT_NEAR(pre.a2, kPrefilterA[2], 1e-12);
    EXPECT_NEAR(rlb.a1, kRLBA[1], 1e-12);
    EXPECT_NEAR(rlb.a2, kRLBA[2], 1e-12);
    EXPECT_NEAR(rlb.b0, 1.0, 1e-12);
    EXPECT_NEAR(rlb.b1, -2.0 * rlb.b0, 1e-15);
    EXPECT_EQ(rlb.b2, rlb.b0);
}

TEST(Itu1770Test, FullScaleSineReadsTheSameAtEveryRate)
{
    for (const float rate : {16000.0f, 22050.0f, 32000.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f}) {
        const Row sine = MakeSine(static_cast<std::size_t>(4 * rate), 997.0, rate);
        const Row silence(sine.size());
        EXPECT_NEAR(Measure({sine, silence}, kStereo, rate), -3.01, rate < 30000 ? 0.1 : 0.02) << rate;
    }
}

/// The measurement in plain words: double precision throughout, all blocks kept
double PlainLoudness(const std::vector<Row>& inRows, const std::vector<double>& inWeights)
{
    constexpr std::size_t kBlock = 19200;
    std::vector<std::vector<double>> weighted;
    for (const auto& row : inRows) {
        std::vector<double> values(row.begin(), row.end());
        for (const auto& [b, a] : {std::pair(&kPrefilterB, &kPrefilterA), std::pair(&kRLBB, &kRLBA)}) {
            double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
            for (auto& value : values) {
                const double y = (*b)[0] * value + (*b)[1] * x1 + (*b)[2] * x2 - (*a)[1] * y1 - (*a)[2] * y2;
                x2 = x1;
                x1 = value;
                y2 = y1;
                value = y1 = y;
            }
        }
        weighted.push_back(values);
    }
    std::vector<double> powers;
    for (std::size_t begin = 0; begin + kBlock <= inRows[0].size(); begin += kBlock / 4) {
        double power = 0;
        for (std::size_t row = 0; row < inRows.size(); ++row) {
            for (std::size_t i = 0; i < kBlock; ++i) {
                power += inWeights[row] * weighted[row][begin + i] * weighted[row][begin + i] / kBlock;
            }
        }
        powers.push_back(power);
    }
    const auto meanAbove = [&powers](double inGate) {
        double sum = 0;
        double count = 0;
        for (const double power : powers) {
            sum += power > inGate ? power : 0;
            count += power > inGate ? 1 : 0;
        }
        return sum / count;
    };
    const double absolute = std::pow(10.0, (-70.0 + 0.691) / 10.0);
    return 10.0 * std::log10(meanAbove(std::max(absolute, meanAbove(absolute) / 10.0))) - 0.691;
}

TEST(Itu1770Test, ProgrammeWithPausesReadsAsAPlainMeterDoes)
{
    std::vector<Row> rows;
    for (unsigned channel = 0; channel < 6; ++channel) {
        Row row;
        for (const double level : {-20.0, -90.0, -35.0, -12.0, -28.0, -60.0}) {
            const Row part = MakeNoise(50000 + 3000 * channel * (level > -30.0 ? 1 : 0), channel + 10u,
                                       FromDecibels(level));
            row.insert(row.end(), part.begin(), part.end());
        }
        row.resize(340000);
        rows.push_back(row);
    }
    const double wanted = PlainLoudness({rows[0], rows[1], rows[2], rows[4], rows[5]}, {1, 1, 1, 1.41, 1.41});
    EXPECT_NEAR(Measure(rows, kSurround, 48000), wanted, 1e-3);
    // The low-frequency row is not even looked at.
    auto pointers = PointersTo(rows);
    pointers[3] = nullptr;
    Itu1770 meter;
    meter.Init(340000, 48000, kSurround);
    meter.Process(pointers.data(), 340000);
    EXPECT_NEAR(meter.GetLKFS(), wanted, 1e-3);
}

TEST(Itu1770Test, SplitsAndRestartsChangeNothing)
{
    const std::vector<Row> rows{MakeNoise(100000, 1, 0.1), MakeNoise(100000, 2, 0.2)};
    const float whole = Measure(rows, kStereo, 44100, 100000);
    for (const unsigned block : {1u, 441u, 512u, 4410u, 17640u, 17641u}) {
        EXPECT_EQ(Measure(rows, kStereo, 44100, block), whole) << block;
    }
    Itu1770 meter;
    meter.Init(64, 44100, kStereo);
    meter.Process(PointersTo(rows).data(), 100000); // beyond the maximum
    EXPECT_EQ(meter.GetLKFS(), whole);
    meter.Init(512, 44100, kStereo);
    EXPECT_FALSE(meter.IsValid());
    meter.Process(PointersTo(rows).data(), 0);
    meter.Process(PointersTo(rows).data(), 100000);
    EXPECT_EQ(meter.GetLKFS(), whole);
}

TEST(Itu1770Test, BelowTheAbsoluteGateOrABlockNothingIsMeasured)
{
    Itu1770 unready;
    unready.Process(nullptr, 100);
    EXPECT_EQ(unready.GetLKFS(), -300.0f);
    Itu1770 meter;
    meter.Init(20000, 48000, kMono);
    const Row tone = MakeSine(19200, 1000, 48000, 0.5);
    meter.Process(PointersTo({tone}).data(), 19199);
    EXPECT_FALSE(meter.IsValid());
    EXPECT_EQ(meter.GetLKFS(), -300.0f);
    meter.Process(PointersTo({tone}).data(), 1);
    EXPECT_TRUE(meter.IsValid());
    for (const double level : {-70.1, -69.9}) { // of a stereo tone, which reads its peak level
        const Row quiet = MakeSine(96000, 1000, 48000, FromDecibels(level));
        const float measured = Measure({quiet, quiet}, kStereo, 48000);
        EXPECT_NEAR(measured, level > -70 ? level : -300.0, 0.05);
    }
    EXPECT_EQ(Measure({Row(50000)}, kMono, 48000), -300.0f);
}

TEST(Itu1770Test, ASilentChannelIsNotReadAndItsFiltersStandStill)
{
    const Row loud = MakeNoise(48000, 4, 0.5);
    const PoisonedRow silent(48000);
    Itu1770 meter;
    meter.Init(48000, 48000, kStereo);
    meter.SetChannelsZero(ombrel::utility::Flags<std::uint64_t>::Bit(1));
    const float* const rows[] = {loud.data(), silent.Get()};
    meter.Process(rows, 48000);
    Itu1770 zeros;
    zeros.Init(48000, 48000, kStereo);
    zeros.Process(PointersTo({loud, Row(48000)}).data(), 48000);
    EXPECT_EQ(meter.GetLKFS(), zeros.GetLKFS());

    // A constant that has come in slowly: filters that had seen a pause in it would take its return for a
    // step.
    Itu1770 paused;
    paused.Init(48000, 48000, kMono);
    Row constant(48000, 1.0f);
    for (std::size_t i = 0; i < 24000; ++i) {
        constant[i] = static_cast<float>(i) / 24000.0f;
    }
    paused.Process(PointersTo({constant}).data(), 48000);
    paused.SetChannelsZero(1);
    const float* const poisoned[] = {silent.Get()};
    paused.Process(poisoned, 24000);
    paused.SetChannelsZero(0);
    paused.Process(PointersTo({constant}, 24000).data(), 24000);
    EXPECT_LT(paused.GetLKFS(), -40.0f);
    paused.SetChannelsZero(1);
    paused.Init(24000, 48000, kMono); // keeps the mask
    paused.Process(poisoned, 24000);
    EXPECT_FALSE(paused.IsValid());

    // The bits are those of the rows, and the low-frequency one has its own.
    Itu1770 lowFirst;
    lowFirst.Init(48000, 48000, {Itu1770::kLowFrequency, Itu1770::kCenter});
    lowFirst.SetChannelsZero(2);
    lowFirst.Process(rows, 48000);
    EXPECT_FALSE(lowFirst.IsValid());
    lowFirst.SetChannelsZero(1);
    lowFirst.Process(PointersTo({Row(48000), loud}).data(), 48000);
    EXPECT_TRUE(lowFirst.IsValid());
}

TEST(Itu1770Test, NaNEndsTheMeasurementUntilItStartsAnew)
{
    Row broken = MakeNoise(48000, 4, 0.5);
    broken[30000] = std::numeric_limits<float>::quiet_NaN();
    Itu1770 meter;
    meter.Init(48000, 48000, kMono);
    meter.Process(PointersTo({broken}).data(), 48000);
    EXPECT_TRUE(std::isfinite(meter.GetLKFS()));
    const float before = meter.GetLKFS();
    const Row fine = MakeNoise(48000, 4, 0.5);
    meter.Process(PointersTo({fine}).data(), 48000);
    EXPECT_EQ(meter.GetLKFS(), before);
    meter.Init(48000, 48000, kMono);
    meter.Process(PointersTo({fine}).data(), 48000);
    const float after = meter.GetLKFS();
    EXPECT_EQ(after, Measure({fine}, kMono, 48000));
    // The last sample of a block, where an infinity has not become a NaN yet; and a power beyond a float
    for (const float value : {std::numeric_limits<float>::infinity(), 1e30f}) {
        Row spike(4800, 0.0f);
        spike.back() = value;
        meter.Process(PointersTo({spike}).data(), 4800);
        EXPECT_EQ(meter.GetLKFS(), after) << value;
        meter.Init(48000, 48000, kMono);
        meter.Process(PointersTo({fine}).data(), 48000);
    }
}

TEST(Itu1770Test, MoreThan64ChannelsShareTheFlagsOfTheFirst)
{
    const Row noise = MakeNoise(24000, 4, 0.1);
    const Labels labels(66, Itu1770::kOther);
    const std::vector<Row> rows(66, noise);
    Itu1770 meter;
    meter.Init(512, 48000, labels);
    meter.SetChannelsZero(~ombrel::utility::Flags<std::uint64_t>::Bit(1));
    meter.Process(PointersTo(rows).data(), 24000);
    EXPECT_NEAR(meter.GetLKFS(), Measure({noise, noise}, kStereo, 48000), 1e-4); // rows 1 and 65
}

} // namespace
} // namespace tessaro
