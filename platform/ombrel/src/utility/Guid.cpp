#include <ombrel/utility/Guid.h>

#include <cstring>
#include <random>

namespace ombrel::utility {

namespace {

/// A dash stands ahead of these bytes in the text.
constexpr bool HasDashAhead(std::size_t inByte)
{
    return inByte == 4 || inByte == 6 || inByte == 8 || inByte == 10;
}

int DigitOf(char inCharacter)
{
    if (inCharacter >= '0' && inCharacter <= '9') {
        return inCharacter - '0';
    }
    const char lower = static_cast<char>(inCharacter | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

Guid Guid::CreateUnique()
{
    std::random_device random;
    Bytes bytes;
    for (std::size_t i = 0; i < kByteCount; i += sizeof(std::uint32_t)) {
        const std::uint32_t word = random();
        std::memcpy(bytes.data() + i, &word, sizeof word);
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80); // the variant of RFC 4122
    return Guid(bytes);
}

bool Guid::FromString(std::string_view inText, Guid& outGuid)
{
    constexpr std::size_t kTextLength = 36;
    if (inText.size() == kTextLength + 2 && inText.front() == '{' && inText.back() == '}') {
        inText = inText.substr(1, kTextLength);
    }
    if (inText.size() != kTextLength) {
        return false;
    }
    Bytes bytes;
    std::size_t position = 0;
    for (std::size_t i = 0; i < kByteCount; ++i) {
        if (HasDashAhead(i) && inText[position++] != '-') {
            return false;
        }
        const int high = DigitOf(inText[position]);
        const int low = DigitOf(inText[position + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
        position += 2;
    }
    outGuid = Guid(bytes);
    return true;
}

std::string Guid::ToString() const
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < kByteCount; ++i) {
        if (HasDashAhead(i)) {
            text.push_back('-');
        }
        text.push_back(kDigits[mBytes[i] >> 4]);
        text.push_back(kDigits[mBytes[i] & 15]);
    }
    return text;
}

} // namespace ombrel::utility
