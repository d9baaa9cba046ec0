#include <ombrel/logging/LogException.h>
#include <ombrel/logging/Trace.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/string/Unicode.h>
#include <ombrel/utility/Dictionary.h>

namespace {

using namespace ombrel::logging;

class TraceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        SetTraceSink([this](int inLevel, std::string_view inCategory, std::string_view inText) {
            mLines.push_back(std::to_string(inLevel) + " " + std::string(inCategory) + " " +
                             std::string(inText));
        });
    }
    void TearDown() override
    {
        SetTraceSink({});
        ResetTraceLevels();
    }

    std::vector<std::string> mLines;
};

TEST_F(TraceTest, WritesUpToTheLevelOfTheCategory)
{
    SetTraceLevel("tessaro.dropouts", 6);
    SetDefaultTraceLevel(1);
    Trace(6, "tessaro.dropouts", "a\r\n");
    Trace(7, "tessaro.dropouts", "b");
    Trace(2, "other", "c");
    Trace(1, "other", ombrel::string::Std8ToUTF8String("d\xC3\xA4"));
    Trace(0, "other", u"\u20AC");
    EXPECT_EQ(mLines, (std::vector<std::string>{"6 tessaro.dropouts a\r\n", "1 other d\xC3\xA4",
                                                "0 other \xE2\x82\xAC"}));
}

TEST_F(TraceTest, TheChangeCountMovesWheneverAnAnswerMayHaveChanged)
{
    EXPECT_FALSE(TraceEnabled(0, "x"));
    auto count = TraceChangeCount();
    SetTraceLevel("x", 3);
    EXPECT_NE(TraceChangeCount(), count);
    EXPECT_TRUE(TraceEnabled(3, "x"));
    count = TraceChangeCount();
    SetTraceSink({});
    EXPECT_NE(TraceChangeCount(), count);
    EXPECT_FALSE(TraceEnabled(3, "x"));
    Trace(3, "x", "nobody listens");
}

TEST_F(TraceTest, ExceptionsAreLoggedWithTheirData)
{
    SetDefaultTraceLevel(0);
    ombrel::ombrel_exception exception("no room", 0xF865001E);
    exception.AddAdditionalData({{"line", 7}});
    LogException(std::make_exception_ptr(exception), "the test");
    LogException(std::runtime_error("plain"), "the test");
    LogException(std::make_exception_ptr(1), "the test");
    EXPECT_EQ(mLines, (std::vector<std::string>{
                          "0 ombrel.exception Exception in the test: no room (0xF865001E) line=7\r\n",
                          "0 ombrel.exception Exception in the test: plain\r\n",
                          "0 ombrel.exception Exception in the test: Unknown exception\r\n"}));
    SetTraceSink([](int, std::string_view, std::string_view) { throw std::runtime_error("full"); });
    LogException(exception, "a sink that throws");
}

} // namespace
