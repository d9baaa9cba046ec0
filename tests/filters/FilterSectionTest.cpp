#include <tessaro/filters/FilterSection.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/filters/DeskFilter.h>
#include <tessaro/filters/EqualizerSections.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::Decibels;
using testing::kSampleRates;
using testing::MagnitudeOfImpulse;
using testing::MakeImpulse;
using testing::MakeSine;
using testing::Row;

/// Lets a test look at ramp and coefficients.
template <typename Section>
struct Open : Section
{
    using Section::mCurrent;
    using Section::mIncrement;
    using Section::mRampCount;
    using Section::mRampLength;
    using Section::mTarget;

    bool IsOnTarget() const
    {
        const auto same = [this](auto inField) { return mCurrent.*inField == mTarget.*inField; };
        const auto direct = mCurrent.DirectFields();
        const auto coupled = mCurrent.CoupledFields();
        return std::all_of(direct.begin(), direct.end(), same) &&
               std::all_of(coupled.begin(), coupled.end(), same);
    }
};

/// One of each class, with the level that its design promises at its frequency for a gain of 4 and of 12 dB
struct Kind
{
    const char* mName;
    std::unique_ptr<FilterSection> (*mMake)();
    double mAt4;
    double mAt12;
};

template <typename Section>
std::unique_ptr<FilterSection> Make()
{
    return std::make_unique<Section>();
}

constexpr Kind kKinds[] = {
    {"fPARA", Make<fPARA>, 4, 12},          {"dPARA", Make<dPARA>, 4, 12},
    {"fNotch", Make<fNotch>, 4, 12},        {"dNotch", Make<dNotch>, 4, 12},
    {"fHISHELVE", Make<fHISHELVE>, 2, 9},   {"dHISHELVE", Make<dHISHELVE>, 2, 9},
    {"fLOSHELVE", Make<fLOSHELVE>, 2, 9},   {"dLOSHELVE", Make<dLOSHELVE>, 2, 9},
    {"fHISHELVE2", Make<fHISHELVE2>, 2, 9}, {"dHISHELVE2", Make<dHISHELVE2>, 2, 9},
    {"fLOSHELVE2", Make<fLOSHELVE2>, 2, 9}, {"dLOSHELVE2", Make<dLOSHELVE2>, 2, 9},
};

void Design(FilterSection& ioSection, double inRate, double inFrequency, double inGain, double inQ)
{
    ioSection.Setup(static_cast<float>(inRate), static_cast<float>(inFrequency), static_cast<float>(inGain),
                    static_cast<float>(inQ), 0.0f, 0.0f);
    ioSection.TerminateRamp();
}

TEST(FilterSectionTest, EachKindHasItsLevelAtItsFrequencyAsToldAndAsMeasured)
{
    for (const auto& kind : kKinds) {
        for (const double rate : kSampleRates) {
            for (const bool coupled : {false, true}) {
                for (const double sign : {1.0, -1.0}) {
                    const auto section = kind.mMake();
                    section->setStateVariable(coupled);
                    for (const auto& [gain, level] :
                         {std::pair(4.0, kind.mAt4), std::pair(12.0, kind.mAt12)}) {
                        Design(*section, rate, 2000, sign * gain, 1.5);
                        const float told = section->computeResponse(2000.0f, 1.0f);
                        EXPECT_NEAR(Decibels(told), sign * level, 0.02) << kind.mName << " " << rate;
                        Row impulse = MakeImpulse(6000);
                        section->processInplace(impulse.data(), 6000);
                        for (const double frequency : {400.0, 2000.0, 15000.0}) {
                            EXPECT_NEAR(
                                Decibels(MagnitudeOfImpulse(impulse, frequency / rate)),
                                Decibels(section->computeResponse(static_cast<float>(frequency), 1.0f)), 0.02)
                                << kind.mName << " " << rate << " " << coupled << " " << gain * sign;
                        }
                    }
                }
            }
        }
    }
}

