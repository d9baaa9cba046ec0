#pragma once

#include <string>

#include <brisken/Targets.h>
#include <gtest/gtest.h>

namespace tessaro::testing {

/// A test parametrised over this runs once for each SIMD target that the machine has, the scalar one
/// included:
///
///     class AddTest : public tessaro::testing::TargetTest {};
///     TESSARO_FOR_EACH_TARGET(AddTest);
///     TEST_P(AddTest, MatchesTheNaiveSum) { ... }
class TargetTest : public ::testing::TestWithParam<std::string>
{
protected:
    void SetUp() override { ASSERT_TRUE(brisken::SetActiveTarget(GetParam())); }
    void TearDown() override { brisken::ResetActiveTarget(); }
};

} // namespace tessaro::testing

#define TESSARO_FOR_EACH_TARGET(FIXTURE)                                                                     \
    INSTANTIATE_TEST_SUITE_P(Targets, FIXTURE, ::testing::ValuesIn(brisken::GetSupportedTargets()),          \
                             [](const auto& inInfo) { return inInfo.param; })
