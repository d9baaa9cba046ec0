#include <functional>

#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

constexpr double kConstant = 0.7;

/// An element-wise operation and its plain form. `io` is the destination, filled beforehand, so that one
/// shape fits operations of one, two and three sources.
template <class T>
struct Operation
{
    const char* name;
    std::function<void(unsigned n, const T* a, const T* b, T* io, T c)> run;
    std::function<T(T a, T b, T io, T c)> plain;
    /// Largest difference from the plain form in units of epsilon x (|a| max(|b|, |c|) + |io|); 0: the same
    /// rounding.
    double tolerance = 0;
};

template <class T>
std::vector<Operation<T>> Operations()
{
    // A multiply-add that rounds once is off from the one that rounds twice by at most half a unit of the
    // product.
    constexpr double kFusedTolerance = 1;
    return {
        {"Add", [](auto n, auto a, auto b, auto io, auto) { Add(n, a, b, io); },
         [](T a, T b, T, T) { return a + b; }},
        {"Add_InPlace", [](auto n, auto a, auto, auto io, auto) { Add_InPlace(n, a, io); },
         [](T a, T, T io, T) { return io + a; }},
        {"Sub", [](auto n, auto a, auto b, auto io, auto) { Sub(n, a, b, io); },
         [](T a, T b, T, T) { return b - a; }},
        {"Sub_InPlace", [](auto n, auto a, auto, auto io, auto) { Sub_InPlace(n, a, io); },
         [](T a, T, T io, T) { return io - a; }},
        {"AddConstant", [](auto n, auto a, auto, auto io, auto c) { AddConstant(n, a, c, io); },
         [](T a, T, T, T c) { return a + c; }},
        {"AddConstant_InPlace", [](auto n, auto, auto, auto io, auto c) { AddConstant_InPlace(n, io, c); },
         [](T, T, T io, T c) { return io + c; }},
        {"SubConstant", [](auto n, auto a, auto, auto io, auto c) { SubConstant(n, a, c, io); },
         [](T a, T, T, T c) { return a - c; }},
        {"Mul", [](auto n, auto a, auto b, auto io, auto) { Mul(n, a, b, io); },
         [](T a, T b, T, T) { return a * b; }},
        {"Mul_InPlace", [](auto n, auto a, auto, auto io, auto) { Mul_InPlace(n, a, io); },
         [](T a, T, T io, T) { return io * a; }},
        {"MulConstant", [](auto n, auto a, auto, auto io, auto c) { MulConstant(n, a, io, c); },
         [](T a, T, T, T c) { return a * c; }},
        {"MulConstant_InPlace", [](auto n, auto, auto, auto io, auto c) { MulConstant_InPlace(n, io, c); },
         [](T, T, T io, T c) { return io * c; }},
        {"Div_InPlace", [](auto n, auto a, auto, auto io, auto) { Div_InPlace(n, a, io); },
         [](T a, T, T io, T) { return io / a; }},
        {"DivConstant_InPlace", [](auto n, auto, auto, auto io, auto c) { DivConstant_InPlace(n, io, c); },
         [](T, T, T io, T c) { return io / c; }},
        {"AddProduct", [](auto n, auto a, auto b, auto io, auto) { AddProduct(n, a, b, io); },
         [](T a, T b, T io, T) { return io + a * b; }, kFusedTolerance},
        {"AddConstantProduct", [](auto n, auto a, auto, auto io, auto c) { AddConstantProduct(n, a, io, c); },
         [](T a, T, T io, T c) { return io + a * c; }, kFusedTolerance},
        {"Sqr", [](auto n, auto a, auto, auto io, auto) { Sqr(n, a, io); },
         [](T a, T, T, T) { return a * a; }},
        {"Sqrt_InPlace", [](auto n, auto, auto, auto io, auto) { Sqrt_InPlace(n, io); },
         [](T, T, T io, T) { return std::sqrt(io); }},
        {"Abs", [](auto n, auto a, auto, auto io, auto) { Abs(n, a, io); },
         [](T a, T, T, T) { return std::abs(a); }},
        {"Abs_InPlace", [](auto n, auto, auto, auto io, auto) { Abs_InPlace(n, io); },
         [](T, T, T io, T) { return std::abs(io); }},
        {"MaxEvery_InPlace", [](auto n, auto a, auto, auto io, auto) { MaxEvery_InPlace(n, a, io); },
         [](T a, T, T io, T) { return a > io ? a : io; }},
        {"Threshold_LT_InPlace", [](auto n, auto, auto, auto io, auto c) { Threshold_LT_InPlace(n, io, c); },
         [](T, T, T io, T c) { return io < c ? c : io; }},
        {"Threshold_GT_InPlace", [](auto n, auto, auto, auto io, auto c) { Threshold_GT_InPlace(n, io, c); },
         [](T, T, T io, T c) { return io > c ? c : io; }},
        {"Trim", [](auto n, auto, auto, auto io, auto c) { Trim(n, io, -c, 2 * c); },
         [](T, T, T io, T c) { return io < -c ? -c : (io > 2 * c ? 2 * c : io); }},
        {"Trim, upside down", [](auto n, auto, auto, auto io, auto c) { Trim(n, io, 2 * c, c); },
         [](T, T, T io, T c) { return std::isnan(io) ? io : c; }},
        {"Magnitude", [](auto n, auto a, auto b, auto io, auto) { Magnitude(n, a, b, io); },
         [](T a, T b, T, T) { return std::sqrt(a * a + b * b); }, 2 * kFusedTolerance},
        {"Set", [](auto n, auto, auto, auto io, auto c) { Set(n, io, c); }, [](T, T, T, T c) { return c; }},
        {"Zero", [](auto n, auto, auto, auto io, auto) { Zero(n, io); }, [](T, T, T, T) { return T(0); }},
        {"Copy", [](auto n, auto a, auto, auto io, auto) { Copy(n, a, io); }, [](T a, T, T, T) { return a; }},
        {"Move", [](auto n, auto a, auto, auto io, auto) { Move(n, a, io); }, [](T a, T, T, T) { return a; }},
    };
}

