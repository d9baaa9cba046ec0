#include <tessaro/utility/Range.h>

#include <algorithm>

#include <gtest/gtest.h>

namespace tessaro::utils {

namespace {

std::vector<int> LengthsAfterShrinking(const std::vector<int>& inLengths)
{
    std::vector<Range> ranges;
    for (const int length : inLengths) {
        ranges.push_back({0, length, 1});
    }
    ShrinkRangeVector(ranges);
    std::vector<int> lengths;
    for (const auto& range : ranges) {
        lengths.push_back(range.length);
    }
    return lengths;
}

TEST(RangeTest, OrdersByStartAlone)
{
    constexpr std::int64_t kFar = std::int64_t{1} << 40;
    EXPECT_TRUE(CompareLowerBound({kFar, 9, 1}, {kFar + 1, 2, 0}));
    EXPECT_FALSE(CompareLowerBound({kFar, 2, 0}, {kFar, 9, 1}));
    EXPECT_FALSE(CompareLowerBound({kFar, 2, 0}, {-kFar, 9, 1}));

    const std::vector<Range> sorted = {{-5, 7, 0}, {10, 1, 0}, {10, 2, 0}, {kFar, 3, 0}};
    const auto found = std::lower_bound(sorted.begin(), sorted.end(), Range{10, 0, 1}, CompareLowerBound);
    EXPECT_EQ(1, found - sorted.begin());
}

TEST(RangeTest, ShrinkingCutsOnlyTheTailOfEmptyEntries)
{
    using Lengths = std::vector<int>;
    EXPECT_EQ(Lengths({3, 0, 0, 5}), LengthsAfterShrinking({3, 0, 0, 5, 0, 0}));
    EXPECT_EQ(Lengths({0, 4}), LengthsAfterShrinking({0, 4}));
    EXPECT_EQ(Lengths({0, -1}), LengthsAfterShrinking({0, -1, 0})); // only 0 is empty
    EXPECT_EQ(Lengths(), LengthsAfterShrinking({0, 0, 0}));
    EXPECT_EQ(Lengths(), LengthsAfterShrinking({}));
}

} // namespace

} // namespace tessaro::utils
