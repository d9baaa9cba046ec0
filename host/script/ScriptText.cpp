#include "script/ScriptText.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <ombrel/string/Unicode.h>

namespace host {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::size_t kSurrogate = 3; // bytes

unsigned ByteAt(std::string_view inText, std::size_t inPlace)
{
    return static_cast<unsigned char>(inText[inPlace]);
}

/// The ten bits of a surrogate whose second byte lies from `inFirst` on, or -1 where none stands.
int FindSurrogate(std::string_view inText, std::size_t inPlace, unsigned inFirst)
{
    if (inPlace + kSurrogate > inText.size() || ByteAt(inText, inPlace) != 0xED ||
        (ByteAt(inText, inPlace + 1) & 0xF0) != inFirst) {
        return -1;
    }
    return static_cast<int>((ByteAt(inText, inPlace + 1) & 0x0F) << 6 | (ByteAt(inText, inPlace + 2) & 0x3F));
}

int FindHighSurrogate(std::string_view inText, std::size_t inPlace)
{
    return FindSurrogate(inText, inPlace, 0xA0);
}

int FindLowSurrogate(std::string_view inText, std::size_t inPlace)
{
    return FindSurrogate(inText, inPlace, 0xB0);
}

std::size_t LengthOfCharacter(unsigned inFirstByte)
{
    return inFirstByte >= 0xF0 ? 4 : inFirstByte >= 0xE0 ? 3 : inFirstByte >= 0xC0 ? 2 : 1;
}

/// Splits a character of four bytes in two surrogates.
std::array<char, 2 * kSurrogate> SplitCharacter(std::string_view inText)
{
    const unsigned character = (ByteAt(inText, 0) & 0x07) << 18 | (ByteAt(inText, 1) & 0x3F) << 12 |
                               (ByteAt(inText, 2) & 0x3F) << 6 | (ByteAt(inText, 3) & 0x3F);
    const unsigned offset = character - 0x10000;
    std::array<char, 2 * kSurrogate> bytes{};
    for (std::size_t half = 0; half < 2; ++half) {
        const unsigned bits = half == 0 ? offset >> 10 : offset & 0x3FF;
        bytes[half * kSurrogate] = static_cast<char>(0xED);
        bytes[half * kSurrogate + 1] = static_cast<char>((half == 0 ? 0xA0u : 0xB0u) | bits >> 6);
        bytes[half * kSurrogate + 2] = static_cast<char>(0x80u | (bits & 0x3F));
    }
    return bytes;
}

} // namespace

std::string ToUtf8(std::string_view inEngineText)
{
    std::string text;
    text.reserve(inEngineText.size());
    for (std::size_t i = 0; i < inEngineText.size();) {
        const int high = FindHighSurrogate(inEngineText, i);
        const int low = FindLowSurrogate(inEngineText, high < 0 ? i : i + kSurrogate);
        if (high >= 0 && low >= 0) {
            const auto character =
                0x10000u + (static_cast<unsigned>(high) << 10) + static_cast<unsigned>(low);
            text += static_cast<char>(0xF0u | character >> 18);
            text += static_cast<char>(0x80u | (character >> 12 & 0x3F));
            text += static_cast<char>(0x80u | (character >> 6 & 0x3F));
            text += static_cast<char>(0x80u | (character & 0x3F));
            i += 2 * kSurrogate;
        } else if (high >= 0 || low >= 0) {
            text += kReplacement;
            i += kSurrogate;
        } else {
            text += inEngineText[i++];
        }
    }
    return text;
}

void PushText(duk_context* ioHeap, std::string_view inText)
{
    // At most three bytes for each one that comes in.
    auto* const buffer = static_cast<char*>(duk_push_fixed_buffer(ioHeap, 3 * inText.size()));
    char* end = buffer;
    for (std::size_t i = 0; i < inText.size();) {
        const auto character = inText.substr(i, LengthOfCharacter(ByteAt(inText, i)));
        if (!ombrel::string::IsWellFormed(character)) {
            end = std::copy(kReplacement.begin(), kReplacement.end(), end);
            ++i;
            continue;
        }
        if (character.size() == 4) {
            const auto halves = SplitCharacter(character);
            end = std::copy(halves.begin(), halves.end(), end);
        } else {
            end = std::copy(character.begin(), character.end(), end);
        }
        i += character.size();
    }
    duk_push_lstring(ioHeap, buffer, static_cast<duk_size_t>(end - buffer));
    duk_remove(ioHeap, -2);
}

} // namespace host
