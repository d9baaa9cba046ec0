#include <functional>

#include <brisken/Utility.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

constexpr double kPi = 3.14159265358979323846;
constexpr double kAlpha = 0.16;
constexpr double kLargeAlpha = 2.0;
constexpr double kBeta = 9.0;

/// By the integral over angles, which is periodic, so that the sum over points converges at once; and which
/// has nothing in common with the power series.
double BesselI0(double inX)
{
    double sum = 0;
    for (int k = 0; k < 64; ++k) {
        sum += std::exp(inX * std::cos(2 * kPi * k / 64));
    }
    return sum / 64;
}

template <class T>
struct Window
{
    const char* name;
    std::function<void(unsigned n, const T* a, T* out)> apply;
    double (*weight)(double x); // x from 0 to 1
    double error = 4;           // in epsilon of double
};

template <class T>
std::vector<Window<T>> AllWindows()
{
    return {
        {"Bartlett", [](auto n, auto a, auto out) { WindowBartlett(n, a, out); },
         [](double x) { return 1 - std::abs(2 * x - 1); }},
        {"Hann", [](auto n, auto a, auto out) { WindowHann(n, a, out); },
         [](double x) { return 0.5 - 0.5 * std::cos(2 * kPi * x); }},
        {"Hamming", [](auto n, auto a, auto out) { WindowHamming(n, a, out); },
         [](double x) { return 0.54 - 0.46 * std::cos(2 * kPi * x); }},
        {"Blackman", [](auto n, auto a, auto out) { WindowBlackman(n, a, out, T(kAlpha)); },
         [](double x) { return 0.42 - 0.5 * std::cos(2 * kPi * x) + 0.08 * std::cos(4 * kPi * x); }},
        {"Blackman of negative weights",
         [](auto n, auto a, auto out) { WindowBlackman(n, a, out, T(kLargeAlpha)); },
         [](double x) { return -0.5 - 0.5 * std::cos(2 * kPi * x) + std::cos(4 * kPi * x); },
         4 + 16 * kLargeAlpha},
        {"Kaiser", [](auto n, auto a, auto out) { WindowKaiser(n, a, out, T(kBeta)); },
         [](double x) { return BesselI0(kBeta * std::sqrt(4 * x * (1 - x))) / BesselI0(kBeta); }, 4 + kBeta},
    };
}

template <class T>
void Check(const Window<T>& inWindow, unsigned inCount)
{
    SCOPED_TRACE(std::string(inWindow.name) + ", length " + std::to_string(inCount));
    const auto contents = RandomRow<T>(inCount, 1);
    GuardedRow<T> source(1, contents);
    GuardedRow<T> result(inCount, 2);
    inWindow.apply(inCount, source.Get(), result.Get());
    const double ownEpsilon = std::numeric_limits<T>::epsilon(); // for rounding the weight and the product
    for (unsigned i = 0; i < inCount; ++i) {
        const double weight = inCount == 1 ? 1 : inWindow.weight(i / (inCount - 1.0));
        const double error = inWindow.error * std::numeric_limits<double>::epsilon() +
                             ownEpsilon * std::max(std::abs(weight), 1.0);
        ASSERT_NEAR(result[i], contents[i] * weight, error * std::abs(contents[i])) << "element " << i;
    }
    inWindow.apply(inCount, source.Get(), source.Get());
    EXPECT_EQ(source.Contents(), result.Contents()) << "in place";
    std::vector<T> weights(inCount, T(1));
    inWindow.apply(inCount, weights.data(), weights.data());
    EXPECT_EQ(weights, std::vector<T>(weights.rbegin(), weights.rend())) << "not symmetric";
}

class WindowsTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(WindowsTest);

TEST_P(WindowsTest, WeightsMatchTheirFormulasAndAreSymmetric)
{
    for (const unsigned count : RowLengths()) {
        for (const auto& window : AllWindows<float>()) {
            Check(window, count);
        }
        for (const auto& window : AllWindows<double>()) {
            Check(window, count);
        }
    }
}

TEST_P(WindowsTest, SmallWeightsNearTheEdgesAreAccurateToo)
{
    const unsigned count = 100001;
    std::vector<double> weights(count, 1.0);
    WindowHann(count, weights.data(), weights.data());
    const double sine = std::sin(kPi / (count - 1));
    EXPECT_EQ(weights[0], 0.0);
    EXPECT_NEAR(weights[1] / (sine * sine), 1.0, 1e-15);
}

TEST_P(WindowsTest, KaiserIsARectangleForZeroAndStaysFiniteForAnyShape)
{
    for (const double alpha : {0.0, 40.0, -40.0, 650.0, 5000.0}) {
        std::vector<double> weights(101, 1.0);
        WindowKaiser(101, weights.data(), weights.data(), alpha);
        EXPECT_NEAR(weights[50], 1.0, 1e-13);
        for (unsigned i = 0; i < 50; ++i) {
            ASSERT_TRUE(weights[i] >= 0 && weights[i] <= weights[i + 1] + 1e-15) << alpha << " at " << i;
        }
        EXPECT_EQ(weights[0] == 1.0, alpha == 0.0);
    }
}

} // namespace
