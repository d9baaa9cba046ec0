#include <brisken/filter/TapWindows.h>

#include <cmath>
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
            windows.push_back({(i * 613) % 2400, i * 3 + 1, i % 5 == 0 ? count / 2 : count});
        }
        std::vector<float> together(24, 7.0f);
        auto source = Noise<float>(count + 100, 2);
        DotWindows(table.data(), source.data(), windows.data(), 23, together.data());
        EXPECT_EQ(together[23], 7.0f);
        for (std::size_t i = 0; i < 23; ++i) {
            // Alone, and with NaN on both sides of the window: the same to the last bit.
            const auto [taps, start, length] = windows[i];
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

} // namespace
} // namespace brisken::filter
