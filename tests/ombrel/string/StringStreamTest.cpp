#include <ombrel/string/ReplaceInString.h>
#include <ombrel/string/StringStream.h>
#include <ombrel/string/Unicode.h>

#include <atomic>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ombrel;
using ombrel::string::ReplaceInString;

TEST(ReplaceInStringTest, FillsEachPlaceholderOnceAndLeavesTheRest)
{
    EXPECT_EQ(ReplaceInString("@0 at @1 in \"@2\"", "Jitter", "00:00", std::string("A @0")),
              "Jitter at 00:00 in \"A @0\"");
    EXPECT_EQ(ReplaceInString("@1@0@0", "a", "b"), "baa");
    EXPECT_EQ(ReplaceInString("@2 me@home @", "a", "b"), "@2 me@home @");
    EXPECT_EQ(ReplaceInString("@0!", ""), "!");
    EXPECT_EQ(ReplaceInString("@0"), "@0");
    EXPECT_EQ(ReplaceInString(u"@0\u00E4", u"\u20AC"), u"\u20AC\u00E4");
    const UTF8String pattern = string::Std8ToUTF8String("<@0>");
    EXPECT_EQ(ReplaceInString(pattern, pattern), string::Std8ToUTF8String("<<@0>>"));
}

template <typename Stream>
std::string Narrow(const Stream& inStream)
{
    if constexpr (std::is_same_v<Stream, oUTF16StringStream>) {
        return string::UTF16ToStd8String(inStream.str());
    } else {
        return string::UTF8ToStd8String(inStream.str());
    }
}

template <typename Stream>
class StringStreamTest : public ::testing::Test
{
};
using Streams = ::testing::Types<oUTF8StringStream, oUTF16StringStream>;
TYPED_TEST_SUITE(StringStreamTest, Streams);

TYPED_TEST(StringStreamTest, WritesTextOfAnyEncodingNumbersAndTruth)
{
    TypeParam stream;
    stream << "Total:\t" << 3 << "\r\n"
           << u"\u00E4\U0001F600" << string::Std8ToUTF8String("\xE2\x82\xAC") << 'c' << u'\u00DF'
           << std::string("\xFF");
    EXPECT_EQ(Narrow(stream), "Total:\t3\r\n\xC3\xA4\xF0\x9F\x98\x80\xE2\x82\xAC"
                              "c\xC3\x9F\xEF\xBF\xBD");
    stream.str({});
    stream << std::numeric_limits<std::int64_t>::min() << ' ' << std::numeric_limits<std::uint64_t>::max()
           << ' ' << 0.1f << ' ' << 0.1 << ' ' << -1e300 << ' ' << std::numeric_limits<double>::infinity()
           << ' ' << true << std::uint8_t{200} << std::atomic<int>(-4).load();
    EXPECT_EQ(Narrow(stream), "-9223372036854775808 18446744073709551615 0.1 0.1 -1e+300 inf true200-4");
}

} // namespace
