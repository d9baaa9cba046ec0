#include "PlotAxis.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace host {

namespace {

std::vector<std::string> Labels(const PlotAxis& inAxis, int inMost)
{
    std::vector<std::string> labels;
    for (const auto& tick : MakeTicks(inAxis, inMost)) {
        if (!tick.mLabel.empty()) {
            labels.push_back(tick.mLabel);
        }
    }
    return labels;
}

using Texts = std::vector<std::string>;
constexpr auto kLinear = PlotAxis::Scale::kLinear;
constexpr auto kDecibels = PlotAxis::Scale::kDecibels;
constexpr auto kLogarithmic = PlotAxis::Scale::kLogarithmic;

TEST(PlotAxisTest, TicksStandOnRoundValuesWithinTheAxis)
{
    EXPECT_EQ(Labels({kLinear, 0.0, 1.0, ""}, 6), Texts({"0", "0.2", "0.4", "0.6", "0.8", "1"}));
    EXPECT_EQ(Labels({kLinear, -1.0, 1.0, ""}, 5), Texts({"-1", "-0.5", "0", "0.5", "1"}));
    EXPECT_EQ(Labels({kLinear, 0.0, 7500.0, ""}, 5), Texts({"0", "2k", "4k", "6k"}));
    EXPECT_EQ(Labels({kDecibels, -24.0, 0.0, ""}, 5), Texts({"-24", "-18", "-12", "-6", "0"}));
    EXPECT_EQ(Labels({kDecibels, -100.0, 0.0, ""}, 7), Texts({"-100", "-80", "-60", "-40", "-20", "0"}));
    EXPECT_EQ(Labels({PlotAxis::Scale::kDegrees, -180.0, 180.0, ""}, 6),
              Texts({"-180", "-90", "0", "90", "180"}));
    EXPECT_EQ(Labels({kLogarithmic, 20.0, 22050.0, ""}, 15),
              Texts({"20", "50", "100", "200", "500", "1k", "2k", "5k", "10k", "20k"}));
    EXPECT_EQ(Labels({kLogarithmic, 20.0, 22050.0, ""}, 5), Texts({"100", "1k", "10k"}));
    EXPECT_EQ(MakeTicks({kLogarithmic, 20.0, 22050.0, ""}, 15).size(), 8u + 9u + 9u + 2u);
}

TEST(PlotAxisTest, NeverMoreLabelsThanAskedFor)
{
    for (const auto scale : {kLinear, kDecibels, kLogarithmic}) {
        for (double high = 1.3; high < 1e7; high *= 1.7) {
            for (int most = 2; most < 16; ++most) {
                EXPECT_LE(Labels({scale, 0.9, high, ""}, most).size(), static_cast<std::size_t>(most))
                    << static_cast<int>(scale) << ", " << high;
            }
        }
    }
}

TEST(PlotAxisTest, PlacesRunFromEndToEnd)
{
    const PlotAxis frequency{kLogarithmic, 20.0, 20000.0, ""};
    EXPECT_DOUBLE_EQ(frequency.GetPlace(20.0), 0.0);
    EXPECT_NEAR(frequency.GetPlace(200.0), 1.0 / 3.0, 1e-12);
    EXPECT_DOUBLE_EQ(frequency.GetPlace(20000.0), 1.0);
    EXPECT_TRUE(std::isnan(frequency.GetPlace(0.0)));
    EXPECT_DOUBLE_EQ((PlotAxis{kLinear, -1.0, 3.0, ""}).GetPlace(0.0), 0.25);
}

TEST(PlotAxisTest, LevelAxisHoldsItsRangeAndIsNotTooNarrow)
{
    for (const double low : {-113.4, -60.0, -0.2}) {
        for (const double range : {0.0, 0.3, 11.0, 57.0}) {
            const auto axis = MakeDecibelAxis(low, low + range, "Level in dB");
            EXPECT_LE(axis.mLow, low);
            EXPECT_GE(axis.mHigh, low + range);
            EXPECT_GE(axis.mHigh - axis.mLow, 12.0);
            EXPECT_LE(axis.mHigh - axis.mLow, std::max(14.0, range + 20.0));
            EXPECT_EQ(axis.mLow, std::round(axis.mLow));
        }
    }
}

} // namespace

} // namespace host
