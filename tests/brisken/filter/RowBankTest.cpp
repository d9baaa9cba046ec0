#include <brisken/filter/RowBank.h>

#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/Targets.h"

namespace brisken::filter {
namespace {

class RowBankTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(RowBankTest);

TEST_P(RowBankTest, EqualsPlainSumsAndItselfForAnyNumberOfStretches)
{
    constexpr unsigned kHop = 13;
    constexpr unsigned kMostStretches = 11;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (const unsigned length : {0u, 8u, 24u, 256u}) {
        std::vector<double> bank(length * kRowBankRows);
        std::vector<double> signal(length + kHop * kMostStretches);
        for (auto* row : {&bank, &signal}) {
            for (auto& element : *row) {
                element = value(random);
            }
        }
        std::vector<double> all(kMostStretches * kRowBankRows);
        RowBankSums(bank.data(), length, signal.data() + 1, kHop, kMostStretches, all.data());
        for (unsigned i = 0; i < all.size(); ++i) {
            const unsigned row = i % kRowBankRows;
            double expected = 0.0;
            double magnitude = 0.0;
            for (unsigned k = 0; k < length; ++k) {
                const double term = bank[GetRowBankIndex(row, k)] * signal[1 + i / kRowBankRows * kHop + k];
                expected += term;
                magnitude += std::abs(term);
            }
            ASSERT_NEAR(all[i], expected, 1e-15 * length * magnitude) << length << " " << i;
        }
        for (unsigned count = 0; count < kMostStretches; ++count) {
            std::vector<double> some(all.size(), 77.0);
            RowBankSums(bank.data(), length, signal.data() + 1, kHop, count, some.data());
            for (unsigned i = 0; i < some.size(); ++i) {
                ASSERT_EQ(some[i], i < count * kRowBankRows ? all[i] : 77.0) << length << " " << i;
            }
        }
    }
}

} // namespace
} // namespace brisken::filter
