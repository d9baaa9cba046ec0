#include <tessaro/filters/EqualizerSections.h>

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>
#include <tessaro/filters/DeskFilter.h>

#include "filters/Responses.h"
#include "support/AllocationGuard.h"

namespace tessaro {
namespace {

using testing::Decibels;

template <typename Section>
struct Probe : Section
{
    using Section::mBandwidth;
    using Section::mTarget;

    void Start(double inSampleRate, double inFrequency, double inGain, double inQ)
    {
        this->Setup(static_cast<float>(inSampleRate), static_cast<float>(inFrequency),
                    static_cast<float>(inGain), static_cast<float>(inQ), 0.0f, 0.0f);
        this->TerminateRamp();
    }

    double At(double inFrequency) const
    {
        return Decibels(static_cast<double>(this->computeResponse(static_cast<float>(inFrequency), 1.0f)));
    }

    /// Where the response crosses `inGain` between the center and another frequency.
    double Cross(double inGain, double inCenter, double inOther) const
    {
        const bool above = At(inCenter) > inGain;
        for (int i = 0; i < 40; ++i) {
            const double middle = 0.5 * (inCenter + inOther);
            ((At(middle) > inGain) == above ? inCenter : inOther) = middle;
        }
        return inCenter;
    }
};

template <typename Section>
class PeakTest : public ::testing::Test
{
protected:
    static constexpr bool kParametric = std::is_same_v<Section, fPARA> || std::is_same_v<Section, dPARA>;
    Probe<Section> mSection;
};
using Peaks = ::testing::Types<fPARA, dPARA, fNotch, dNotch>;
TYPED_TEST_SUITE(PeakTest, Peaks);

TYPED_TEST(PeakTest, IsAsWideAsAskedForAtTheEdgeOfItsBand)
{
    for (const double rate : testing::kSampleRates) {
        for (const auto& [gain, edge] : {std::pair(-20.0, -17.0), std::pair(-6.0, -3.0),
                                         std::pair(-2.0, -1.0), std::pair(6.0, 3.0), std::pair(14.0, 11.0)}) {
            const double f = 0.11 * rate;
            this->mSection.Start(rate, f, gain, 1.5);
            EXPECT_NEAR(this->mSection.At(0.0), 0.0, 1e-3);
            EXPECT_NEAR(this->mSection.At(0.5 * rate), 0.0, 1e-3);
            const double width =
                this->mSection.Cross(edge, f, 0.5 * rate) - this->mSection.Cross(edge, f, 0.0);
            EXPECT_NEAR(width, f / 1.5, 1e-3 * f) << gain;
        }
    }
}

TYPED_TEST(PeakTest, OnlyParametricSectionsLimitTheirParametersAndStoreNoBandwidth)
{
    auto& section = this->mSection;
    section.Start(48000.0, 1000.0, 6.5, 1000.0 / 38400.0); // a band beyond half the sample rate
    EXPECT_EQ(static_cast<double>(section.mTarget.a2) > -1.0 && static_cast<double>(section.mTarget.a2) < 1.0,
              this->kParametric);
    EXPECT_FLOAT_EQ(section.mBandwidth, this->kParametric ? 0.0f : 38400.0f);
    section.Start(48000.0, 0.0, 6.5, 1.0); // poles on the unit circle, or just inside it
    EXPECT_EQ(section.mTarget.a2 < 1, this->kParametric);
    section.Start(48000.0, 1000.0, NAN, 1.0);
    EXPECT_TRUE(std::isnan(section.mTarget.b0));
    EXPECT_TRUE(section.isEnabled());
}

/// Centers where numbers vanish, and bands with real poles, in the coupled form.
TYPED_TEST(PeakTest, CoupledFormHasTheResponseOfTheDirectFormEverywhere)
{
    for (const auto& [f, gain, q] :
         {std::tuple(12000.0, 7.0, 3.0), std::tuple(1000.0, 4.0, 0.2), std::tuple(1000.0, -9.0, 0.2),
          std::tuple(30.0, -9.0, 5.0), std::tuple(21000.0, 9.0, 5.0)}) {
        this->mSection.Start(48000.0, f, gain, q);
        this->mSection.setStateVariable(true);
        this->mSection.TerminateRamp();
        std::vector<double> row(12000);
        row[0] = 1.0;
        {
            const testing::AllocationGuard guard;
            this->mSection.dprocessInplace(row.data(), 12000);
        }
        for (const double at : {700.0, 5000.0, 23000.0}) {
            EXPECT_NEAR(Decibels(testing::MagnitudeOfImpulse(row, at / 48000.0)), this->mSection.At(at), 0.05)
                << f << " " << gain << " " << q << " at " << at;
        }
        this->mSection.setStateVariable(false);
    }
}

template <typename Section>
class ShelfTest : public ::testing::Test
{
protected:
    Probe<Section> mSection;
};
using Shelves = ::testing::Types<fHISHELVE, dHISHELVE, fHISHELVE2, dHISHELVE2, fLOSHELVE, dLOSHELVE,
                                 fLOSHELVE2, dLOSHELVE2>;
TYPED_TEST_SUITE(ShelfTest, Shelves);

TYPED_TEST(ShelfTest, HasItsGainOnItsSideOnlyAndAtZeroDecibelsIsAWireInBothForms)
{
    constexpr bool kHigh = std::is_same_v<TypeParam, fHISHELVE> || std::is_same_v<TypeParam, dHISHELVE> ||
                           std::is_same_v<TypeParam, fHISHELVE2> || std::is_same_v<TypeParam, dHISHELVE2>;
    auto& section = this->mSection;
    for (const double rate : testing::kSampleRates) {
        for (const double gain : {-24.0, -6.0, 5.0, 14.0}) {
            section.Start(rate, 1900.0, gain, 1.0);
            EXPECT_NEAR(section.At(kHigh ? 0.0 : 0.5 * rate), 0.0, 2e-3);
            EXPECT_NEAR(section.At(kHigh ? 0.5 * rate : 0.0), gain, 2e-3);
        }
    }
    section.Start(48000.0, 3000.0, 0.0, 1.0);
    section.setEnable(true);
    EXPECT_NEAR(section.At(3000.0), 0.0, 1e-5);
    section.setStateVariable(true);
    EXPECT_EQ(section.mTarget.D, 1);
    EXPECT_EQ(section.mTarget.C1, 0);
    EXPECT_EQ(section.processOneSample(0.25f), 0.25f);
}

TEST(EqualizerSectionsTest, VanishingDenominatorFallsBackToTheDerivatives)
{
    Probe<dPARA> section;
    section.Start(48000.0, 1000.0, 5.0, 1.0);
    // (1 - z^-2 / 2) / (1 - z^-2) next to 0 Hz: the slopes give the ratio.
    section.mTarget = {};
    section.mTarget.a2 = -1.0;
    section.mTarget.b2 = -0.5;
    EXPECT_FLOAT_EQ(section.computeResponse(1e-8f, 1.0f), std::sqrt(0.5f));
}

TEST(EqualizerSectionsTest, CoefficientsAreNotCopiedFromTheOtherPrecision)
{
    Probe<dPARA> wide;
    Probe<fPARA> narrow;
    wide.Start(48000.0, 1000.0, 5.0, 1.0);
    narrow.CopyCoefficients(wide);
    EXPECT_FALSE(narrow.isEnabled());
    EXPECT_EQ(narrow.mTarget.b1, 0.0f);
}

TEST(EqualizerSectionsTest, RampOfANewDeskSectionHasItsTimeAtItsFirstRate)
{
    fDeskFilter desk;
    desk.Setup(96000.0f, 2000.0f, 12.0f, 1.0f, 0.0f, 0.0f);
    desk.setSmoothingTime(0.02f); // 1920 samples, but 882 in a new section
    desk.ShiftGears(fDeskFilter::kHighShelf, true, true);
    const auto impulseAfter = [&desk](int inSamples) {
        auto copy = desk;
        std::vector<double> row(static_cast<std::size_t>(inSamples) + 1);
        row.back() = 1.0;
        copy.dprocessInplace(row.data(), inSamples);
        copy.dprocessInplace(&row.back(), 1);
        return row.back();
    };
    EXPECT_GT(std::fabs(impulseAfter(880) - impulseAfter(3000)), 1e-4);
    EXPECT_NEAR(impulseAfter(882), impulseAfter(3000), 1e-6);
    desk.ShiftGears(static_cast<fDeskFilter::eFilterKindType>(7), true, true); // holds nothing any more
    const fDeskFilter copy = desk;
    EXPECT_EQ(copy.getType(), 7);
}

} // namespace
} // namespace tessaro
