#include <ombrel/utility/BinaryText.h>

#include <array>
#include <cstdint>

namespace ombrel::utility {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeDigits()
{
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return digits;
}

constexpr auto kDigits = MakeDigits();

/// Decodes a group of four characters, of which the last `inPadding` stand for nothing.
bool DecodeGroup(const char* inGroup, std::size_t inPadding, std::vector<unsigned char>& ioData)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::uint8_t digit = i < 4 - inPadding ? kDigits[static_cast<unsigned char>(inGroup[i])] : 0;
        if (digit == kNoDigit) {
            return false;
        }
        bits = bits << 6 | digit;
    }
    const std::uint32_t unused = (1u << (8 * inPadding)) - 1;
    if ((bits & unused) != 0) {
        return false;
    }
    for (std::size_t i = 0; i < 3 - inPadding; ++i) {
        ioData.push_back(static_cast<unsigned char>(bits >> (16 - 8 * i)));
    }
    return true;
}

} // namespace

std::string EncodeBinaryDataToUTF8String(const void* inData, std::size_t inByteCount)
{
    const auto* bytes = static_cast<const unsigned char*>(inData);
    std::string text;
    text.reserve((inByteCount + 2) / 3 * 4);
    for (std::size_t i = 0; i < inByteCount; i += 3) {
        const std::size_t count = inByteCount - i < 3 ? inByteCount - i : 3;
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8 | (k < count ? bytes[i + k] : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text.push_back(k <= count ? kAlphabet[bits >> (18 - 6 * k) & 63] : kPadding);
        }
    }
    return text;
}

bool DecodeBinaryDataFromUTF8String(std::string_view inText, std::vector<unsigned char>& outData)
{
    outData.clear();
    if (inText.size() % 4 != 0) {
        return false;
    }
    outData.reserve(inText.size() / 4 * 3);
    for (std::size_t i = 0; i < inText.size(); i += 4) {
        std::size_t padding = 0;
        if (i + 4 == inText.size()) {
            padding = inText[i + 3] != kPadding ? 0 : inText[i + 2] != kPadding ? 1 : 2;
        }
        if (!DecodeGroup(inText.data() + i, padding, outData)) {
            outData.clear();
            return false;
        }
    }
    return true;
}

} // namespace ombrel::utility
