#include <ombrel/string/Unicode.h>

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ombrel::string;

TEST(UnicodeTest, EveryCodePointSurvivesTheRoundTrip)
{
    for (char32_t codePoint = 0; codePoint < 0x110000; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint < 0xE000) {
            continue;
        }
        UTF16String text;
        if (codePoint < 0x10000) {
            text = {static_cast<char16_t>(codePoint)};
        } else {
            text = {static_cast<char16_t>(0xD7C0 + (codePoint >> 10)),
                    static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF))};
        }
        const auto narrow = UTF16ToStd8String(text);
        ASSERT_EQ(narrow.size(), codePoint < 0x80      ? 1u
                                 : codePoint < 0x800   ? 2u
                                 : codePoint < 0x10000 ? 3u
                                                       : 4u);
        ASSERT_TRUE(IsWellFormed(narrow));
        ASSERT_EQ(Std8ToUTF16String(narrow), text);
        ASSERT_EQ(UTF8to16(UTF16to8(text)), text);
    }
}

TEST(UnicodeTest, EachIllFormedPartBecomesOneReplacementCharacter)
{
    const std::pair<std::string, std::u16string> cases[] = {
        {"a\x80z", u"a\uFFFDz"},                              // a lone trailing byte
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                        // an overlong slash
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},              // an overlong slash of three bytes
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},              // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},    // above the last code point
        {"\xF0\x9F\x98", u"\uFFFD"},                          // cut at the end
        {"\xE2\x82z\xE2", u"\uFFFDz\uFFFD"},                  // cut in the middle
        {"\xFF\xFE", u"\uFFFD\uFFFD"},                        // bytes that never occur
        {"\xF0\x80\x80\x41", u"\uFFFD\uFFFD\uFFFD\u0041"},    // an overlong beginning
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)}, // a zero is text
    };
    for (const auto& [narrow, wide] : cases) {
        EXPECT_EQ(Std8ToUTF16String(narrow), wide) << narrow;
        EXPECT_EQ(UTF8ToStd8String(Std8ToUTF8String(narrow)), UTF16ToStd8String(wide));
    }
    EXPECT_EQ(UTF16ToStd8String(std::u16string{u'a', 0xD83D, u'b', 0xDE00, 0xD83D}),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(AsciiToUTF16("a\xE4"), u"a\uFFFD");
}

TEST(UnicodeTest, AnyBytesGiveWellFormedText)
{
    std::mt19937 random(5);
    constexpr unsigned char kTroublesome[] = {0x41, 0x80, 0x9F, 0xA0, 0xBF, 0xC2,
                                              0xE0, 0xED, 0xF0, 0xF4, 0xFF};
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 8, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(kTroublesome[random() % std::size(kTroublesome)]);
        }
        const auto repaired = UTF8ToStd8String(Std8ToUTF8String(bytes));
        ASSERT_TRUE(IsWellFormed(repaired));
        ASSERT_EQ(UTF16ToStd8String(Std8ToUTF16String(bytes)), repaired);
        ASSERT_EQ(IsWellFormed(bytes), repaired == bytes);
    }
}

} // namespace
