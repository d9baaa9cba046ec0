#include <ombrel/string/Unicode.h>

#include "string/CodePoints.h"

namespace ombrel::string {

namespace {

using details::AppendUTF16;
using details::AppendUTF8;
using details::DecodeUTF16;
using details::DecodeUTF8;

template <typename Byte>
UTF16String ToUTF16(std::basic_string_view<Byte> inText)
{
    UTF16String text;
    text.reserve(inText.size());
    while (!inText.empty()) {
        const auto decoded = DecodeUTF8(inText);
        AppendUTF16(text, decoded.mCodePoint);
        inText.remove_prefix(decoded.mLength);
    }
    return text;
}

template <typename Byte>
std::basic_string<Byte> FromUTF16(UTF16StringView inText)
{
    std::basic_string<Byte> text;
    text.reserve(inText.size());
    while (!inText.empty()) {
        const auto decoded = DecodeUTF16(inText);
        AppendUTF8(text, decoded.mCodePoint);
        inText.remove_prefix(decoded.mLength);
    }
    return text;
}

template <typename To, typename From>
std::basic_string<To> Repair(std::basic_string_view<From> inText)
{
    std::basic_string<To> text;
    text.reserve(inText.size());
    while (!inText.empty()) {
        const auto decoded = DecodeUTF8(inText);
        AppendUTF8(text, decoded.mCodePoint);
        inText.remove_prefix(decoded.mLength);
    }
    return text;
}

} // namespace

UTF16String Std8ToUTF16String(std::string_view inText)
{
    return ToUTF16(inText);
}

UTF16String UTF8to16(UTF8StringView inText)
{
    return ToUTF16(inText);
}

UTF16String AsciiToUTF16(std::string_view inText)
{
    UTF16String text;
    text.reserve(inText.size());
    for (const char character : inText) {
        const auto byte = static_cast<unsigned char>(character);
        text.push_back(static_cast<char16_t>(byte < 0x80 ? byte : details::kReplacement));
    }
    return text;
}

UTF8String UTF16to8(UTF16StringView inText)
{
    return FromUTF16<unsigned char>(inText);
}

std::string UTF16ToStd8String(UTF16StringView inText)
{
    return FromUTF16<char>(inText);
}

UTF8String Std8ToUTF8String(std::string_view inText)
{
    return Repair<unsigned char>(inText);
}

std::string UTF8ToStd8String(UTF8StringView inText)
{
    return Repair<char>(inText);
}

bool IsWellFormed(std::string_view inText) noexcept
{
    while (!inText.empty()) {
        const auto decoded = DecodeUTF8(inText);
        if (!decoded.mIsWellFormed) {
            return false;
        }
        inText.remove_prefix(decoded.mLength);
    }
    return true;
}

} // namespace ombrel::string
