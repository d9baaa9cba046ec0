#include <ombrel/config/OmbrelException.h>

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include <ombrel/utility/Dictionary.h>

namespace {

using namespace ombrel::config;
using ombrel::utility::Dictionary;
using ombrel::utility::DictionaryValue;

TEST(OmbrelExceptionTest, CarriesMessageResultAndDataThroughCopies)
{
    ombrel_exception first("no such thing", 0xF865001E);
    const ombrel_exception before(first);
    first.AddAdditionalData({{"line", 138}, {"expression", "a == b"}});
    const ombrel_exception after(first);
    first.AddAdditionalData({{"line", 139}});
    EXPECT_STREQ(after.what(), "no such thing");
    EXPECT_EQ(after.GetResult(), 0xF865001Eu);
    EXPECT_TRUE(before.GetAdditionalData().IsEmpty());
    EXPECT_EQ(after.GetAdditionalData().Get("line").GetInteger(), 138);
    EXPECT_EQ(first.GetAdditionalData().Get("line").GetInteger(), 139);
    EXPECT_EQ(first.GetAdditionalData().Get("expression").GetString(), "a == b");
    EXPECT_STREQ(ombrel_exception(0xA00F000C).what(), "Result code 0xA00F000C");
}

TEST(OmbrelExceptionTest, ResultAndMessageComeOutOfAnyException)
{
    const auto own = std::make_exception_ptr(ombrel_exception("text", 12));
    EXPECT_EQ(ExtractResultFromException(own), 12u);
    EXPECT_EQ(ExtractMessageFromException(own), "text");
    EXPECT_EQ(ExtractResultFromException(std::make_exception_ptr(std::bad_alloc())), kResultOutOfMemory);
    EXPECT_EQ(ExtractResultFromException(std::make_exception_ptr(std::runtime_error("x"))),
              kResultUnknownFailure);
    EXPECT_EQ(ExtractMessageFromException(std::make_exception_ptr(3)), "Unknown exception");
    EXPECT_EQ(ExtractResultFromException(nullptr), kResultSuccess);
}

TEST(DictionaryTest, KeepsTypesAndGivesDefaultsForOthers)
{
    Dictionary values{{"on", true}, {"count", 7u}, {"ratio", 0.1}, {"name", "reverb"}};
    EXPECT_EQ(values.Get("on").GetType(), DictionaryValue::Type::kBool);
    EXPECT_EQ(values.Get("count").GetDouble(), 7.0);
    EXPECT_EQ(values.Get("ratio").GetInteger(-1), -1);
    EXPECT_EQ(values.Get("ratio").ToString(), "0.1");
    EXPECT_EQ(values.Get("on").ToString(), "true");
    EXPECT_EQ(values.Get("missing").GetType(), DictionaryValue::Type::kNone);
    EXPECT_TRUE(values.Remove("on"));
    EXPECT_FALSE(values.Remove("on"));
    values.Merge(Dictionary{{"name", "delay"}, {"new", 1}});
    EXPECT_EQ(values.GetSize(), 4u);
    EXPECT_EQ(values.Get("name").GetString(), "delay");
}

} // namespace
