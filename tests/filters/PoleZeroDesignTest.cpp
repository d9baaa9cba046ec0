#include <tessaro/filters/PoleZeroDesign.h>

#include <limits>

#include <gtest/gtest.h>
#include <tessaro/filters/AnalogDesign.h>
#include <tessaro/filters/BiquadDesign.h>
#include <tessaro/filters/FilterResponse.h>

#include "filters/Responses.h"

namespace tessaro {
namespace {

using testing::Decibels;
using Complex = std::complex<double>;
using Roots = std::vector<Complex>;
using Biquad = std::array<double, 6>;

constexpr double kPi = std::numbers::pi;

TEST(AnalogDesignTest, PrototypesHaveTheirGainsWhereTheyBelong)
{
    Biquad c;
    AnalogLowpassCoefficients(c.data(), 1000.0, 3.0);
    EXPECT_NEAR(EvaluateAnalogMagnitudeResponse(c.data(), 0.0), 1.0, 1e-12);
    EXPECT_NEAR(EvaluateAnalogMagnitudeResponse(c.data(), 1000.0), 3.0, 1e-9);
    EXPECT_NEAR(EvaluateAnalogMagnitudeResponse(c.data(), 1e6), 1e-6, 1e-9);
    AnalogHighpassCoefficients(c.data(), 1000.0, 3.0);
    EXPECT_EQ(EvaluateAnalogMagnitudeResponse(c.data(), 0.0), 0.0);
    EXPECT_NEAR(EvaluateAnalogMagnitudeResponse(c.data(), 1000.0), 3.0, 1e-9);
    EXPECT_NEAR(EvaluateAnalogMagnitudeResponse(c.data(), 1e7), 1.0, 1e-6);
    AnalogPeakingEQCoefficients(c.data(), 1000.0, -8.0, 3.0);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1000.0)), -8.0, 1e-9);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1.0)), 0.0, 1e-5);
    // Shelves double their gain, which has the accuracy of single precision.
    AnalogLowShelfCoefficients(c.data(), 1000.0, 4.5, 0.8);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 0.0)), 9.0, 1e-5);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1000.0)), 4.5, 1e-5);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1e8)), 0.0, 1e-5);
    EXPECT_EQ(c[2], static_cast<double>(std::pow(10.0f, 4.5f / 20.0f)));
    AnalogHighShelfCoefficients(c.data(), 1000.0, 4.5, 0.8);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 0.0)), 0.0, 1e-5);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1000.0)), 4.5, 1e-5);
    EXPECT_NEAR(Decibels(EvaluateAnalogMagnitudeResponse(c.data(), 1e8)), 9.0, 1e-5);
}

TEST(AnalogDesignTest, BilinearTransformMeetsTheAnalogResponseAtThePrewarpFrequency)
{
    for (const double rate : testing::kSampleRates) {
        Biquad analog, digital;
        AnalogLowShelfCoefficients(analog.data(), 3000.0, -7.0, 0.9);
        for (const double f : {500.0, 3000.0, 0.4 * rate}) {
            BilinearTransform(digital.data(), analog.data(), 2, rate, f);
            EXPECT_EQ(digital[3], 1.0);
            EXPECT_NEAR(GetMagnitudeResponse(2.0 * kPi * f / rate, digital.data(), 2, 1),
                        EvaluateAnalogMagnitudeResponse(analog.data(), f), 1e-9);
        }
        // Without prewarp the frequency axis is that of the tangent; in place.
        const double image = std::tan(kPi * 3000.0 / rate) * rate / kPi;
        const double expected = EvaluateAnalogMagnitudeResponse(analog.data(), image);
        BilinearTransform(analog.data(), analog.data(), 2, rate, 0.0);
        EXPECT_NEAR(GetMagnitudeResponse(2.0 * kPi * 3000.0 / rate, analog.data(), 2, 1), expected, 1e-9);
    }
    // First order: 1 / (1 + s / w0) at its cutoff.
    const std::array<double, 4> pole{1.0, 0.0, 1.0, 1.0 / (2.0 * kPi * 5000.0)};
    std::array<double, 8> digital;
    digital.fill(7.0);
    BilinearTransform(digital.data(), pole.data(), 1, 48000.0, 5000.0);
    EXPECT_NEAR(Decibels(GetMagnitudeResponse(2.0 * kPi * 5.0 / 48.0, digital.data(), 1, 1)), -3.0103, 1e-4);
    const auto before = digital;
    BilinearTransform(digital.data(), pole.data(), 3, 48000.0, 5000.0);
    BilinearTransform(digital.data(), pole.data(), 0, 48000.0, 5000.0);
    EXPECT_EQ(digital, before);
}

