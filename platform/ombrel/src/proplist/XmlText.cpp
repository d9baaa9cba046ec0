#include "XmlText.h"

#include <array>
#include <cstdint>

namespace ombrel::proplist {

namespace {

constexpr std::array<std::string_view, 10> kTypeNames{"",       "bool",  "int32",  "uint32", "int64",
                                                      "uint64", "float", "double", "string", ""};

/// Takes one character off the front of a text. Returns false for bytes that are no UTF-8.
bool TakeCharacter(std::string_view& ioText, std::uint32_t& outCharacter)
{
    const auto lead = static_cast<std::uint8_t>(ioText.front());
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > ioText.size()) {
        return false;
    }
    static constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    outCharacter = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<std::uint8_t>(ioText[i]);
        if ((byte & 0xC0) != 0x80) {
            return false;
        }
        outCharacter = outCharacter << 6 | (byte & 0x3F);
    }
    ioText.remove_prefix(length);
    return outCharacter >= kSmallest[length];
}

bool IsXmlCharacter(std::uint32_t inCharacter)
{
    return inCharacter == '\t' || inCharacter == '\n' || inCharacter == '\r' ||
           (inCharacter >= 0x20 && inCharacter <= 0xD7FF) ||
           (inCharacter >= 0xE000 && inCharacter <= 0xFFFD) ||
           (inCharacter >= 0x10000 && inCharacter <= 0x10FFFF);
}

} // namespace

bool IsXmlText(std::string_view inText)
{
    while (!inText.empty()) {
        std::uint32_t character = 0;
        if (!TakeCharacter(inText, character) || !IsXmlCharacter(character)) {
            return false;
        }
    }
    return true;
}

std::string_view NameOfType(PropertyType inType)
{
    return kTypeNames[static_cast<std::size_t>(inType)];
}

PropertyType TypeOfName(std::string_view inName)
{
    for (std::size_t i = 0; i < kTypeNames.size(); ++i) {
        if (!inName.empty() && kTypeNames[i] == inName) {
            return static_cast<PropertyType>(i);
        }
    }
    return PropertyType::kNone;
}

} // namespace ombrel::proplist
