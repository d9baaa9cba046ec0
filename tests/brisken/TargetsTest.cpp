#include <brisken/Targets.h>

#include <gtest/gtest.h>

namespace {

TEST(TargetsTest, EverySupportedTargetCanBeMadeActiveAndTheBestIsTheDefault)
{
    const auto targets = brisken::GetSupportedTargets();
    ASSERT_FALSE(targets.empty());
    EXPECT_EQ(brisken::GetActiveTarget(), targets.front());
    for (const auto& target : targets) {
        EXPECT_TRUE(brisken::SetActiveTarget(target));
        EXPECT_EQ(brisken::GetActiveTarget(), target);
    }
    brisken::ResetActiveTarget();
    EXPECT_EQ(brisken::GetActiveTarget(), targets.front());
}

TEST(TargetsTest, TheScalarTargetIsAlwaysThere)
{
    const auto last = brisken::GetSupportedTargets().back();
    EXPECT_TRUE(last == "SCALAR" || last == "EMU128") << last;
}

TEST(TargetsTest, AnUnknownNameChangesNothing)
{
    const auto before = brisken::GetActiveTarget();
    EXPECT_FALSE(brisken::SetActiveTarget("PDP11"));
    EXPECT_EQ(brisken::GetActiveTarget(), before);
}

} // namespace
