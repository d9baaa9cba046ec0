#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>
#include <ombrel/proplist/PropList.h>

namespace {

using ombrel::proplist::PropertyType;
using ombrel::proplist::PropList;

PropList MakeList()
{
    PropList list;
    list.SetValue("on", true);
    list.SetValue("low", std::numeric_limits<std::int32_t>::min());
    list.SetValue("mask", 0xFFFFFFFFu);
    list.SetValue("frames", std::numeric_limits<std::int64_t>::min());
    list.SetValue("flags", std::numeric_limits<std::uint64_t>::max());
    list.SetValue("gain", 0.1f);
    list.SetValue("rate", 1.0 / 3.0);
    list.SetValue("floor", -std::numeric_limits<float>::infinity());
    list.SetValue("name", "Gr\xc3\xbc\xc3\x9f"
                          "e & <b>\"tab\t\" \r\n'");
    list.SetValue("bytes", std::string_view("\0\x01\xff", 3));
    list.SetValue(std::string_view("odd\x02name", 8), 5);
    auto& bands = list.NewSubList("bands");
    bands.NewSubList("empty");
    bands.SetValue("", "a name may be empty");
    return list;
}

TEST(PropListTest, TakesAndGivesEveryWidthAndEncoding)
{
    PropList list;
    list.SetValue("long long", 1LL << 40);
    list.SetValue("unsigned", ~0ULL);
    list.SetValue("wide", u"\u00fc");
    const unsigned char utf8[] = {0xc3, 0xbc};
    list.SetValue("utf8", ombrel::UTF8StringView(utf8, 2));
    EXPECT_EQ(list.GetPropertyType("long long"), PropertyType::kInt64);
    EXPECT_EQ(list.GetPropertyType("unsigned"), PropertyType::kUInt64);
    long long number = 5;
    EXPECT_TRUE(list.GetValue("long long", number));
    EXPECT_EQ(number, 1LL << 40);
    EXPECT_FALSE(list.GetValue("unsigned", number));
    EXPECT_EQ(number, 1LL << 40);
    std::string text;
    ombrel::UTF16String wide;
    ombrel::UTF8String narrow;
    EXPECT_TRUE(list.GetValue("wide", text));
    EXPECT_EQ(text, "\xc3\xbc");
    EXPECT_TRUE(list.GetValue("utf8", wide));
    EXPECT_EQ(wide, u"\u00fc");
    EXPECT_TRUE(list.GetValue("wide", narrow));
    EXPECT_EQ(narrow, ombrel::UTF8String(utf8, 2));
    EXPECT_FALSE(list.GetValue("unsigned", wide));
    EXPECT_EQ(wide, u"\u00fc");
}

TEST(PropListTest, KeepsTypesOrderAndPlaces)
{
    PropList list;
    list.SetValue("b", 1);
    list.SetValue("a", "text");
    list.NewSubList("c").SetValue("b", 2.5);
    list.SetValue("b", 3.5f);
    EXPECT_EQ(list.GetPropertyNames(), (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_EQ(list.GetPropertyType("b"), PropertyType::kFloat);
    EXPECT_EQ(list.GetPropertyType("a"), PropertyType::kString);
    EXPECT_EQ(list.GetPropertyType("c"), PropertyType::kSubList);
    EXPECT_EQ(list.GetPropertyType("B"), PropertyType::kNone);
    EXPECT_EQ(list.GetSubList("a"), nullptr);
    double value = 0.0;
    EXPECT_TRUE(list.GetSubList("c")->GetValue("b", value));
    EXPECT_EQ(value, 2.5);
    list.Clear();
    EXPECT_TRUE(list.IsEmpty());
}

TEST(PropListTest, NumbersConvertOnlyWithoutLoss)
{
    PropList list;
    list.SetValue("minus", -1);
    list.SetValue("large", std::int64_t(1) << 40);
    list.SetValue("odd", (std::int64_t(1) << 53) + 1);
    list.SetValue("whole", 7.0);
    list.SetValue("half", 0.5);
    list.SetValue("top", 18446744073709551616.0); // 2^64
    list.SetValue("nan", std::nan(""));
    list.SetValue("yes", true);

    std::int32_t small = 99;
    std::uint64_t wide = 99;
    std::int64_t whole = 0;
    double number = 0.0;
    bool yes = false;
    std::string text = "kept";
    EXPECT_FALSE(list.GetValue("large", small));
    EXPECT_FALSE(list.GetValue("minus", wide));
    EXPECT_FALSE(list.GetValue("half", small));
    EXPECT_FALSE(list.GetValue("nan", small));
    EXPECT_FALSE(list.GetValue("top", wide));
    EXPECT_FALSE(list.GetValue("odd", number));
    EXPECT_FALSE(list.GetValue("yes", small));
    EXPECT_FALSE(list.GetValue("minus", yes));
    EXPECT_FALSE(list.GetValue("minus", text));
    EXPECT_FALSE(list.GetValue("missing", small));
    EXPECT_EQ(small, 99);
    EXPECT_EQ(wide, 99u);
    EXPECT_EQ(text, "kept");
    EXPECT_TRUE(list.GetValue("whole", small));
    EXPECT_EQ(small, 7);
    EXPECT_TRUE(list.GetValue("large", number));
    EXPECT_EQ(number, 1099511627776.0);
    EXPECT_TRUE(list.GetValue("odd", whole));
    EXPECT_TRUE(list.GetValue("nan", number));
    EXPECT_TRUE(std::isnan(number));
}

TEST(PropListTest, CopiesAreDeepAndReferencesToSubListsStay)
{
    PropList list;
    PropList& inner = list.NewSubList("inner");
    for (int i = 0; i < 100; ++i) {
        list.SetValue("filler" + std::to_string(i), i);
    }
    inner.SetValue("x", 1);
    PropList copy = list;
    EXPECT_EQ(copy, list);
    copy.GetSubList("inner")->SetValue("x", 2);
    EXPECT_NE(copy, list);
    int value = 0;
    EXPECT_TRUE(list.GetSubList("inner")->GetValue("x", value));
    EXPECT_EQ(value, 1);
}

TEST(PropListTest, AppendingMergesSubListsAndReplacesTheRest)
{
    PropList list;
    list.SetValue("gain", 1.0f);
    list.NewSubList("bands").SetValue("low", 1);
    PropList other;
    other.SetValue("gain", "loud");
    other.NewSubList("bands").SetValue("high", 2);
    other.NewSubList("more");
    list.AppendPropList(other);
    EXPECT_EQ(list.GetPropertyNames(), (std::vector<std::string>{"gain", "bands", "more"}));
    EXPECT_EQ(list.GetPropertyType("gain"), PropertyType::kString);
    EXPECT_EQ(list.GetSubList("bands")->GetPropertyNames(), (std::vector<std::string>{"low", "high"}));
    const PropList before = list;
    list.AppendPropList(list);
    EXPECT_EQ(list, before);
    list.AppendPropList(*list.GetSubList("bands"));
    EXPECT_EQ(list.GetPropertyType("low"), PropertyType::kInt32);
}

TEST(PropListTest, TheXmlFormIsAsDocumentedAndComesBackExactly)
{
    PropList list;
    list.SetValue("gain", -6.5f);
    list.NewSubList("bands");
    EXPECT_EQ(list.OutputAsXMLFragment(), "<proplist>\n"
                                          "  <property name=\"gain\" type=\"float\">-6.5</property>\n"
                                          "  <proplist name=\"bands\">\n"
                                          "  </proplist>\n"
                                          "</proplist>\n");
    const PropList full = MakeList();
    PropList back;
    back.SetValue("old", 1);
    ASSERT_TRUE(back.InputFromXMLFragment(full.OutputAsXMLFragment())) << full.OutputAsXMLFragment();
    EXPECT_EQ(back, full);
}

TEST(PropListTest, RefusesEveryOtherText)
{
    const std::string good = MakeList().OutputAsXMLFragment();
    // Cut anywhere but behind the last bracket.
    for (std::size_t length = 0; length + 1 < good.size(); ++length) {
        PropList list = MakeList();
        ASSERT_FALSE(list.InputFromXMLFragment(good.substr(0, length))) << length;
        ASSERT_TRUE(list.IsEmpty());
    }
    const auto refuses = [](const std::string& inBody) {
        PropList list;
        return !list.InputFromXMLFragment("<proplist>" + inBody + "</proplist>");
    };
    EXPECT_FALSE(refuses("<property type=\"int32\" name=\"a\">1</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"int32\">1.5</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"uint32\">-1</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"number\">1</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"bool\">yes</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"string\">&nbsp;</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"string\" encoding=\"base64\">Z</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" type=\"string\" x=\"\">1</property>"));
    EXPECT_TRUE(refuses("<property name=\"a\" name64=\"\" type=\"string\">1</property>"));
    EXPECT_TRUE(refuses(
        "<property name=\"a\" type=\"int32\">1</property><property name=\"a\" type=\"int32\">1</property>"));
    EXPECT_TRUE(refuses("<proplist>"));
    PropList list;
    EXPECT_FALSE(list.InputFromXMLFragment("<proplist></proplist>x"));
    EXPECT_FALSE(list.InputFromXMLFragment("<proplist name=\"a\"></proplist>"));

    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<proplist name=\"a\">";
    }
    EXPECT_TRUE(refuses(deep));
}

} // namespace
