#include <tessaro/filters/ButterworthCascade.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {

namespace {

using testing::Row;

ButterworthCascade Make(int inOrder, int inType, double inCutoff, double inUpperCutoff = 0.0)
{
    ButterworthCascade cascade;
    cascade.Configure(inOrder, inType);
    EXPECT_EQ(cascade.Retune(inCutoff, inUpperCutoff), ButterworthCascade::kNoError);
    return cascade;
}

/// A narrow band deep down needs the decay of its low frequencies.
Row Impulse(ButterworthCascade inCascade)
{
    Row impulse = testing::MakeImpulse(20000);
    inCascade.Process(impulse.data(), static_cast<int>(impulse.size()));
    return impulse;
}

double ClosedForm(int inOrder, int inType, double inEdge, double inUpperEdge, double inFrequency)
{
    const auto warp = [](double inValue) { return std::tan(std::numbers::pi * inValue); };
    const double w = warp(inFrequency), low = warp(inEdge), high = warp(inUpperEdge);
    const double band = (w * w - low * high) / (w * (high - low));
    double prototype = 0.0;
    switch (inType) {
    case ButterworthCascade::kLowpass:
        prototype = w / low;
        break;
    case ButterworthCascade::kHighpass:
        prototype = low / w;
        break;
    case ButterworthCascade::kBandpass:
        prototype = band;
        break;
    default:
        prototype = 1.0 / band;
    }
    return 1.0 / std::sqrt(1.0 + std::pow(prototype, 2 * inOrder));
}

TEST(ButterworthCascadeTest, ImpulseHasTheMaximallyFlatMagnitude)
{
    for (const double rate : testing::kSampleRates) {
        for (const int type : {1, 2, 3, 4}) {
            for (const int order : {1, 2, 5, 8}) {
                const double edge = 1000.0 / rate, upperEdge = 4000.0 / rate;
                const auto impulse = Impulse(Make(order, type, edge, upperEdge));
                for (const double frequency : {250.0, 900.0, 1000.0, 2200.0, 4000.0, 5000.0, 15000.0}) {
                    const double wanted = ClosedForm(order, type, edge, upperEdge, frequency / rate);
                    EXPECT_NEAR(testing::MagnitudeOfImpulse(impulse, frequency / rate), wanted, 1e-5)
                        << "type " << type << ", order " << order << ", " << frequency << " of " << rate;
                }
            }
        }
    }
}

TEST(ButterworthCascadeTest, HighestOrdersStandInForThoseAbove)
{
    const auto orderOf = [](int inOrder, int inType) {
        ButterworthCascade cascade;
        cascade.Configure(inOrder, inType);
        EXPECT_EQ(cascade.GetNumSections(), static_cast<std::size_t>((cascade.GetOrder() + 1) / 2));
        return cascade.GetOrder();
    };
    EXPECT_EQ(orderOf(25, 1), 25);
    EXPECT_EQ(orderOf(26, 2), 26);
    EXPECT_EQ(orderOf(27, 1), 26);
    EXPECT_EQ(orderOf(80, 2), 26);
    EXPECT_EQ(orderOf(15, 3), 15);
    EXPECT_EQ(orderOf(17, 4), 16);
    EXPECT_EQ(orderOf(90, 3), 16);
    EXPECT_NEAR(testing::MagnitudeOfImpulse(Impulse(Make(90, 1, 0.1)), 0.1), std::sqrt(0.5), 1e-4);
}

TEST(ButterworthCascadeTest, ReportsWhatCannotBeDesignedAndChangesNothing)
{
    std::array<ButterworthCascade::Section, 4> sections;
    EXPECT_EQ(ButterworthCascade::Design(4, 0, 0.1, 0.2, sections.data()), 4);
    EXPECT_EQ(ButterworthCascade::Design(4, 5, 0.1, 0.2, sections.data()), 4);
    EXPECT_EQ(ButterworthCascade::Design(0, 1, 0.1, 0.2, sections.data()), 1);
    EXPECT_EQ(sections[0].mFeed[0], 1.0);

    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    auto cascade = Make(4, 1, 0.1);
    const auto before = Impulse(cascade);
    for (const double cutoff : {0.0, -0.1, kNaN}) {
        EXPECT_EQ(cascade.Retune(cutoff), 5);
    }
    EXPECT_EQ(Impulse(cascade), before);
    EXPECT_EQ(cascade.Retune(0.7), 0) << "is limited first";
    EXPECT_EQ(Impulse(cascade), Impulse(Make(4, 1, 0.49)));

    cascade.Configure(4, 3);
    EXPECT_EQ(cascade.Retune(0.2, 0.2), 5);
    EXPECT_EQ(cascade.Retune(0.2, 0.1), 5);
    EXPECT_EQ(cascade.Retune(0.2, kNaN), 5);
    EXPECT_EQ(cascade.Retune(0.6, 0.8), 5);
    EXPECT_EQ(Impulse(cascade), testing::MakeImpulse(20000)) << "passes until it is tuned";

    cascade.Configure(0, 2);
    EXPECT_EQ(cascade.GetNumSections(), 1u);
    EXPECT_EQ(cascade.Retune(0.1), 1);
    cascade.Configure(4, 9);
    EXPECT_EQ(cascade.GetType(), ButterworthCascade::kLowpass);
}

TEST(ButterworthCascadeTest, StrideAndSplitsChangeNoBit)
{
    for (const int type : {2, 4}) {
        const auto noise = testing::MakeNoise(2000, 5);
        auto whole = Make(5, type, 0.05, 0.2);
        auto split = whole;
        Row wanted = noise;
        whole.Process(wanted.data(), 2000);
        Row strided(3 * noise.size(), 9.0f);
        for (std::size_t i = 0; i < noise.size(); ++i) {
            strided[3 * i] = noise[i];
        }
        for (int done = 0, count = 1; done < 2000; done += count, count = count * 2 % 301) {
            count = std::min(count, 2000 - done);
            testing::AllocationGuard guard;
            split.Process(strided.data() + 3 * done, count, 3);
        }
        for (std::size_t i = 0; i < noise.size(); ++i) {
            ASSERT_EQ(strided[3 * i], wanted[i]) << type << ":" << i;
            ASSERT_EQ(strided[3 * i + 1], 9.0f);
        }
        whole.Reset();
        EXPECT_EQ(Impulse(whole), Impulse(Make(5, type, 0.05, 0.2)));
    }
}

TEST(ButterworthCascadeTest, KeepsItsMemoryOverARetuneAndConfiguresOnlyChanges)
{
    // At rest on a constant, a low-pass of any cutoff stays there.
    auto cascade = Make(4, 1, 0.05);
    Row row(4000, 0.5f);
    cascade.Process(row.data(), 4000);
    cascade.Configure(4, 1);
    EXPECT_EQ(cascade.Retune(0.2), 0);
    row.assign(200, 0.5f);
    cascade.Process(row.data(), 200);
    for (const float sample : row) {
        ASSERT_NEAR(sample, 0.5f, 1e-5f);
    }
    cascade.Configure(6, 1);
    EXPECT_EQ(cascade.Retune(0.2), 0);
    row = {0.5f};
    cascade.Process(row.data(), 1);
    EXPECT_LT(row[0], 0.1f) << "a new order begins with silence";
}

TEST(ButterworthCascadeTest, SmoothedRetuneGoesThereByStepsInProportionToBlocks)
{
    const auto start = Make(1, 1, 0.01);
    const auto end = Make(1, 1, 0.2);
    const auto firstTap = [](ButterworthCascade inCascade) {
        float sample = 1.0f;
        inCascade.Process(&sample, 1);
        return sample;
    };
    auto cascade = start;
    EXPECT_EQ(cascade.Retune(0.2, 0.0, 1000), 0);
    Row silence(250);
    const float from = firstTap(start), to = firstTap(end);
    for (int block = 1; block <= 3; ++block) {
        cascade.Process(silence.data(), 250);
        EXPECT_NEAR(firstTap(cascade), from + (to - from) * static_cast<float>(block) / 4.0f, 0.002f);
    }
    cascade.Process(silence.data(), 250);
    cascade.Process(silence.data(), 250);
    EXPECT_EQ(Impulse(cascade), Impulse(end)) << "lands exactly, and goes no further";
}

} // namespace

} // namespace tessaro
