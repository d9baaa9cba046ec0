#pragma once

#include <string>
#include <string_view>

namespace ombrel::string::details {

inline constexpr char32_t kReplacement = 0xFFFD;

/// What stands at the beginning of a text: a code point, or U+FFFD for an ill-formed part of the given
/// length.
struct Decoded
{
    char32_t mCodePoint;
    std::size_t mLength;
    bool mIsWellFormed;
};

/// `inText` must not be empty. Works on the byte ranges of the table of well-formed UTF-8 byte sequences: the
/// second byte has a narrower range behind 0xE0, 0xED, 0xF0 and 0xF4, which shuts out overlong forms,
/// surrogates and what lies above U+10FFFF.
template <typename Byte>
Decoded DecodeUTF8(std::basic_string_view<Byte> inText) noexcept
{
    const auto byteAt = [inText](std::size_t inIndex) { return static_cast<unsigned char>(inText[inIndex]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80) {
        return {first, 1, true};
    }
    if (first < 0xC2 || first > 0xF4) {
        return {kReplacement, 1, false};
    }
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    char32_t codePoint = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= inText.size() || byteAt(i) < low || byteAt(i) > high) {
            return {kReplacement, i, false};
        }
        codePoint = (codePoint << 6) | (byteAt(i) & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {codePoint, length, true};
}

/// `inText` must not be empty.
inline Decoded DecodeUTF16(std::u16string_view inText) noexcept
{
    const char16_t first = inText[0];
    if (first < 0xD800 || first > 0xDFFF) {
        return {first, 1, true};
    }
    if (first < 0xDC00 && inText.size() > 1 && inText[1] >= 0xDC00 && inText[1] <= 0xDFFF) {
        return {0x10000u + ((first - 0xD800u) << 10) + (inText[1] - 0xDC00u), 2, true};
    }
    return {kReplacement, 1, false};
}

template <typename Byte>
void AppendUTF8(std::basic_string<Byte>& ioText, char32_t inCodePoint)
{
    const auto append = [&ioText](char32_t inByte) { ioText.push_back(static_cast<Byte>(inByte)); };
    if (inCodePoint < 0x80) {
        append(inCodePoint);
        return;
    }
    if (inCodePoint < 0x800) {
        append(0xC0 | (inCodePoint >> 6));
    } else {
        if (inCodePoint < 0x10000) {
            append(0xE0 | (inCodePoint >> 12));
        } else {
            append(0xF0 | (inCodePoint >> 18));
            append(0x80 | ((inCodePoint >> 12) & 0x3F));
        }
        append(0x80 | ((inCodePoint >> 6) & 0x3F));
    }
    append(0x80 | (inCodePoint & 0x3F));
}

inline void AppendUTF16(std::u16string& ioText, char32_t inCodePoint)
{
    if (inCodePoint < 0x10000) {
        ioText.push_back(static_cast<char16_t>(inCodePoint));
        return;
    }
    ioText.push_back(static_cast<char16_t>(0xD800 + ((inCodePoint - 0x10000) >> 10)));
    ioText.push_back(static_cast<char16_t>(0xDC00 + ((inCodePoint - 0x10000) & 0x3FF)));
}

} // namespace ombrel::string::details
