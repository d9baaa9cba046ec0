#include <tessaro/dropouts/DropoutReasonObject.h>
#include <tessaro/dropouts/DropoutReporterObject.h>

#include <array>

#include <gtest/gtest.h>

#include <tessaro/dropouts/DropoutContext.h>
#include <tessaro/dropouts/DropoutReporter.h>
#include <velmora/ScriptException.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace tessaro::dropouts {
namespace {

using velmora::ScriptValue;

TEST(DropoutScriptObjectsTest, ReasonsAreConstants)
{
    const auto* const definition = velmora::definition::FindDefinition("tessaro.DropoutReason");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(definition->GetDescription(),
              "DropoutReason provides access to constants referring to the different types of dropouts.");
    EXPECT_EQ(definition->GetNamespaceValue(), 0x10000u);
    EXPECT_EQ(definition->GetConstructor(), nullptr);
    const std::array names{
        "CLOCK_JITTER",       "PREFETCH_REQUESTS_NOT_DISPATCHED", "PREFETCH_TIME_LIMIT_EXCEEDED",
        "AUDIO_NOT_IN_CACHE", "IO_TIME_LIMIT_EXCEEDED",           "IO_BUFFER_UNDERRUN"};
    ASSERT_EQ(definition->GetConstants().size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(definition->GetConstants()[i].GetName(), names[i]);
        EXPECT_EQ(definition->GetConstants()[i].GetValue().GetInteger(), static_cast<std::int64_t>(i));
    }
    EXPECT_EQ(
        definition->GetConstants()[4].GetDescription(),
        "The audio I/O thread exceeded its time limit, taking more time than available in the I/O cycle.");
}

TEST(DropoutScriptObjectsTest, ReportersTakeTheirDescriptionsToScripts)
{
    const auto* const definition = velmora::definition::FindDefinition("tessaro.DropoutReporter");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(
        definition->GetDescription(),
        "Dropout reporters can be used to track the number of dropouts that occur during their lifetime.");
    ASSERT_NE(definition->GetConstructor(), nullptr);
    EXPECT_EQ(definition->GetConstructor()->GetDescription(), "Create a new instance.");
    const std::array<std::array<const char*, 2>, 3> methods{
        {{"getTotalDropoutCount", "Get the number of total dropouts."},
         {"getDropoutCount",
          "Get the number of dropouts for a specified dropout reason. Use the constants provided by "
          "DropoutReason as argument."},
         {"reset", "Reset the dropout reporter."}}};
    ASSERT_EQ(definition->GetMethods().size(), methods.size());
    for (std::size_t i = 0; i < methods.size(); ++i) {
        EXPECT_EQ(definition->GetMethods()[i].GetName(), methods[i][0]);
        EXPECT_EQ(definition->GetMethods()[i].GetDescription(), methods[i][1]);
    }
}

TEST(DropoutScriptObjectsTest, ReportersCountForScripts)
{
    const auto object = velmora::utils::CreateScriptObject("tessaro.DropoutReporter");
    const auto second = velmora::utils::CreateScriptObject("tessaro.DropoutReporter");
    const auto total = [&] { return object->CallMethod("getTotalDropoutCount", {}).GetInteger(); };
    const auto count = [&](std::int64_t inReason) {
        return object->CallMethod("getDropoutCount", std::array{ScriptValue(inReason)}).GetInteger();
    };
    const DropoutContext context;
    context.ReportDropout({}, {}, DropoutReason::kIOBufferUnderrun);
    context.ReportDropout({}, {}, DropoutReason::kClockJitter);
    ProcessReportedDropouts();
    EXPECT_EQ(total(), 2);
    EXPECT_EQ(count(5), 1);
    EXPECT_EQ(count(4), 0);
    for (const std::int64_t unknown : {std::int64_t{6}, std::int64_t{-1}, std::int64_t{1} << 32}) {
        try {
            count(unknown);
            FAIL() << unknown;
        } catch (const velmora::ParameterErrorException& error) {
            EXPECT_STREQ(error.what(),
                         "The provided dropout reason is unknown. Use the constants provided by "
                         "DropoutReason as argument.");
        }
    }
    object->CallMethod("reset", {});
    EXPECT_EQ(total(), 0);
    EXPECT_EQ(second->CallMethod("getTotalDropoutCount", {}).GetInteger(), 2);
}

} // namespace
} // namespace tessaro::dropouts