template <class T>
bool IsNear(const Operation<T>& inOperation, T inA, T inB, T inIo, T inResult)
{
    const T expected = inOperation.plain(inA, inB, inIo, T(kConstant));
    const double factor = std::max(std::abs(double(inB)), kConstant);
    const double magnitude = std::abs(double(inA)) * factor + std::abs(inIo);
    return IsSame(inResult, expected) ||
           std::abs(double(inResult) - expected) <=
               inOperation.tolerance * std::numeric_limits<T>::epsilon() * magnitude;
}

/// One operation on one length, alignment and set of inputs: against the plain form, then with the
/// destination in the place of either source.
template <class T>
void Check(const Operation<T>& inOperation, unsigned inCount, unsigned inMisalignment, bool inSpecials)
{
    const auto make = inSpecials ? RandomRowWithSpecials<T> : RandomRow<T>;
    const auto a = make(inCount, 1);
    const auto b = make(inCount, 2);
    GuardedRow<T> rowA(inMisalignment, a);
    GuardedRow<T> rowB(inMisalignment / 2, b);
    GuardedRow<T> result(inMisalignment, b);
    inOperation.run(inCount, rowA.Get(), rowB.Get(), result.Get(), T(kConstant));
    for (unsigned i = 0; i < inCount; ++i) {
        ASSERT_TRUE(IsNear(inOperation, a[i], b[i], b[i], result[i]))
            << "element " << i << " is " << result[i] << " for a " << a[i] << ", b and io " << b[i];
    }

    GuardedRow<T> inPlaceOfB(inMisalignment, b);
    inOperation.run(inCount, rowA.Get(), inPlaceOfB.Get(), inPlaceOfB.Get(), T(kConstant));
    GuardedRow<T> afterA(inMisalignment, a);
    GuardedRow<T> inPlaceOfA(inMisalignment, a);
    inOperation.run(inCount, rowA.Get(), rowB.Get(), afterA.Get(), T(kConstant));
    inOperation.run(inCount, inPlaceOfA.Get(), rowB.Get(), inPlaceOfA.Get(), T(kConstant));
    for (unsigned i = 0; i < inCount; ++i) {
        ASSERT_TRUE(IsSame(inPlaceOfB[i], result[i])) << "b is the destination, element " << i;
        ASSERT_TRUE(IsSame(inPlaceOfA[i], afterA[i])) << "a is the destination, element " << i;
    }
}

template <class T>
void CheckAll()
{
    for (const auto& operation : Operations<T>()) {
        for (const unsigned count : RowLengths()) {
            for (const unsigned misalignment : {0u, 1u, 6u}) {
                SCOPED_TRACE(std::string(operation.name) + ", length " + std::to_string(count) +
                             ", misalignment " + std::to_string(misalignment));
                Check(operation, count, misalignment, misalignment == 1);
                if (::testing::Test::HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

class ElementwiseTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(ElementwiseTest);

TEST_P(ElementwiseTest, FloatRowsMatchThePlainLoopAndStayInTheirBounds)
{
    CheckAll<float>();
}
TEST_P(ElementwiseTest, DoubleRowsMatchThePlainLoopAndStayInTheirBounds)
{
    CheckAll<double>();
}

TEST_P(ElementwiseTest, LevelsThatAreNaNLimitNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto contents = RandomRow<float>(40, 1);
    auto row = contents;
    Threshold_LT_InPlace(40, row.data(), nan);
    Threshold_GT_InPlace(40, row.data(), nan);
    Trim(40, row.data(), nan, nan);
    EXPECT_EQ(row, contents);
}

TEST_P(ElementwiseTest, LnIsWithinTwoUnitsInTheLastPlaceOverTheWholeRangeOfDouble)
{
    std::mt19937_64 generator(1);
    std::vector<double> row;
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        for (int i = 0; i < 8; ++i) {
            row.push_back(std::ldexp(1.0 + double(generator() >> 12) * 0x1p-52, exponent));
        }
    }
    for (int i = -3000; i < 3000; ++i) {
        row.push_back(1.0 + i * 0x1p-50); // where the logarithm itself vanishes
        row.push_back(1.0 + i * 1e-4);
    }
    auto result = row;
    Ln(static_cast<unsigned>(row.size()), row.data(), result.data());
    for (std::size_t i = 0; i < row.size(); ++i) {
        const long double exact = std::log(static_cast<long double>(row[i]));
        const double unit = std::nextafter(std::abs(double(exact)), HUGE_VAL) - std::abs(double(exact));
        ASSERT_LE(std::abs(result[i] - exact), 2 * unit) << "Ln of " << row[i];
    }
}

TEST_P(ElementwiseTest, LnOfSpecialNumbersIsThatOfTheStandardLibrary)
{
    for (const unsigned count : RowLengths()) {
        auto row = RandomRowWithSpecials<double>(count, 9);
        GuardedRow<double> result(1, row);
        Ln(count, result.Get(), result.Get());
        for (unsigned i = 0; i < count; ++i) {
            const double expected = std::log(row[i]);
            ASSERT_TRUE(IsSame(result[i], expected) ||
                        std::abs(result[i] - expected) <= 1e-15 * std::abs(expected))
                << "Ln of " << row[i] << " is " << result[i];
        }
    }
}

} // namespace
