#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include <brisken/utility/Power.h>

#include "GuardedRow.h"
#include "support/Targets.h"

namespace {

using namespace brisken::utility;
using namespace tessaro::testing;

class PowerTest : public TargetTest
{
};
TESSARO_FOR_EACH_TARGET(PowerTest);

using Function = std::function<void(unsigned, const float*, float*)>;
using Reference = std::function<double(double)>;

/// Distance from the true value in units in the last place of the float nearest to it; 0 for equal specials.
double ErrorInUlp(float inActual, double inTrue)
{
    const auto nearest = static_cast<float>(inTrue);
    if (inActual == nearest || (std::isnan(inActual) && std::isnan(nearest))) {
        return 0.0;
    }
    const float next = std::nextafter(nearest, static_cast<double>(nearest) < inTrue ? 1e38f : -1e38f);
    return std::abs(inActual - inTrue) / std::abs(static_cast<double>(next) - nearest);
}

double LargestError(const Function& inFunction, const Reference& inReference, std::vector<float> inArguments)
{
    std::vector<float> results(inArguments.size());
    inFunction(static_cast<unsigned>(inArguments.size()), inArguments.data(), results.data());
    double largest = 0.0;
    for (std::size_t i = 0; i < results.size(); ++i) {
        const double error = ErrorInUlp(results[i], inReference(inArguments[i]));
        EXPECT_FALSE(std::isnan(error)) << inArguments[i] << " gives " << results[i];
        largest = std::max(largest, error);
    }
    return largest;
}

/// Numbers of all sizes, more of them about 1, and the special ones.
std::vector<float> Arguments(double inLargestLog2)
{
    using Limits = std::numeric_limits<float>;
    std::vector<float> arguments = {0.0f,
                                    -0.0f,
                                    1.0f,
                                    -1.0f,
                                    0.5f,
                                    2.0f,
                                    Limits::max(),
                                    Limits::min(),
                                    Limits::denorm_min(),
                                    -Limits::max(),
                                    -3.0f,
                                    std::nextafter(1.0f, 0.0f),
                                    100.0f,
                                    std::sqrt(0.5f),
                                    Limits::infinity(),
                                    -200.0f,
                                    std::sqrt(2.0f),
                                    -Limits::infinity(),
                                    0.3f,
                                    Limits::quiet_NaN()};
    std::mt19937 generator(7);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (int i = 0; i < 20000; ++i) {
        const double log = uniform(generator) * (i % 2 == 0 ? 1.5 : inLargestLog2);
        arguments.push_back(static_cast<float>(std::exp2(log)));
    }
    return arguments;
}

TEST_P(PowerTest, PowersAreWithinHalfAUnitAndALittle)
{
    for (const double exponent :
         {-0.75, -1.0 + 1.0 / 1.5, 0.0, 1.0, 1.0 / 3.0, 19.0, 99.0, -7.5, 1e5, -1e-6}) {
        SCOPED_TRACE(exponent);
        const auto power = [=](unsigned n, const float* a, float* out) { Power(n, a, exponent, out); };
        const auto reference = [=](double a) { return std::pow(a, exponent); };
        EXPECT_LE(LargestError(power, reference, Arguments(126.0)), 0.52);
    }
    float ones[3] = {1.0f, 1.0f, 1.0f};
    Power(3, ones, 0.37, ones);
    EXPECT_EQ(ones[1], 1.0f);
}

TEST_P(PowerTest, ExponentialsAndLogarithmsAreWithinHalfAUnitAndALittle)
{
    auto arguments = Arguments(6.4);
    const auto count = arguments.size();
    for (std::size_t i = 0; i < count; ++i) {
        arguments.push_back(-arguments[i]);
    }
    const auto exp = [](unsigned n, const float* a, float* out) { Exp(n, a, out); };
    EXPECT_LE(LargestError(
                  exp, [](double a) { return std::exp(a); }, arguments),
              0.52);
    const auto ln = [](unsigned n, const float* a, float* out) { Ln(n, a, out); };
    EXPECT_LE(LargestError(
                  ln, [](double a) { return std::log(a); }, Arguments(126.0)),
              0.52);
}

TEST_P(PowerTest, RowsOfAllLengthsStayWithinTheirBounds)
{
    for (const unsigned count : RowLengths()) {
        const auto arguments = RandomRow<float>(count, count);
        GuardedRow<float> separate(count, 1), inPlace(3, arguments);
        Power(count, arguments.data(), 2.0, separate.Get());
        Power(count, inPlace.Get(), 2.0, inPlace.Get());
        for (unsigned i = 0; i < count; ++i) {
            ASSERT_FLOAT_EQ(separate[i], arguments[i] * arguments[i]) << i << " of " << count;
            ASSERT_EQ(separate[i], inPlace[i]) << i << " of " << count;
        }
    }
}

} // namespace
