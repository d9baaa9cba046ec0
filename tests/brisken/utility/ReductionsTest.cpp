#include <functional>

#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

template <class T>
struct Extremes
{
    T min = -77;
    T max = -77;
    unsigned minIndex = 77;
    unsigned maxIndex = 77;
};

template <class T>
Extremes<T> PlainExtremes(const std::vector<T>& inRow)
{
    Extremes<T> found{inRow[0], inRow[0], 0, 0};
    for (unsigned i = 1; i < inRow.size(); ++i) {
        if (inRow[i] < found.min) {
            found.min = inRow[i];
            found.minIndex = i;
        }
        if (inRow[i] > found.max) {
            found.max = inRow[i];
            found.maxIndex = i;
        }
    }
    return found;
}

template <class T>
T PlainMaxAbs(const std::vector<T>& inRow)
{
    T found = 0;
    for (const T value : inRow) {
        found = std::abs(value) > found ? std::abs(value) : found;
    }
    return found;
}

template <class T>
void CheckExtremes(const std::vector<T>& inRow, unsigned inMisalignment)
{
    const auto count = static_cast<unsigned>(inRow.size());
    SCOPED_TRACE("length " + std::to_string(count) + ", misalignment " + std::to_string(inMisalignment));
    GuardedRow<T> row(inMisalignment, inRow);
    const auto expected = PlainExtremes(inRow);
    Extremes<T> found;
    MinMax(count, row.Get(), found.min, found.max);
    ASSERT_TRUE(IsSame(found.min, expected.min)) << found.min << " is not " << expected.min;
    ASSERT_TRUE(IsSame(found.max, expected.max)) << found.max << " is not " << expected.max;
    ASSERT_TRUE(IsSame(Min(count, row.Get()), expected.min));
    ASSERT_TRUE(IsSame(Max(count, row.Get()), expected.max));
    ASSERT_TRUE(IsSame(MaxAbs(row.Get(), count), PlainMaxAbs(inRow)));
    found = Extremes<T>();
    MinMaxIndex(count, row.Get(), found.min, found.max, found.minIndex, found.maxIndex);
    ASSERT_TRUE(IsSame(found.min, expected.min));
    ASSERT_TRUE(IsSame(found.max, expected.max));
    ASSERT_EQ(found.minIndex, expected.minIndex);
    ASSERT_EQ(found.maxIndex, expected.maxIndex);
    ASSERT_EQ(MaxIndex(count, row.Get(), static_cast<T*>(nullptr)), expected.maxIndex);
    found.max = -77;
    ASSERT_EQ(MaxIndex(count, row.Get(), &found.max), expected.maxIndex);
    ASSERT_TRUE(IsSame(found.max, expected.max));
}