TEST(PoleZeroDesignTest, FactorsAndExpandsBackToTheSameFilter)
{
    for (const double q : {0.3, 4.0}) { // real and conjugate poles
        Biquad array;
        PeakingEQCoefficients(array.data(), 48000.0, 3000.0, 9.0, q);
        Roots poles(5), zeros;
        ComputePolesAndZeros(array.data(), poles, zeros);
        ASSERT_EQ(poles.size(), 2u);
        ASSERT_EQ(zeros.size(), 2u);
        if (poles[0].imag() == 0.0) {
            EXPECT_GT(poles[0].real(), poles[1].real());
        } else {
            EXPECT_GT(poles[0].imag(), 0.0);
            EXPECT_EQ(poles[1], std::conj(poles[0]));
        }
        std::array<Complex, 6> complex;
        GeneralCoefficients(complex.data(), poles, zeros);
        for (std::size_t k = 0; k < 3; ++k) { // ascending powers of z: the reverse
            EXPECT_NEAR(complex[k].real(), array[2 - k] / array[0], 1e-12);
            EXPECT_NEAR(complex[3 + k].real(), array[5 - k], 1e-12);
            EXPECT_NEAR(complex[k].imag(), 0.0, 1e-12);
        }
        const double w = 0.3;
        const auto point = std::polar(1.0, w);
        EXPECT_NEAR(GetAmplitudeResponseAtPoint(point, poles, zeros) * array[0],
                    GetMagnitudeResponse(w, array.data(), 2, 1), 1e-9);
    }
    // Lists of different length: the shorter half is its own product in the low powers.
    std::array<Complex, 8> values;
    values.fill(7.0);
    GeneralCoefficients(values.data(), {Complex(0.5), Complex(0.25), Complex(-0.5)}, {Complex(2.0)});
    const std::array<Complex, 8> expected{-2.0, 1.0, 0.0, 0.0, 0.0625, -0.25, -0.25, 1.0};
    EXPECT_EQ(values, expected);
}

/// The scale is on numerator and denominator, as the last denominator value (of z^2) shows.
TEST(PoleZeroDesignTest, ComplexDesignsScaleNumeratorAndDenominatorAlike)
{
    const Roots poles{{0.5, 0.5}, {0.5, -0.5}};
    const Roots zeros{{-0.9, 0.1}, {-0.9, -0.1}};
    const double dc = GetAmplitudeResponseAtPoint(1.0, poles, zeros);
    const double nyquist = GetAmplitudeResponseAtPoint(-1.0, poles, zeros);
    EXPECT_NEAR(dc, (1.9 * 1.9 + 0.01) / 0.5, 1e-12);
    std::array<Complex, 6> array;
    const auto scale = [&array](auto inDesign, const Roots& inPoles, const Roots& inZeros, bool inNormalise) {
        inDesign(array.data(), inPoles, inZeros, inNormalise);
        return array[5];
    };
    using Design = void (*)(Complex*, const Roots&, const Roots&, bool);
    const auto expectNear = [](Complex inValue, double inExpected) {
        EXPECT_NEAR(std::abs(inValue - inExpected), 0.0, 1e-12 * std::fabs(inExpected));
    };
    expectNear(scale(Design(LowpassCoefficients), poles, zeros, true), 1.0 / dc);
    expectNear(scale(Design(HighpassCoefficients), poles, zeros, true), 1.0 / nyquist);
    expectNear(scale(Design(LowShelfCoefficients), poles, zeros, true), 1.0 / nyquist);
    expectNear(scale(Design(HighShelfCoefficients), poles, zeros, true), 1.0 / dc);
    expectNear(scale(PeakingCoefficients, poles, zeros, true), 1.0 / std::sqrt(dc * nyquist));
    EXPECT_NEAR(std::abs(array[2] / array[5] - 1.0), 0.0, 1e-12) << "b0 / a0 as without a scale";
    // The sum of these poles is 1, their product 0.5.
    expectNear(scale(Design(LowpassCoefficients), poles, zeros, false), (1.5 - 0.5) / 4.0 / 0.5);
    expectNear(scale(Design(HighpassCoefficients), poles, zeros, false), (1.5 + 0.5) / 4.0 / 0.5);
    expectNear(scale(Design(LowShelfCoefficients), poles, zeros, false), 1.0);
    expectNear(scale(Design(HighShelfCoefficients), poles, zeros, false), 1.0);
    expectNear(scale(PeakingCoefficients, poles, zeros, false), 1.0 / -1.8);
    expectNear(scale(Design(LowpassCoefficients), {0.0, 0.5}, zeros, false), 1e12);
    expectNear(scale(Design(HighpassCoefficients), {0.5, -0.5}, zeros, false), 1e12);
    expectNear(scale(PeakingCoefficients, poles, {0.5, -0.5}, false), 1e12);
}

