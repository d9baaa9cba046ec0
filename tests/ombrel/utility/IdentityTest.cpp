#include <cmath>
#include <limits>
#include <random>
#include <set>

#include <gtest/gtest.h>
#include <ombrel/utility/BinaryText.h>
#include <ombrel/utility/FaderTranslator.h>
#include <ombrel/utility/Guid.h>

namespace {

using ombrel::utility::DecodeBinaryDataFromUTF8String;
using ombrel::utility::EncodeBinaryDataToUTF8String;
using ombrel::utility::FaderTranslator;
using ombrel::utility::Guid;

TEST(BinaryTextTest, WritesTheVectorsOfTheStandard)
{
    const std::pair<std::string, std::string> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(EncodeBinaryDataToUTF8String(bytes.data(), bytes.size()), text);
    }
}

TEST(BinaryTextTest, EveryByteComesBackAtEveryLength)
{
    std::mt19937 random(7);
    for (std::size_t length = 0; length < 300; ++length) {
        std::vector<unsigned char> bytes(length);
        for (auto& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        std::vector<unsigned char> back;
        ASSERT_TRUE(DecodeBinaryDataFromUTF8String(EncodeBinaryDataToUTF8String(bytes.data(), length), back));
        ASSERT_EQ(back, bytes);
    }
}

TEST(BinaryTextTest, RefusesWhatItCannotHaveWritten)
{
    for (const char* text : {"Zg", "Zg=", "Zg===", "Zh==", "Zm9=", "Z===", "====", "Zg==Zg==", "Zm 9v",
                             "Zm9v\n", "Zm9\xc3", "Zm-_"}) {
        std::vector<unsigned char> data{1, 2, 3};
        EXPECT_FALSE(DecodeBinaryDataFromUTF8String(text, data)) << text;
        EXPECT_TRUE(data.empty()) << text;
    }
}

TEST(GuidTest, IsUniqueMarkedAsRandomAndComesBackFromItsText)
{
    std::set<Guid> all;
    for (int i = 0; i < 1000; ++i) {
        const Guid guid = Guid::CreateUnique();
        const std::string text = guid.ToString();
        ASSERT_EQ(text.size(), 36u);
        ASSERT_EQ(text[14], '4') << text;
        ASSERT_NE(std::string("89ab").find(text[19]), std::string::npos) << text;
        Guid back;
        ASSERT_TRUE(Guid::FromString(text, back));
        ASSERT_EQ(back, guid);
        all.insert(guid);
    }
    EXPECT_EQ(all.size(), 1000u);
    EXPECT_TRUE(Guid().IsNil());
    EXPECT_EQ(Guid().ToString(), "00000000-0000-0000-0000-000000000000");
}

TEST(GuidTest, ReadsUpperCaseAndBracesAndNothingElse)
{
    Guid guid;
    ASSERT_TRUE(Guid::FromString("{0123ABCD-4567-89EF-0123-456789ABCDEF}", guid));
    EXPECT_EQ(guid.ToString(), "0123abcd-4567-89ef-0123-456789abcdef");
    EXPECT_EQ(guid.GetBytes()[0], 0x01);
    EXPECT_EQ(guid.GetBytes()[15], 0xEF);
    const Guid before = guid;
    for (const char* text :
         {"", "0123abcd-4567-89ef-0123-456789abcde", "0123abcd-4567-89ef-0123-456789abcdeg",
          "0123abcd04567-89ef-0123-456789abcdef", "{0123abcd-4567-89ef-0123-456789abcdef",
          "0123abcd-4567-89ef-0123-456789abcdef0"}) {
        EXPECT_FALSE(Guid::FromString(text, guid)) << text;
        EXPECT_EQ(guid, before);
    }
}

TEST(FaderTranslatorTest, RisesStrictlyAndUndoesItself)
{
    const FaderTranslator<double> fader;
    EXPECT_EQ(fader.GetDecibelValue(1.0), 6.0);
    EXPECT_EQ(fader.GetDecibelValue(0.0), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(fader.GetNormalizedValue(-std::numeric_limits<double>::infinity()), 0.0);
    EXPECT_EQ(fader.GetNormalizedValue(40.0), 1.0);
    EXPECT_NEAR(fader.GetDecibelValue(0.5), 6.0 - 18.0618, 1e-4);
    double previous = fader.GetDecibelValue(0.0);
    for (int step = 1; step <= 1000; ++step) {
        const double position = step / 1000.0;
        const double decibels = fader.GetDecibelValue(position);
        ASSERT_GT(decibels, previous);
        ASSERT_NEAR(fader.GetNormalizedValue(decibels), position, 1e-12);
        previous = decibels;
    }
    EXPECT_EQ(fader.GetNormalizedValue(std::nan("")), 0.0);
    EXPECT_EQ(fader.GetDecibelValue(std::nan("")), -std::numeric_limits<double>::infinity());
}

} // namespace
