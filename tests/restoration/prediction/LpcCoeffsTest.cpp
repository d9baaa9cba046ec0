#include <tessaro/restoration/prediction/LpcCoeffs.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::MakeNoise;
using testing::Row;

/// Noise through 1 / (1 - sum of p[k] z^-k), once it has settled
Row MakeProcess(const Row& inPredictors, std::size_t inLength)
{
    constexpr std::size_t kSettling = 500;
    Row row = MakeNoise(inLength + kSettling, 7, 0.1);
    for (std::size_t i = 0; i < row.size(); ++i) {
        for (std::size_t k = 1; k <= std::min(i, inPredictors.size()); ++k) {
            row[i] += inPredictors[k - 1] * row[i - k];
        }
    }
    return Row(row.begin() + kSettling, row.end());
}

Row Correlate(const Row& inRow, std::size_t inLags)
{
    Row result(inLags);
    for (std::size_t lag = 0; lag < std::min(inLags, inRow.size()); ++lag) {
        const auto shift = static_cast<std::ptrdiff_t>(lag);
        result[lag] = static_cast<float>(
            std::inner_product(inRow.begin(), inRow.end() - shift, inRow.begin() + shift, 0.0));
    }
    return result;
}

using Method = Row (*)(const Row&, unsigned);

Row Levinson(const Row& inRow, unsigned inOrder)
{
    Row result(inOrder + 1, 99.0f);
    LpcCoeffs().LevinsonRecursion(inOrder, Correlate(inRow, inOrder + 1).data(), result.data());
    return result;
}

template <auto TMethod>
Row Fit(const Row& inRow, unsigned inOrder)
{
    Row result(inOrder + 1, 99.0f);
    (LpcCoeffs().*TMethod)(inRow.data(), static_cast<unsigned>(inRow.size()), result.data(), inOrder);
    return result;
}

constexpr auto Burg = Fit<&LpcCoeffs::BurgRecursion>;
constexpr auto Covariance = Fit<&LpcCoeffs::Covariance>;

double ResidualPower(const Row& inCoefficients, const Row& inRow)
{
    const std::size_t order = inCoefficients.size() - 1;
    double power = 0.0;
    for (std::size_t i = order; i < inRow.size(); ++i) {
        double residual = inRow[i];
        for (std::size_t k = 1; k <= order; ++k) {
            residual -= double{inCoefficients[k]} * inRow[i - k];
        }
        power += residual * residual;
    }
    return power;
}

class LpcMethodTest : public ::testing::TestWithParam<Method>
{
};

INSTANTIATE_TEST_SUITE_P(Methods, LpcMethodTest, ::testing::Values(&Levinson, Burg, Covariance));

TEST_P(LpcMethodTest, FindsThePredictorsOfAnAutoregressiveProcess)
{
    const Row predictors{1.6f, -1.3f, 0.7f, -0.3f};
    const Row found = GetParam()(MakeProcess(predictors, 40000), 6);
    EXPECT_EQ(found[0], 1.0f);
    for (std::size_t k = 0; k < 6; ++k) {
        EXPECT_NEAR(found[k + 1], k < 4 ? predictors[k] : 0.0f, 0.02) << k;
    }
}

TEST_P(LpcMethodTest, SilenceAndFramesWithoutPastGiveTheIdentity)
{
    EXPECT_EQ(GetParam()(Row(50), 4), (Row{1, 0, 0, 0, 0}));
    EXPECT_EQ(GetParam()(MakeNoise(50, 1), 0), Row{1});
    EXPECT_EQ(GetParam()(Row{0.5f}, 3), (Row{1, 0, 0, 0}));
}

TEST(LpcCoeffsTest, WavesAreForetoldFromAShortFrame)
{
    const Row sine = testing::MakeSine(60, 1000, 48000, 0.7, 0.3);
    const double power = std::inner_product(sine.begin(), sine.end(), sine.begin(), 0.0);
    const Row two = Covariance(sine, 2);
    EXPECT_NEAR(two[1], 2.0 * std::cos(2.0 * M_PI * 1000.0 / 48000.0), 1e-4);
    EXPECT_NEAR(two[2], -1.0, 1e-4);
    // More coefficients than the sine determines
    const Row eight = Covariance(sine, 8);
    EXPECT_LT(ResidualPower(eight, sine), 1e-9 * power);
    EXPECT_EQ(std::count(eight.begin(), eight.end(), 0.0f), 6);
    EXPECT_LT(ResidualPower(Burg(sine, 8), sine), 1e-3 * power);
    // A wave that grows
    Row growing(40, 0.01f);
    for (std::size_t i = 1; i < growing.size(); ++i) {
        growing[i] = growing[i - 1] * 1.1f;
    }
    EXPECT_NEAR(Covariance(growing, 1)[1], 1.1, 1e-5);
    EXPECT_LT(Burg(growing, 1)[1], 1.0f);
}

TEST(LpcCoeffsTest, ReflectionsOfLevinsonStayBelowOne)
{
    Row one(2);
    for (const float sign : {1.0f, -1.0f}) {
        for (const Row& correlation : {Row{4.0f, sign * 4.0f}, Row{sign * 4.0f, 4.0f}}) {
            LpcCoeffs::RunLevinsonRecursion(1, correlation.data(), one.data());
            EXPECT_NEAR(one[1], sign / 1.0001, 1e-6);
        }
    }
    Row two(3);
    LpcCoeffs::RunLevinsonRecursion(2, Row{1.0f, 0.5f, 0.4f}.data(), two.data());
    EXPECT_NEAR(two[1], 0.5 * (1.0 - 0.4) / (1.0 - 0.25), 1e-4);
    EXPECT_NEAR(two[2], (0.4 - 0.25) / (1.0 - 0.25), 1e-4);
}

TEST(LpcCoeffsTest, KeepsItsMemory)
{
    const Row row = MakeProcess({0.9f, -0.5f}, 300);
    const Row correlation = Correlate(row, 11);
    Row result(11);
    LpcCoeffs lpc;
    lpc.ReserveMemory(10);
    {
        const testing::AllocationGuard guard;
        lpc.LevinsonRecursion(10, correlation.data(), result.data());
    }
    EXPECT_EQ(result, Levinson(row, 10));
    lpc.BurgRecursion(row.data(), 300, result.data(), 10);
    {
        const testing::AllocationGuard guard;
        lpc.BurgRecursion(row.data(), 300, result.data(), 10);
    }
    Row again(11);
    LpcCoeffs::RunBurgRecursion(row.data(), 300, again.data(), 10);
    EXPECT_EQ(result, again);
}

} // namespace
} // namespace tessaro