TEST(PoleZeroDesignTest, PhaseAtAPointIsRightInTheRightHalfPlaneOnly)
{
    const Roots zeros{{0.2, 0.3}};
    const auto inside = std::polar(1.0, 0.4);
    EXPECT_NEAR(GetPhaseResponseAtPoint(inside, {}, zeros), std::arg(inside - zeros[0]), 1e-12);
    EXPECT_NEAR(GetPhaseResponseAtPoint(inside, zeros, {}), -std::arg(inside - zeros[0]), 1e-12);
    const auto left = std::polar(1.0, 2.5);
    EXPECT_NEAR(GetPhaseResponseAtPoint(left, {}, zeros), std::arg(left - zeros[0]) - kPi, 1e-12);
}

TEST(FilterResponseTest, CascadesMultiplyMagnitudesAndAddPhasesAndDelays)
{
    // A delay of 2 samples, then an all-pass of first order in both its places.
    const std::array<double, 12> sections{0.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.5, 1.0, 0.0, 1.0, 0.5, 0.0};
    for (const double w : {0.2, 1.0, 2.5}) {
        const double allpass = (1.0 - 0.25) / (1.0 + 0.25 + std::cos(w));
        EXPECT_NEAR(GetMagnitudeResponse(w, sections.data(), 2, 2), 1.0, 1e-12);
        EXPECT_NEAR(GetPhaseResponse(w, sections.data(), 2, 1), std::remainder(-2.0 * w, 2.0 * kPi), 1e-12);
        EXPECT_NEAR(GetGroupDelay(w, sections.data(), 2, 2), 2.0 + allpass, 1e-3);
        EXPECT_NEAR(GetGroupDelay(w, sections.data(), 2, 1) + GetGroupDelay(w, sections.data() + 6, 2, 1),
                    GetGroupDelay(w, sections.data(), 2, 2), 1e-9);
    }
    EXPECT_EQ(GetMagnitudeResponse(1.0, sections.data(), 2, 0), 1.0);
    EXPECT_EQ(GetPhaseResponse(1.0, sections.data(), 2, 0), 0.0);
    EXPECT_EQ(GetGroupDelay(1.0, sections.data(), 2, 0), 0.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::array<double, 6> bad{nan, 0.0, 0.0, 1.0, 0.0, 0.0};
    EXPECT_TRUE(std::isnan(GetGroupDelay(1.0, bad.data(), 2, 1)));
    // The floor is as large as this response here, so that of its delay of 1 sample only 0.4 remain.
    const std::array<double, 6> quiet{0.0, 1e-6, 0.0, 1.0, 0.0, 0.0};
    EXPECT_NEAR(GetGroupDelay(0.0, quiet.data(), 2, 1), 0.4, 1e-3);
}

TEST(FilterResponseTest, AllpassCascadeFollowsItsDelayCurve)
{
    constexpr int kPoints = 257;
    constexpr int kSections = 40;
    std::vector<double> curve(kPoints), sections(6 * kSections);
    double sum = 0.0;
    for (std::size_t k = 0; k < kPoints; ++k) {
        curve[k] = 25.0 + 30.0 * static_cast<double>(k) / (kPoints - 1);
        sum += curve[k];
    }
    DesignAllpassIIR(curve.data(), kPoints, kSections, sections.data());
    const double bias = (kSections - sum / (2 * kPoints - 2)) * (2 * kPoints - 2) / kPoints;
    for (int k = 32; k < 225; k += 16) {
        const double w = kPi * k / (kPoints - 1);
        EXPECT_NEAR(GetMagnitudeResponse(w, sections.data(), 2, kSections), 1.0, 1e-9);
        const double target = curve[static_cast<std::size_t>(k)] + bias;
        EXPECT_NEAR(GetGroupDelay(w, sections.data(), 2, kSections) / target, 1.0, 0.2) << k;
    }
}

} // namespace
} // namespace tessaro
