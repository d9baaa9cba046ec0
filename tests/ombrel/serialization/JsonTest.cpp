#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>
#include <ombrel/config/OmbrelException.h>
#include <ombrel/serialization/Json.h>

namespace {

using namespace ombrel::serialization;

TEST(JsonTest, ObjectsAreBuiltAndReadByName)
{
    std::any object;
    EXPECT_FALSE(ObjectHasProperty(object, "a"));
    AddToObject(object, "b", 2.5);
    AddToObject(object, "a", std::string("text"));
    AddToObject(object, "b", true);
    EXPECT_TRUE(ObjectHasProperty(object, "b"));
    EXPECT_FALSE(ObjectHasProperty(object, "c"));
    EXPECT_TRUE(std::any_cast<bool>(GetVariantInObject(object, "b")));
    EXPECT_FALSE(GetVariantInObject(object, "c").has_value());
    EXPECT_THROW(std::any_cast<double>(GetVariantInObject(object, "a")), std::bad_any_cast);
    EXPECT_EQ(WriteJSON(object), R"({"b":true,"a":"text"})");
    std::any number = 1;
    EXPECT_FALSE(ObjectHasProperty(number, "a"));
    EXPECT_THROW(AddToObject(number, "a", 1), BadAnyCast);
}

TEST(JsonTest, ValuesAreTakenApartByTypeAndNumbersByValue)
{
    std::any value;
    ASSERT_TRUE(ReadJSON(R"([3, 3.0, 0.1, -1, 18446744073709551615, true, "3"])", value));
    const auto list = ValueAs<Array>(value);
    EXPECT_EQ(ValueAs<double>(list[0]), 3.0);
    EXPECT_EQ(ValueAs<int>(list[1]), 3);
    EXPECT_EQ(ValueAs<float>(list[2]), 0.1f);
    EXPECT_EQ(ValueAs<short>(list[3]), -1);
    EXPECT_EQ(ValueAs<std::uint64_t>(list[4]), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(ValueAs<std::string>(list[6]), "3");
    EXPECT_EQ(ValueAs<double>(std::any(2.5f)), 2.5);
    EXPECT_THROW(ValueAs<int>(list[2]), BadAnyCast);
    EXPECT_THROW(ValueAs<unsigned>(list[3]), BadAnyCast);
    EXPECT_THROW(ValueAs<std::int64_t>(list[4]), BadAnyCast);
    EXPECT_THROW(ValueAs<double>(list[4]), BadAnyCast); // 2^64 - 1 is no double
    EXPECT_THROW(ValueAs<int>(list[5]), BadAnyCast);
    EXPECT_THROW(ValueAs<bool>(list[0]), BadAnyCast);
    EXPECT_THROW(ValueAs<int>(std::any(std::numeric_limits<double>::quiet_NaN())), BadAnyCast);
    EXPECT_THROW(ValueAs<int>(std::any(2147483648.0)), BadAnyCast);
    EXPECT_THROW(ValueAs<float>(std::any(1e300)), BadAnyCast);
    try {
        ValueAs<double>(list[6]);
        FAIL();
    } catch (const std::bad_any_cast& error) {
        EXPECT_STREQ(error.what(), "Bad any_cast");
    }
}

TEST(JsonTest, ValuesComeBackFromTextWithTheirTypes)
{
    std::any object;
    AddToObject(object, "nothing", {});
    AddToObject(object, "int", std::numeric_limits<std::int64_t>::min());
    AddToObject(object, "large", std::numeric_limits<std::uint64_t>::max());
    AddToObject(object, "whole", 3.0);
    AddToObject(object, "third", 1.0 / 3.0);
    AddToObject(object, "list", Array{std::any(1), std::any("two"), std::any(Array{}), std::any(Object{})});
    std::any back;
    ASSERT_TRUE(ReadJSON(WriteJSON(object, 2), back));
    EXPECT_EQ(WriteJSON(back), WriteJSON(object));
    EXPECT_FALSE(GetVariantInObject(back, "nothing").has_value());
    EXPECT_EQ(std::any_cast<std::int64_t>(GetVariantInObject(back, "int")),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(std::any_cast<std::uint64_t>(GetVariantInObject(back, "large")),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(std::any_cast<double>(GetVariantInObject(back, "whole")), 3.0);
    EXPECT_EQ(std::any_cast<double>(GetVariantInObject(back, "third")), 1.0 / 3.0);
    const auto list = std::any_cast<Array>(GetVariantInObject(back, "list"));
    EXPECT_EQ(std::any_cast<std::int64_t>(list[0]), 1);
    EXPECT_EQ(std::any_cast<std::string>(list[1]), "two");
}

TEST(JsonTest, WhatJsonCannotHoldIsReplacedOrRefused)
{
    EXPECT_EQ(WriteJSON(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(WriteJSON(std::nanf("")), "null");
    EXPECT_EQ(WriteJSON(std::string("a\xff")), "\"a\xef\xbf\xbd\"");
    EXPECT_THROW(WriteJSON(std::make_pair(1, 2)), ombrel::ombrel_exception);
}

TEST(JsonTest, RefusesMalformedAndBottomlessText)
{
    for (const char* text :
         {"", "{", "[1,]", "{\"a\":1,}", "nul", "1 2", "'a'", "\"\xff\"", "[1e]", "{1:2}"}) {
        std::any value = 1;
        EXPECT_FALSE(ReadJSON(text, value)) << text;
        EXPECT_FALSE(value.has_value());
    }
    std::any value;
    EXPECT_FALSE(ReadJSON(std::string(100000, '['), value));
    EXPECT_FALSE(ReadJSON(std::string(300, '[') + std::string(300, ']'), value));
    EXPECT_TRUE(ReadJSON(std::string(200, '[') + std::string(200, ']'), value));
    EXPECT_TRUE(ReadJSON("\"" + std::string(1000, '[') + "\\\"[\"", value));
}

} // namespace
