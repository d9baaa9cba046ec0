#include <complex>

#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;
using Complex = std::complex<float>;

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();

std::vector<Complex> RandomComplexRow(unsigned inCount, unsigned inSeed)
{
    const auto parts = RandomRow<float>(2 * inCount, inSeed);
    std::vector<Complex> row(inCount);
    for (unsigned i = 0; i < inCount; ++i) {
        row[i] = {parts[2 * i], parts[2 * i + 1]};
    }
    return row;
}

class ComplexTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(ComplexTest);

TEST_P(ComplexTest, ProductsMatchTheTextbookFormAlsoInPlace)
{
    for (const unsigned count : RowLengths()) {
        GuardedRow<Complex> a(1, RandomComplexRow(count, 1));
        GuardedRow<Complex> b(0, RandomComplexRow(count, 2));
        GuardedRow<Complex> product(count, 1);
        Mul(count, a.Get(), b.Get(), product.Get());
        for (unsigned i = 0; i < count; ++i) {
            const auto expected = std::complex<double>(a[i]) * std::complex<double>(b[i]);
            const double tolerance = 2 * kEpsilon * std::abs(expected);
            ASSERT_NEAR(product[i].real(), expected.real(), tolerance) << i << " of " << count;
            ASSERT_NEAR(product[i].imag(), expected.imag(), tolerance) << i << " of " << count;
        }
        const auto squaresOfA = [&] {
            GuardedRow<Complex> squares(count, 3);
            Mul(count, a.Get(), a.Get(), squares.Get());
            return squares.Contents();
        }();
        Mul_InPlace(count, a.Get(), b.Get());
        EXPECT_EQ(b.Contents(), product.Contents());
        Mul_InPlace(count, a.Get(), a.Get());
        EXPECT_EQ(a.Contents(), squaresOfA);
    }
}

TEST_P(ComplexTest, MagnitudeAndPowerMatchAndMayGoWhereTheSourceIs)
{
    for (const unsigned count : RowLengths()) {
        GuardedRow<Complex> a(1, RandomComplexRow(count, 3));
        GuardedRow<float> magnitude(count, 1);
        GuardedRow<float> power(count, 3);
        Magnitude(count, a.Get(), magnitude.Get());
        PowerSpectr(count, a.Get(), power.Get());
        for (unsigned i = 0; i < count; ++i) {
            const double expected = std::abs(std::complex<double>(a[i]));
            ASSERT_NEAR(magnitude[i], expected, 2 * kEpsilon * expected) << i << " of " << count;
            ASSERT_NEAR(power[i], expected * expected, 2 * kEpsilon * expected * expected)
                << i << " of " << count;
        }
        auto* const parts = reinterpret_cast<float*>(a.Get());
        Magnitude(count, a.Get(), parts);
        EXPECT_EQ(std::vector<float>(parts, parts + count), magnitude.Contents());
    }
}

/// Points all around the circle, on the axes and diagonals, near and far from the origin.
std::vector<Complex> PointsAround(unsigned inCount)
{
    auto points = RandomComplexRow(inCount, 4);
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float specials[] = {0.0f, -0.0f, 1.0f, -1.0f, inf, -inf, 1e-30f, -1e-30f, 1e15f, nan};
    for (unsigned i = 0; i < inCount; ++i) {
        points[i] *= std::pow(10.0f, float(i % 7) - 3.0f);
        if (i % 3 == 1) {
            points[i] = {specials[i / 3 % 10], specials[i / 30 % 10]};
        }
    }
    return points;
}

TEST_P(ComplexTest, CartToPolarGivesTheAnglesOfAtan2AndMayWorkInPlace)
{
    for (const unsigned count : RowLengths()) {
        const auto points = PointsAround(count);
        GuardedRow<float> real(count, 1), imaginary(count, 0), magnitude(count, 0), phase(count, 5);
        for (unsigned i = 0; i < count; ++i) {
            real[i] = points[i].real();
            imaginary[i] = points[i].imag();
        }
        CartToPolar(count, real.Get(), imaginary.Get(), magnitude.Get(), phase.Get());
        for (unsigned i = 0; i < count; ++i) {
            const double expected = std::atan2(double(imaginary[i]), double(real[i]));
            if (std::isnan(expected)) {
                ASSERT_TRUE(std::isnan(phase[i]));
            } else {
                const double denormal = std::numeric_limits<float>::denorm_min();
                ASSERT_NEAR(phase[i], expected, 4 * kEpsilon * std::abs(expected) + denormal) << points[i];
                ASSERT_EQ(std::signbit(phase[i]), std::signbit(expected)) << points[i];
            }
        }
        CartToPolar(count, real.Get(), imaginary.Get(), real.Get(), imaginary.Get());
        for (unsigned i = 0; i < count; ++i) {
            ASSERT_TRUE(IsSame(real[i], magnitude[i]) && IsSame(imaginary[i], phase[i]));
        }
    }
}

TEST_P(ComplexTest, PolarToCartHoldsItsErrorForAnyPhase)
{
    for (const double reach : {0.1, 3.2, 100.0, 8192.0, 1e9}) {
        for (const unsigned count : RowLengths()) {
            const auto magnitudes = RandomRow<float>(count, 5);
            auto phases = RandomRow<float>(count, 6);
            for (auto& phase : phases) {
                phase *= float(reach / 2);
            }
            GuardedRow<Complex> result(count, 1);
            PolarToCart(count, magnitudes.data(), phases.data(), result.Get());
            // In place: the parts go where the magnitudes are.
            GuardedRow<float> block(2 * count, 1);
            std::copy(magnitudes.begin(), magnitudes.end(), block.Get());
            PolarToCart(count, block.Get(), phases.data(), block.Get());
            for (unsigned i = 0; i < count; ++i) {
                const double tolerance = 1.5 * kEpsilon * std::abs(magnitudes[i]);
                ASSERT_NEAR(result[i].real(), magnitudes[i] * std::cos(double(phases[i])), tolerance)
                    << phases[i];
                ASSERT_NEAR(result[i].imag(), magnitudes[i] * std::sin(double(phases[i])), tolerance)
                    << phases[i];
                ASSERT_EQ(Complex(block[2 * i], block[2 * i + 1]), result[i]);
            }
        }
    }
}

TEST_P(ComplexTest, APhaseThatIsNotFiniteSpoilsItsOwnElementOnly)
{
    const std::vector<float> magnitudes(37, 2.0f);
    std::vector<float> phases(37, 0.0f);
    phases[5] = std::numeric_limits<float>::infinity();
    phases[36] = std::numeric_limits<float>::quiet_NaN();
    std::vector<Complex> result(37);
    PolarToCart(37, magnitudes.data(), phases.data(), result.data());
    for (unsigned i = 0; i < 37; ++i) {
        EXPECT_EQ(std::isnan(result[i].real()), i == 5 || i == 36);
        EXPECT_TRUE(i == 5 || i == 36 || result[i] == Complex(2.0f, 0.0f));
    }
}

} // namespace
