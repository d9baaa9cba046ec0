#include <velmora/ScriptTransferTypeInfo.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <ombrel/string/StringTypes.h>
#include <velmora/PropertyType.h>
#include <velmora/ScriptObject.h>

#include "Examples.h"

namespace velmora::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <typename T>
bool Takes(const ScriptValue& inValue)
{
    return !PropertyType<T>::GetInfo().Check(inValue).has_value();
}

template <typename T>
T Convert(const ScriptValue& inValue)
{
    EXPECT_TRUE(Takes<T>(inValue)) << inValue.Describe();
    return PropertyType<T>::FromScript(inValue);
}

TEST(ScriptTransferTypeInfoTest, IntegersTakeWholeNumbersWithinTheirRangeOnly)
{
    EXPECT_EQ(Convert<int>(-2147483648.0), std::numeric_limits<int>::min());
    EXPECT_EQ(Convert<int>(2147483647), std::numeric_limits<int>::max());
    EXPECT_FALSE(Takes<int>(2147483648.0));
    EXPECT_FALSE(Takes<int>(-2147483649.0));
    EXPECT_EQ(Convert<unsigned>(4294967295.0), 4294967295u);
    EXPECT_FALSE(Takes<unsigned>(-1));
    EXPECT_FALSE(Takes<unsigned>(4294967296));
    EXPECT_EQ(Convert<std::int64_t>(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(Takes<std::int64_t>(9223372036854775808.0));
    EXPECT_FALSE(Takes<std::uint64_t>(-1.0));
    for (const ScriptValue& value : {ScriptValue(0.5), ScriptValue(std::nan("")), ScriptValue(kInfinity),
                                     ScriptValue(true), ScriptValue("1"), ScriptValue()}) {
        EXPECT_FALSE(Takes<int>(value)) << value.Describe();
    }
}

TEST(ScriptTransferTypeInfoTest, NumbersBoolsAndStringsTakeTheirKind)
{
    EXPECT_EQ(Convert<double>(7), 7.0);
    EXPECT_EQ(Convert<float>(0.1), 0.1F);
    EXPECT_TRUE(std::isnan(Convert<double>(std::nan(""))));
    EXPECT_FALSE(Takes<double>("7"));
    EXPECT_FALSE(Takes<double>(true));
    EXPECT_EQ(Convert<bool>(true), true);
    EXPECT_FALSE(Takes<bool>(1));
    EXPECT_FALSE(Takes<std::string>(1));
    const std::string text = "A\xC3\xA4\xF0\x9F\x8E\xB5";
    EXPECT_EQ(Convert<std::string>(text), text);
    EXPECT_EQ(Convert<ombrel::UTF16String>(text), u"A\u00e4\U0001F3B5");
    EXPECT_EQ(PropertyType<ombrel::UTF16String>::ToScript(u"A\u00e4\U0001F3B5"), text);
    EXPECT_EQ(PropertyType<ombrel::UTF8String>::ToScript(Convert<ombrel::UTF8String>(text)), text);
    EXPECT_EQ(PropertyType<const char*>::ToScript(text.c_str()), text);
    EXPECT_EQ(PropertyType<const char*>::ToScript(nullptr), ScriptValue());
}

TEST(ScriptTransferTypeInfoTest, ObjectsTakeTheirClassAndArraysTheirElements)
{
    using Any = boost::intrusive_ptr<ScriptObjectBase>;
    using Anon = boost::intrusive_ptr<AnonObject>;
    using FaderPtr = boost::intrusive_ptr<Fader>;
    const ScriptValue anon = utils::CreateScriptObject<AnonObject>();
    const ScriptValue fader = utils::CreateScriptObject<Fader>();
    EXPECT_EQ(Convert<Any>(anon), anon.GetObject());
    EXPECT_EQ(Convert<Anon>(anon), anon.GetObject());
    EXPECT_TRUE(Takes<FaderPtr>(fader));
    EXPECT_FALSE(Takes<Anon>(fader));
    EXPECT_FALSE(Takes<Any>(ScriptValue()));
    EXPECT_EQ(PropertyType<Anon>::ToScript(nullptr), ScriptValue());
    EXPECT_EQ(PropertyType<Anon>::GetInfo().GetName(), "object");

    EXPECT_EQ(Convert<std::vector<FaderPtr>>(ScriptArray{fader, fader}).size(), 2u);
    EXPECT_FALSE(Takes<std::vector<FaderPtr>>(ScriptArray{fader, anon}));
    EXPECT_EQ(Convert<std::vector<bool>>(ScriptArray{true, false}), (std::vector<bool>{true, false}));
    EXPECT_EQ(PropertyType<std::vector<bool>>::ToScript({true}), (ScriptArray{true}));

    using Matrix = std::vector<std::vector<float>>;
    const Matrix matrix{{1.0F}, {}, {2.0F, 3.0F}};
    EXPECT_EQ(Convert<Matrix>(PropertyType<Matrix>::ToScript(matrix)), matrix);
    const auto mismatch =
        PropertyType<Matrix>::GetInfo().Check(ScriptArray{ScriptArray{}, ScriptArray{1, "x"}});
    ASSERT_TRUE(mismatch.has_value());
    EXPECT_EQ(mismatch->mPath, "[1][1]");
    EXPECT_EQ(mismatch->mExpected, "number");
    EXPECT_EQ(mismatch->mGot, "string \"x\"");
    EXPECT_EQ(PropertyType<Matrix>::GetInfo().GetName(), "array of array of number");
}

TEST(ScriptValueTest, KeepsKindsApartAndDescribesThem)
{
    EXPECT_EQ(ScriptValue(std::numeric_limits<std::uint64_t>::max()), 18446744073709551616.0);
    EXPECT_FALSE(ScriptValue(1) == ScriptValue(1.0));
    EXPECT_FALSE(ScriptValue(1) == ScriptValue(true));
    EXPECT_EQ(ScriptValue(ScriptObjectPtr()), ScriptValue());
    EXPECT_EQ(ScriptValue("1").GetInteger(), 0);
    EXPECT_EQ(ScriptValue(2.5).GetInteger(), 0);
    EXPECT_EQ(ScriptValue(1).GetString(), "");
    static_assert(!std::is_constructible_v<ScriptValue, int*>);

    EXPECT_EQ(ScriptValue().Describe(), "nothing");
    EXPECT_EQ(ScriptValue(0.1).Describe(), "number 0.1");
    EXPECT_EQ(ScriptValue(utils::CreateScriptObject<AnonObject>()).Describe(), "object");
    EXPECT_EQ(ScriptValue(utils::CreateScriptObject<Fader>()).Describe(), "studio.Fader object");
    // A character of two bytes across the cut at 60 goes as a whole.
    EXPECT_EQ(ScriptValue(std::string(59, 'a') + "\xC3\xA4" + std::string(9, 'b')).Describe(),
              "string \"" + std::string(59, 'a') + "...\"");
}

} // namespace
} // namespace velmora::test
