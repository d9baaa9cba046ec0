#include <tessaro/utility/PhaseUnwrap.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro::utils {

namespace {

constexpr double kPi = std::numbers::pi;

std::vector<float> Unwrapped(std::vector<float> inPhase)
{
    UnwrapPhase(static_cast<unsigned>(inPhase.size()), inPhase.data());
    return inPhase;
}

TEST(PhaseUnwrapTest, WrappedRampsBecomeStraightLinesAgain)
{
    for (const double slope : {0.01, 1.0, 3.1, -0.7, -3.1}) {
        std::vector<float> wrapped;
        for (int i = 0; i < 400; ++i) {
            wrapped.push_back(static_cast<float>(std::remainder(slope * i, 2.0 * kPi)));
        }
        const auto straight = Unwrapped(wrapped);
        for (int i = 0; i < 400; ++i) {
            ASSERT_NEAR(slope * i, straight[static_cast<std::size_t>(i)], 2e-3) << slope << " at " << i;
        }
    }
}

TEST(PhaseUnwrapTest, CountOfZeroTouchesNothing)
{
    float phase = 9.0f;
    UnwrapPhase(0, &phase);
    EXPECT_EQ(9.0f, phase);
    UnwrapPhase(0, nullptr);
}

TEST(PhaseUnwrapTest, JumpsBeyondFifteenTurnsArePartlyKeptAndTheRestIsMadeUpLater)
{
    const auto turns = [](double inCount) { return static_cast<float>(inCount * 2.0 * kPi); };
    for (const double sign : {1.0, -1.0}) {
        const auto whole = Unwrapped({0.0f, turns(sign * 15)});
        EXPECT_NEAR(0.0, whole[1], 1e-4);

        const auto partly = Unwrapped({0.0f, turns(sign * 20), turns(sign * 20), turns(sign * 40)});
        EXPECT_NEAR(turns(sign * 5), partly[1], 1e-4);
        EXPECT_NEAR(turns(sign * 5), partly[2], 1e-4); // the offset stays, and 5 turns are now the level
        EXPECT_NEAR(turns(sign * 10), partly[3], 1e-4);
    }
}

TEST(PhaseUnwrapTest, HalfATurnIsSlightlyLessThanPi)
{
    const auto pi = static_cast<float>(kPi);
    EXPECT_NEAR(kPi, Unwrapped({-pi})[0], 1e-6); // the curve starts at 0, and a jump of pi goes up
    EXPECT_NEAR(kPi, Unwrapped({pi})[0], 1e-6);
    EXPECT_NEAR(kPi, Unwrapped({-3.1415f})[0], 2e-4);
    EXPECT_NEAR(kPi, Unwrapped({3.1415f})[0], 2e-4);
    EXPECT_EQ(3.1414928f, Unwrapped({3.1414928f})[0]);
    EXPECT_EQ(-3.1414928f, Unwrapped({-3.1414928f})[0]);
}

TEST(PhaseUnwrapTest, NaNStaysWhereItIs)
{
    const auto curve = Unwrapped({3.0f, -3.0f, std::numeric_limits<float>::quiet_NaN(), -3.0f, -2.5f});
    EXPECT_TRUE(std::isnan(curve[2]));
    EXPECT_NEAR(2.0 * kPi - 3.0, curve[3], 1e-5);
    EXPECT_NEAR(2.0 * kPi - 2.5, curve[4], 1e-5);
}

} // namespace

} // namespace tessaro::utils
