#include <ombrel/utility/ImmutableString.h>
#include <ombrel/utility/StringValue.h>

#include <unordered_set>

#include <gtest/gtest.h>

namespace {

using ombrel::utility::ImmutableString;
using ombrel::utility::StringValue;

TEST(ImmutableStringTest, SharesItsTextAndComparesByIt)
{
    const ImmutableString text("reverb");
    const ImmutableString copy = text;
    EXPECT_EQ(copy.c_str(), text.c_str());
    EXPECT_EQ(ImmutableString(std::string("reverb")), text);
    EXPECT_LT(ImmutableString("delay"), text);
    EXPECT_EQ(ImmutableString(""), ImmutableString());
    EXPECT_STREQ(ImmutableString().c_str(), "");
    const std::unordered_set<ImmutableString> set{text, copy, "delay"};
    EXPECT_EQ(set.size(), 2u);
}

TEST(StringValueTest, TellsNothingFromEmptyAndReadsWholeNumbersOnly)
{
    EXPECT_NE(StringValue(), StringValue(""));
    EXPECT_EQ(StringValue().GetStringOr("default"), ImmutableString("default"));
    EXPECT_EQ(StringValue("").GetStringOr("default"), ImmutableString());
    EXPECT_EQ(StringValue("-42").ToInteger(), std::int64_t{-42});
    EXPECT_EQ(StringValue("1e3").ToDouble(), 1000.0);
    EXPECT_EQ(StringValue("true").ToBool(), true);
    EXPECT_EQ(StringValue("false").ToBool(), false);
    for (const char* text : {"", " 1", "1 ", "1x", "99999999999999999999"}) {
        EXPECT_FALSE(StringValue(text).ToInteger().IsValid()) << text;
        EXPECT_FALSE(StringValue(text).ToBool().IsValid()) << text;
    }
    EXPECT_FALSE(StringValue("1,5").ToDouble().IsValid());
    EXPECT_FALSE(StringValue().ToDouble().IsValid());
}

} // namespace
