#include <tessaro/restoration/prediction/RunningAutocorr.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro {
namespace {

using testing::Row;

Row Last(RunningAutocorr& ioCorrelation, const Row& inRow, std::size_t inNumLags)
{
    Row result(inNumLags);
    const testing::AllocationGuard guard;
    for (const float sample : inRow) {
        ioCorrelation.RunAutocorr(sample, result.data());
    }
    return result;
}

TEST(RunningAutocorrTest, IsTheMeanProductOverTheWindow)
{
    const Row noise = testing::MakeNoise(500, 3);
    for (const unsigned window : {1u, 37u, 200u}) {
        RunningAutocorr correlation;
        correlation.SetMode(5, 20, window);
        const Row result = Last(correlation, noise, 20);
        for (std::size_t lag = 5; lag < 25; ++lag) {
            double sum = 0.0;
            for (std::size_t i = 500 - window; i < 500; ++i) {
                sum += double{noise[i]} * noise[i - lag];
            }
            EXPECT_NEAR(result[lag - 5], sum / window, 1e-7) << lag;
        }
    }
}

TEST(RunningAutocorrTest, NeverDrifts)
{
    RunningAutocorr correlation;
    correlation.SetMode(0, 3, 100);
    for (unsigned round = 0; round < 100; ++round) {
        Last(correlation, testing::MakeNoise(3000, round), 3);
    }
    EXPECT_EQ(Last(correlation, Row(103), 3), Row(3)); // to the last bit
    EXPECT_EQ(Last(correlation, Row(100, 0.5f), 3)[0], 0.25f);
}

TEST(RunningAutocorrTest, ClipsProductsAndPassesOverWhatIsNoNumber)
{
    RunningAutocorr correlation;
    correlation.SetMode(1, 2, 0); // no window
    EXPECT_EQ(Last(correlation, {0.5f, -3.0f, 2.0f}, 2), (Row{-1.0f, 1.0f}));
    // From one bound to the other as the window moves on
    correlation.SetMode(1, 1, 2);
    EXPECT_EQ(Last(correlation, {1, -1, 1, 1, 1}, 1), Row{1.0f});
    const float infinity = std::numeric_limits<float>::infinity();
    correlation.SetMode(0, 3, 4);
    EXPECT_EQ(Last(correlation, {0.0f, std::nanf(""), infinity, 0.0f}, 3), (Row{0.25f, 0.0f, 0.0f}));
    EXPECT_EQ(Last(correlation, Row(7), 3), Row(3));
    RunningAutocorr none;
    none.RunAutocorr(1.0f, nullptr);
    none.SetMode(3, 0, 4);
    none.RunAutocorr(1.0f, nullptr);
}

} // namespace
} // namespace tessaro
