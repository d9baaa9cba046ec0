#include "dynamics/RaisedCosineSmoother.h"
#include "dynamics/SlidingMaximum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "support/AllocationGuard.h"
#include "support/Signals.h"

namespace tessaro::dynamics {

namespace {

using testing::MakeNoise;
using testing::Row;

/// Runs a filter over the row in place, in blocks of all sorts.
template <typename Filter>
Row Filtered(Filter& ioFilter, Row inRow)
{
    const testing::AllocationGuard guard;
    std::mt19937 random(1);
    for (std::size_t done = 0; done < inRow.size();) {
        const auto count = std::min<std::size_t>(random() % 90, inRow.size() - done);
        ioFilter.Process(static_cast<unsigned>(count), inRow.data() + done, inRow.data() + done);
        done += count;
    }
    return inRow;
}

TEST(SlidingMaximumTest, IsTheLargestOfTheWindowForEveryWindow)
{
    auto input = MakeNoise(2000, 1);
    std::transform(input.begin(), input.end(), input.begin(),
                   [](float inSample) { return inSample < 0.2f ? 0.0f : inSample; });
    for (const unsigned window : {0u, 1u, 2u, 3u, 5u, 8u, 48u, 49u, 577u}) {
        SlidingMaximum filter;
        filter.SetWindow(window);
        const auto output = Filtered(filter, input);
        for (std::size_t i = 0; i < input.size(); ++i) {
            const auto first = i + 1 - std::min<std::size_t>(i + 1, std::max(window, 1u));
            const auto largest = *std::max_element(input.begin() + static_cast<std::ptrdiff_t>(first),
                                                   input.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            ASSERT_EQ(output[i], largest) << "window " << window << ", sample " << i;
        }
        filter.Reset();
        EXPECT_EQ(Filtered(filter, input), output) << "window " << window;
    }
}

/// The definition, in double precision
Row SmoothSlowly(const Row& inRow, unsigned inHalfWidth)
{
    const unsigned window = 2 * inHalfWidth + 1;
    Row smooth(inRow.size());
    for (std::size_t i = 0; i < inRow.size(); ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < std::min<std::size_t>(window, i + 1); ++k) {
            const double angle = (2.0 * static_cast<double>(k) + 1.0) * std::numbers::pi / window;
            sum += inRow[i - k] * (1.0 - std::cos(angle)) / window;
        }
        smooth[i] = static_cast<float>(sum);
    }
    return smooth;
}

TEST(RaisedCosineSmootherTest, WeighsTheWindowWithARaisedCosine)
{
    const auto input = MakeNoise(1500, 2, 60.0);
    for (const unsigned halfWidth : {0u, 1u, 2u, 15u, 48u, 240u}) {
        RaisedCosineSmoother filter;
        filter.SetHalfWidth(halfWidth);
        const auto output = Filtered(filter, input);
        const auto expected = halfWidth == 0 ? input : SmoothSlowly(input, halfWidth);
        for (std::size_t i = 0; i < input.size(); ++i) {
            // a float's rounding of values up to 60
            ASSERT_NEAR(output[i], expected[i], 4e-6f) << "half width " << halfWidth << ", sample " << i;
        }
        filter.Reset();
        EXPECT_EQ(Filtered(filter, input), output);
    }
}

TEST(RaisedCosineSmootherTest, DoesNotDriftAndForgetsWhatIsNotANumber)
{
    constexpr unsigned kHalfWidth = 5;
    constexpr std::size_t kWindow = 2 * kHalfWidth + 1;
    RaisedCosineSmoother filter;
    filter.SetHalfWidth(kHalfWidth);
    auto poison = MakeNoise(500, 3);
    poison[100] = std::numeric_limits<float>::quiet_NaN();
    poison[101] = std::numeric_limits<float>::infinity();
    (void)Filtered(filter, poison);
    // Loud for as long as it takes to form the sums anew, over and over
    (void)Filtered(filter, MakeNoise(kWindow * 128 * 200, 4, 1e6));
    const auto quiet = MakeNoise(kWindow * 129, 5, 1e-3);
    const auto output = Filtered(filter, quiet);
    const auto expected = SmoothSlowly(quiet, kHalfWidth);
    for (std::size_t i = kWindow; i < quiet.size(); ++i) {
        ASSERT_NEAR(output[i], expected[i], 1e-8f) << i;
    }
    for (const float sample : Filtered(filter, Row(kWindow * 256, 0.0f))) {
        ASSERT_LT(std::abs(sample), 2e-3f);
    }
    EXPECT_EQ(Filtered(filter, Row(kWindow, 0.0f)).back(), 0.0f); // nothing is left over of all that
}

} // namespace

} // namespace tessaro::dynamics
