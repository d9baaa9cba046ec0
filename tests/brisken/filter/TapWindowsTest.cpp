#include <brisken/filter/TapWindows.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "FilterTestSupport.h"
#include "support/Targets.h"

namespace brisken::filter {
namespace {

using brisken::testing::Noise;

class TapWindowsTest : public tessaro::testing::TargetTest
{
};
TESSARO_FOR_EACH_TARGET(TapWindowsTest);

TEST_P(TapWindowsTest, SumsTheProductsOfEachWindowAndLeavesOutWhatStandsBehind)
{
    const auto table = Noise<float>(4000, 1);
    for (const std::size_t count : {0u, 1u, 3u, 4u, 8u, 15u, 16u, 17u, 31u, 32u, 33u, 48u, 65u, 1344u}) {
        std::vector<TapWindow> windows;
        for (std::size_t i = 0; i < 23; ++i) {
            windows.push_back(
                {(i * 613) % 2400, static_cast<std::ptrdiff_t>(i * 3 + 1), i % 5 == 0 ? count / 2 : count});
        }
        std::vector<float> together(24, 7.0f);
        auto source = Noise<float>(count + 100, 2);
        DotWindows(table.data(), source.data(), windows.data(), 23, together.data());
        EXPECT_EQ(together[23], 7.0f);
        for (std::size_t i = 0; i < 23; ++i) {
            // Alone, and with NaN on both sides of the window: the same to the last bit.
            const auto [taps, first, length] = windows[i];
            const auto start = static_cast<std::size_t>(first);
            std::vector<float> exact(start + length + kTapWindowSlack,
                                     std::numeric_limits<float>::quiet_NaN());
            double sum = 0.0;
            double magnitude = 0.0;
            for (std::size_t k = 0; k < length; ++k) {
                exact[start + k] = source[start + k];
                sum += static_cast<double>(table[taps + k]) * source[start + k];
                magnitude += std::abs(static_cast<double>(table[taps + k]) * source[start + k]);
            }
            float alone = 7.0f;
            DotWindows(table.data(), exact.data(), &windows[i], 1, &alone);
            EXPECT_EQ(alone, together[i]);
            // A window's products share at most one sum for each of the lanes, of which there may be one.
            EXPECT_NEAR(alone, sum, static_cast<double>(length + 4) * 6e-8 * magnitude);
        }
    }
}

TEST_P(TapWindowsTest, SplitsPositionsIntoWholesAndTheNearestPlaceBehind)
{
    struct Run
    {
        double mStart;
        double mStep;
        unsigned mFirst;
        unsigned mPhases;
    };
    for (const auto& [start, step, first, phases] :
         {Run{0.0, 0.91875, 0, 8192}, Run{3.7, 160.0 / 147.0, 1000000, 8192}, Run{-20.25, 0.3, 0, 7},
          Run{5.0, -1.37, 3, 1024}, Run{4e15, 0.5, 2, 64}, Run{0.99999, 0.0, 5, 16}, Run{1.0, 3e9, 1, 1}}) {
        for (const unsigned count : {0u, 1u, 7u, 8u, 64u}) {
            std::vector<double> wholes(80, -7.0);
            std::vector<std::int32_t> places(80, -7);
            SplitPositions(start, step, first, count, phases, wholes.data(), places.data());
            for (unsigned n = 0; n < count; ++n) {
                const double position = start + (first + n) * step;
                EXPECT_EQ(wholes[n], std::floor(position));
                EXPECT_EQ(places[n], static_cast<int>((position - std::floor(position)) * phases + 0.5));
            }
            EXPECT_EQ(wholes[(count + 7) / 8 * 8], -7.0);
            EXPECT_EQ(places[(count + 7) / 8 * 8], -7);
        }
    }
}

} // namespace
} // namespace brisken::filter
