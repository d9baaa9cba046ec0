#include <ombrel/debug/Assert.h>
#include <ombrel/debug/CodeProfiler.h>
#include <ombrel/debug/DebugDatabase.h>
#include <ombrel/debug/DebugMonitor.h>

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <ombrel/utility/Dictionary.h>

namespace {

using namespace ombrel::debug;
using ombrel::oUTF16StringStream;

TEST(AssertTest, AFailedCheckTellsExpressionAndPlace)
{
    int line = 0;
    try {
        line = __LINE__ + 1;
        OMBREL_CHECK(1 + 1 == 3, "Sums are off", 0xF8650001);
        FAIL();
    } catch (const ombrel::ombrel_exception& exception) {
        const auto& data = exception.GetAdditionalData();
        EXPECT_STREQ(exception.what(), "Sums are off");
        EXPECT_EQ(exception.GetResult(), 0xF8650001u);
        EXPECT_EQ(data.Get(kDebugExpression).GetString(), "1 + 1 == 3");
        EXPECT_EQ(data.Get(kDebugSourceFile).GetString(), "DebugTest.cpp");
        EXPECT_EQ(data.Get(kDebugSourceLine).GetInteger(), line);
        EXPECT_EQ(data.Get(kDebugSourceFunction).GetString(), "TestBody");
    }
    OMBREL_CHECK(true, "unused", 1);
}

TEST(AssertTest, AssertsPassInsideTheGuardsOnlyAndChecksDoNot)
{
    EXPECT_THROW(OMBREL_ASSERT(false), ombrel::ombrel_exception);
    {
        const ScDisableAsserts outer;
        {
            const ScDisableAsserts inner;
        }
        EXPECT_NO_THROW(OMBREL_ASSERT(false));
        EXPECT_THROW(OMBREL_CHECK(false, "still on", 1), ombrel::ombrel_exception);
    }
    EXPECT_THROW(OMBREL_ASSERT(false), ombrel::ombrel_exception);
}

TEST(DebugMonitorTest, RunsWhatIsRegisteredAndSurvivesItsFailures)
{
    RegisterDebugMonitorCallback("b", [](oUTF16StringStream& ioText) { ioText << "first" << 1; });
    RegisterDebugMonitorCallback("b", [](oUTF16StringStream&) { throw std::runtime_error("broken"); });
    RegisterDebugMonitorCallback("a", [](oUTF16StringStream& ioText) { ioText << "alone"; });
    oUTF16StringStream text;
    RunDebugMonitors(text);
    EXPECT_EQ(text.str(), u"a\r\nalone\r\nb\r\nfirst1\r\n");
    UnregisterDebugMonitorCallback("b");
    UnregisterDebugMonitorCallback("unknown");
    EXPECT_EQ(GetDebugMonitorIds(), (std::vector<std::string>{"a", "b"}));
    UnregisterDebugMonitorCallback("b");
    UnregisterDebugMonitorCallback("a");
    EXPECT_FALSE(RunDebugMonitor("a", text));
}

TEST(DebugMonitorTest, ACallbackThatAnotherOneTookOutDoesNotRunAnyMore)
{
    RegisterDebugMonitorCallback("id", [](oUTF16StringStream&) { UnregisterDebugMonitorCallback("id"); });
    RegisterDebugMonitorCallback("id", [](oUTF16StringStream& ioText) { ioText << "gone"; });
    oUTF16StringStream text;
    RunDebugMonitor("id", text);
    EXPECT_EQ(text.str(), u"");
    UnregisterDebugMonitorCallback("id");
}

TEST(DebugMonitorTest, ATokenTakesOutItsOwnCallbackOnly)
{
    const auto first =
        RegisterDebugMonitorCallback("shared", [](oUTF16StringStream& ioText) { ioText << "1"; });
    const auto second =
        RegisterDebugMonitorCallback("shared", [](oUTF16StringStream& ioText) { ioText << "2"; });
    UnregisterDebugMonitorCallback("other", second);
    UnregisterDebugMonitorCallback("shared", first);
    UnregisterDebugMonitorCallback("shared", first);
    oUTF16StringStream text;
    EXPECT_TRUE(RunDebugMonitor("shared", text));
    EXPECT_EQ(text.str(), u"2");
    UnregisterDebugMonitorCallback("shared", second);
    EXPECT_FALSE(RunDebugMonitor("shared", text));
}

TEST(DebugDatabaseTest, GivesTheDefaultUntilAnEntryIsSet)
{
    auto& database = DebugDatabase::Instance();
    EXPECT_EQ(database.GetEntry("test.show", "false"), "false");
    EXPECT_EQ(database.GetEntry("test.show", "perhaps"), "perhaps");
    EXPECT_EQ(database.GetEntries().at("test.show"), "false");
    database.SetEntry("test.show", "true");
    EXPECT_EQ(database.GetEntry("test.show", "false"), "true");
    EXPECT_EQ(database.GetEntries().at("test.show"), "true");
    database.RemoveEntry("test.show");
    EXPECT_EQ(database.GetEntry("test.show", "false"), "false");
}

TEST(CodeProfilerTest, MeasuresOnlyWhileItIsOn)
{
    auto& manager = CodeProfilerManager::Instance();
    {
        const CodeProfiler off("off");
    }
    manager.SetEnabled(true);
    for (int i = 0; i < 3; ++i) {
        const CodeProfiler on("on");
    }
    manager.SetEnabled(false);
    manager.Add("fixed", std::chrono::microseconds(4));
    manager.Add("fixed", std::chrono::microseconds(2));
    const auto profiles = manager.GetProfiles();
    ASSERT_EQ(profiles.size(), 2u);
    EXPECT_EQ(profiles[1].mName, "on");
    EXPECT_EQ(profiles[1].mCount, 3u);
    EXPECT_GE(profiles[1].mTotal, profiles[1].mLongest);
    oUTF16StringStream report;
    manager.WriteReport(report);
    EXPECT_EQ(report.str().rfind(u"fixed\t2\t6\t3\t4\r\non\t3\t", 0), 0u);
    manager.Reset();
    EXPECT_TRUE(manager.GetProfiles().empty());
}

} // namespace