TEST(FilterSectionTest, BandEdgesLieHalfWayUpTo6DecibelsAnd3DecibelsOffBeyond)
{
    struct Edge
    {
        double mGain;
        double mLevel;
    };
    for (const auto& [gain, level] : {Edge{5, 2.5}, Edge{6, 3}, Edge{6.01, 3.01}, Edge{20, 17},
                                      Edge{-5.9, -2.95}, Edge{-6, -3}, Edge{-20, -17}}) {
        dLOSHELVE shelf;
        Design(shelf, 48000, 1000, gain, 1);
        EXPECT_NEAR(Decibels(shelf.computeResponse(1000.0f, 1.0f)), level, 1e-3) << gain;
        dLOSHELVE2 steep; // its branch begins at exactly 6
        Design(steep, 48000, 1000, gain, 1);
        const double wanted = std::fabs(gain) < 6 ? gain / 2 : gain - std::copysign(3.0103, gain);
        EXPECT_NEAR(Decibels(steep.computeResponse(1000.0f, 1.0f)), wanted, 1e-3) << gain;
        EXPECT_NEAR(Decibels(steep.computeResponse(0.001f, 1.0f)), gain, 1e-2) << gain;
        EXPECT_NEAR(Decibels(steep.computeResponse(24000.0f, 1.0f)), 0, 1e-3) << gain;
    }
}

TEST(FilterSectionTest, RampsTakeTheirLengthAndLandExactly)
{
    Open<fPARA> section;
    EXPECT_EQ(section.mRampLength, 1323u);
    Design(section, 44100, 1000, 6, 1);
    section.SetupCoefficients(44100, 1000, 12, 1, 0, 0);
    EXPECT_EQ(section.mRampCount, 1323u);
    Row row(1322, 0.25f);
    {
        const testing::AllocationGuard guard;
        section.processInplace(row.data(), 1000);
        for (int i = 1000; i < 1322; ++i) {
            row[0] = section.processOneSample(row[0]);
        }
    }
    EXPECT_EQ(section.mRampCount, 1u);
    EXPECT_FALSE(section.IsOnTarget());
    section.SetupCoefficients(44100, 1000, 12, 1, 0, 0); // the same during the ramp starts it anew
    EXPECT_EQ(section.mRampCount, 1323u);
    Row more(1323, 0.25f);
    section.processInplace(more.data(), 1323);
    EXPECT_EQ(section.mRampCount, 0u);
    EXPECT_TRUE(section.IsOnTarget());
    section.SetupCoefficients(44100, 1000, 12, 1, 0, 0); // and on target it has nothing to change
    EXPECT_EQ(section.mRampCount, 0u);

    section.SetupCoefficients(96000, 1000, 3, 1, 0, 0);
    EXPECT_EQ(section.mRampCount, 1323u); // 30 ms no more
    section.setSmoothingTime(0.03f);
    section.SetupCoefficients(96000, 1000, 2, 1, 0, 0);
    EXPECT_EQ(section.mRampCount, 2880u);
    section.TerminateRamp();
    EXPECT_TRUE(section.IsOnTarget());
    section.SetupCoefficients(96000, std::numeric_limits<float>::quiet_NaN(), 2, 1, 0, 0);
    Row silence(10000);
    section.processInplace(silence.data(), 10000);
    section.SetupCoefficients(96000, std::numeric_limits<float>::quiet_NaN(), 2, 1, 0, 0);
    EXPECT_EQ(section.mRampCount, 2880u); // a NaN never counts as arrived
    section.ClearCoefficients();
    EXPECT_EQ(section.mRampCount, 0u);
    EXPECT_EQ(section.mCurrent.b0, 1.0f);
    EXPECT_EQ(section.mTarget.D, 1.0f);
}

/// The largest jump from one sample to the next but one that a sine does not have itself
double RoughnessOf(const Row& inRow, std::size_t inFrom)
{
    double worst = 0.0;
    for (std::size_t i = inFrom + 2; i < inRow.size(); ++i) {
        worst = std::max(worst, std::fabs(static_cast<double>(inRow[i]) - 2.0 * inRow[i - 1] + inRow[i - 2]));
    }
    return worst;
}