template <class T>
void CheckAllExtremes()
{
    auto lengths = RowLengths();
    lengths.insert(lengths.end(), {2048, 5000}); // beyond one block of the search for places
    for (const unsigned count : lengths) {
        for (unsigned seed = 0; seed < (count == 0 ? 0u : 6u); ++seed) {
            CheckExtremes(RandomRow<T>(count, seed), seed % 3);
            CheckExtremes(RandomRowWithSpecials<T>(count, seed), seed % 3);
            // Few different values: the first of many that are equal counts.
            auto coarse = RandomRow<T>(count, seed);
            for (auto& value : coarse) {
                value = std::round(value);
            }
            CheckExtremes(coarse, seed % 3);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

/// A reduction to a sum, or to something that comes from one, and the same in long double.
template <class T>
struct Sums
{
    GuardedRow<T> a;
    GuardedRow<T> b;
    long double sum = 0, products = 0, squares = 0, absolute = 0, absoluteProducts = 0, distances = 0;

    Sums(unsigned inCount, unsigned inMisalignment)
        : a(inMisalignment, RandomRow<T>(inCount, 5)), b(inMisalignment / 2, RandomRow<T>(inCount, 6))
    {
        for (unsigned i = 0; i < inCount; ++i) {
            a[i] += T(0.5); // a mean for the standard deviation to take out
            sum += a[i];
            products += static_cast<long double>(a[i]) * b[i];
            squares += static_cast<long double>(a[i]) * a[i];
            absolute += std::abs(a[i]);
            absoluteProducts += std::abs(static_cast<long double>(a[i]) * b[i]);
        }
        for (unsigned i = 0; i < inCount; ++i) {
            distances += (a[i] - sum / inCount) * (a[i] - sum / inCount);
        }
    }
};

template <class T>
void CheckSums(unsigned inCount, unsigned inMisalignment)
{
    Sums<T> sums(inCount, inMisalignment);
    const auto check = [&](const char* inName, T inResult, long double inExpected, long double inTolerance) {
        EXPECT_LE(std::abs(inResult - inExpected), inTolerance * std::numeric_limits<T>::epsilon())
            << inName << ", length " << inCount << ", misalignment " << inMisalignment;
    };
    // Each partial sum rounds after every addition, by half an epsilon of what it holds; the errors are of
    // either sign and add up far slower than the terms do. One epsilon of the sum of magnitudes is some ten
    // deviations away.
    check("Sum", Sum(inCount, sums.a.Get()), sums.sum, sums.absolute);
    check("DotProduct", DotProduct(inCount, sums.a.Get(), sums.b.Get()), sums.products,
          sums.absoluteProducts);
    const long double norm = std::sqrt(sums.squares);
    if constexpr (std::is_same_v<T, float>) {
        // The squares of floats are exact in double, each addition rounds.
        EXPECT_NEAR(SumOfSquares(inCount, sums.a.Get()), static_cast<double>(sums.squares),
                    static_cast<double>(sums.squares) * inCount * 1.2e-16);
    }
    check("NormL2", NormL2(inCount, sums.a.Get()), norm, 2 * norm);
    T deviation = -1;
    StandardDeviation(inCount, sums.a.Get(), deviation);
    const long double expected = inCount < 2 ? 0 : std::sqrt(sums.distances / (inCount - 1));
    check("StandardDeviation", deviation, expected,
          4 * norm); // the mean, the difference, the square, the sum
}

class ReductionsTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(ReductionsTest);

TEST_P(ReductionsTest, ExtremesAndTheirFirstPlacesAreThoseOfThePlainLoop)
{
    CheckAllExtremes<float>();
    CheckAllExtremes<double>();
}

TEST_P(ReductionsTest, SumsMatchTheExactOnesWithinRounding)
{
    for (const unsigned count : RowLengths()) {
        for (const unsigned misalignment : {0u, 1u, 6u}) {
            CheckSums<float>(count, misalignment);
            CheckSums<double>(count, misalignment);
        }
    }
}

TEST_P(ReductionsTest, NaNStaysWhereItComesFirstAndIsPassedOverElsewhere)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> row(100, 1.0f);
    row[30] = nan;
    row[60] = 2.0f;
    CheckExtremes(row, 0);
    EXPECT_EQ(Max(100, row.data()), 2.0f);
    row[0] = nan;
    CheckExtremes(row, 0);
    EXPECT_TRUE(std::isnan(Max(100, row.data())));
    EXPECT_TRUE(std::isnan(Sum(100, row.data())));
    EXPECT_EQ(MaxAbs(row.data(), 100), 2.0f);
}

TEST_P(ReductionsTest, AnEmptyRowGivesZeroOrLeavesResultsAlone)
{
    const float* none = nullptr;
    Extremes<float> found;
    MinMax(0, none, found.min, found.max);
    MinMaxIndex(0, none, found.min, found.max, found.minIndex, found.maxIndex);
    EXPECT_EQ(MaxIndex(0, none, &found.max), 0u);
    EXPECT_EQ(found.min, -77);
    EXPECT_EQ(found.max, -77);
    EXPECT_EQ(found.minIndex, 77u);
    EXPECT_EQ(found.maxIndex, 77u);
    EXPECT_EQ(Min(0, none) + Max(0, none) + MaxAbs(none, 0) + Sum(0, none) + NormL2(0, none), 0.0f);
    EXPECT_TRUE(Equal(0, nullptr, nullptr));
}

TEST(EqualTest, SeesADifferenceInAnyByte)
{
    std::vector<unsigned char> a(67, 1);
    auto b = a;
    EXPECT_TRUE(Equal(67, a.data(), b.data()));
    for (unsigned i = 0; i < 67; ++i) {
        b[i] = 2;
        EXPECT_FALSE(Equal(67, a.data(), b.data()));
        EXPECT_TRUE(Equal(i, a.data(), b.data()));
        b[i] = 1;
    }
}

} // namespace