TEST(FilterSectionTest, ChangesGlideAndFadesInBeginAtTheInput)
{
    const Row sine = MakeSine(12000, 300, 48000, 0.5);
    const auto roughnessOf = [&](bool inGlide) {
        dPARA section;
        Design(section, 48000, 300, 12, 1);
        Row row = sine;
        section.processInplace(row.data(), 6000);
        section.SetupCoefficients(48000, 300, -12, 1, 0, 0);
        if (!inGlide) {
            section.TerminateRamp();
        }
        section.processInplace(row.data() + 6000, 6000);
        return RoughnessOf(row, 5000);
    };
    EXPECT_LT(roughnessOf(true), 1.05 * 2.0 * RoughnessOf(sine, 0) * 2.0); // 12 dB up, and no more
    EXPECT_GT(roughnessOf(false), 2.0 * roughnessOf(true));                // the jump itself clicks

    dPARA section;
    Design(section, 48000, 300, 12, 1);
    section.disable();
    Row row = sine;
    section.processInplace(row.data(), 1000);
    EXPECT_EQ(row, sine); // at once, and no operation
    EXPECT_EQ(section.processOneSample(0.3f), 0.3f);
    EXPECT_EQ(section.computeResponse(300.0f, 0.7f), 0.7f);
    section.enable();
    section.processInplace(row.data(), 12000);
    EXPECT_EQ(row[0], sine[0]); // from a straight wire
    EXPECT_LT(RoughnessOf(row, 0), 4.2 * RoughnessOf(sine, 0));
    EXPECT_NEAR(*std::max_element(row.begin() + 11000, row.end()), 0.5 * 3.98, 0.01);
}

TEST(FilterSectionTest, NoGainIsOffAfterSetupAndAWireAfterSetupCoefficients)
{
    Open<dPARA> section;
    Design(section, 48000, 1000, 6, 1);
    section.SetupCoefficients(48000, 1000, 0, 1, 0, 0);
    EXPECT_TRUE(section.isEnabled());
    EXPECT_EQ(section.mTarget.b0, 1.0);
    EXPECT_EQ(section.mTarget.a2, 0.0);
    section.Setup(48000, 1000, 0, 1, 0, 0);
    EXPECT_FALSE(section.isEnabled());
    section.setEnable(true); // the flag alone
    EXPECT_TRUE(section.isEnabled());
    // As a wire in the coupled form, where the formulas would give 0/0
    section.setStateVariable(true);
    section.TerminateRamp();
    EXPECT_EQ(section.mCurrent.D, 1.0);
    EXPECT_EQ(section.mCurrent.A11, 0.0);
    EXPECT_EQ(section.processOneSample(0.5f), 0.5f);
    EXPECT_EQ(section.processOneSample(0.25f), 0.25f);
}

TEST(FilterSectionTest, SingleSamplesRoundInTheRecursionAndRowsOnlyWhatTheyStore)
{
    dPARA single;
    dPARA row;
    Design(single, 48000, 100, 12, 4);
    Design(row, 48000, 100, 12, 4);
    const Row noise = testing::MakeNoise(2000, 9, 0.5);
    std::vector<double> wide(noise.begin(), noise.end());
    row.dprocessInplace(wide.data(), 2000);
    bool differs = false;
    for (std::size_t i = 0; i < noise.size(); ++i) {
        const double sample = single.dprocessOneSample(noise[i]);
        EXPECT_EQ(sample, static_cast<float>(sample));
        EXPECT_NEAR(sample, wide[i], 1e-4);
        differs = differs || static_cast<float>(wide[i]) != static_cast<float>(sample);
    }
    EXPECT_TRUE(differs);
    EXPECT_NE(wide[1000], static_cast<float>(wide[1000]));
    dPARA narrow;
    Design(narrow, 48000, 100, 12, 4);
    Row stored = noise;
    narrow.processInplace(stored.data(), 700);
    narrow.processInplace(stored.data() + 700, 1300);
    for (std::size_t i = 0; i < noise.size(); ++i) {
        ASSERT_EQ(stored[i], static_cast<float>(wide[i]));
    }
}

TEST(FilterSectionTest, FrequenciesAtTheEndsStayWithinTheDesigns)
{
    fPARA limited;
    Design(limited, 48000, 200000, 6, 0.001);
    EXPECT_TRUE(std::isfinite(limited.computeResponse(1000.0f, 1.0f)));
    Open<fHISHELVE2> free;
    Open<dHISHELVE2> held;
    Design(free, 48000, 24000, 6, 1);
    Design(held, 48000, 24000, 6, 1);
    EXPECT_NE(static_cast<float>(held.mTarget.b0), free.mTarget.b0); // one at the half itself, one just below
    Design(held, 48000, 30000, 6, 1);
    EXPECT_TRUE(std::isfinite(held.mTarget.b0));
}

TEST(FilterSectionTest, CopiedCoefficientsBringRampAndFlagAndAClearPast)
{
    Open<fPARA> from;
    Design(from, 48000, 1000, 6, 1);
    from.SetupCoefficients(48000, 2000, 9, 1, 0, 0);
    Open<fPARA> to;
    to.CopyCoefficients(from);
    EXPECT_TRUE(to.isEnabled());
    EXPECT_EQ(to.mRampCount, from.mRampCount);
    EXPECT_EQ(to.mTarget.b0, from.mTarget.b0);
    from.ClearState();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(to.processOneSample(0.5f), from.processOneSample(0.5f));
    }
}

TEST(DeskFilterTest, ChangesItsKindAndKeepsItsSettings)
{
    fDeskFilter filter;
    EXPECT_EQ(filter.getType(), fDeskFilter::kParametric);
    EXPECT_FALSE(filter.isDoublePrecision());
    filter.ShiftGears(fDeskFilter::kLowShelf, true, false);
    EXPECT_FALSE(filter.isFirstOrder());
    EXPECT_TRUE(filter.isDoublePrecision());
    EXPECT_FALSE(filter.isEnabled()); // no gain yet
    filter.setSmoothingTime(0.01f);
    filter.Setup(48000, 500, 9, 1, 0, 0);
    filter.TerminateRamp();
    EXPECT_NEAR(Decibels(filter.computeResponse(500.0f, 1.0f)), 9 - 3.01, 0.01);

    {
        const testing::AllocationGuard guard; // the same gears: nothing happens
        filter.ShiftGears(fDeskFilter::kLowShelf, true, false);
    }
    filter.ShiftGears(fDeskFilter::kHighShelf, true, false);
    EXPECT_TRUE(filter.isEnabled());
    EXPECT_EQ(filter.getSmoothingTime(), 0.01f);
    EXPECT_NEAR(Decibels(filter.computeResponse(20000.0f, 1.0f)), 9, 0.1);
    filter.setType(fDeskFilter::kLowShelf); // always of first order
    EXPECT_TRUE(filter.isFirstOrder());
    filter.setDoublePrecision(false);
    EXPECT_FALSE(filter.isDoublePrecision());
    EXPECT_NEAR(Decibels(filter.computeResponse(500.0f, 1.0f)), 6, 0.01);

    fDeskFilter copy(filter);
    filter.disable();
    EXPECT_TRUE(copy.isEnabled());
    EXPECT_NEAR(Decibels(copy.computeResponse(500.0f, 1.0f)), 6, 0.01);
    copy = filter;
    EXPECT_FALSE(copy.isEnabled());
}

TEST(DeskFilterTest, QComesFromTheStoredBandwidth)
{
    fDeskFilter filter;
    filter.ShiftGears(fDeskFilter::kNotch, true, false);
    filter.Setup(48000, 1000, -9, 4, 0, 0); // stores 250 Hz
    filter.ShiftGears(fDeskFilter::kParametric, true, false);
    dPARA wanted;
    Design(wanted, 48000, 1000, -9, 4);
    EXPECT_EQ(filter.computeResponse(900.0f, 1.0f), wanted.computeResponse(900.0f, 1.0f));
    // A parametric section has stored none: the next one is as narrow as can be.
    fDeskFilter none;
    none.Setup(48000, 1000, -9, 4, 0, 0);
    none.ShiftGears(fDeskFilter::kParametric, true, false);
    EXPECT_NEAR(none.computeResponse(900.0f, 1.0f), 1.0, 1e-3);
    EXPECT_NEAR(Decibels(none.computeResponse(1000.0f, 1.0f)), -9, 0.05);
}

} // namespace
} // namespace tessaro
