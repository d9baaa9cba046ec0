#include <ombrel/string/StringStream.h>

#include <array>
#include <charconv>

#include <ombrel/string/Unicode.h>

namespace ombrel::string {

namespace {

/// Enough for the shortest exact form of any double and any 64-bit integer.
constexpr std::size_t kNumberLength = 32;

template <typename Char, typename Number>
void AppendDigits(std::basic_string<Char>& ioText, Number inNumber)
{
    std::array<char, kNumberLength> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), inNumber).ptr;
    ioText.append(digits.data(), end);
}

void Append(UTF8String& ioText, std::string_view inText)
{
    ioText += Std8ToUTF8String(inText);
}
void Append(UTF8String& ioText, UTF8StringView inText)
{
    ioText += inText;
}
void Append(UTF8String& ioText, UTF16StringView inText)
{
    ioText += UTF16to8(inText);
}
void Append(UTF16String& ioText, std::string_view inText)
{
    ioText += Std8ToUTF16String(inText);
}
void Append(UTF16String& ioText, UTF8StringView inText)
{
    ioText += UTF8to16(inText);
}
void Append(UTF16String& ioText, UTF16StringView inText)
{
    ioText += inText;
}

} // namespace

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::operator<<(std::string_view inText)
{
    Append(mText, inText);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::operator<<(UTF8StringView inText)
{
    Append(mText, inText);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::operator<<(UTF16StringView inText)
{
    Append(mText, inText);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::AppendNumber(float inNumber)
{
    AppendDigits(mText, inNumber);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::AppendNumber(double inNumber)
{
    AppendDigits(mText, inNumber);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::AppendNumber(long long inNumber)
{
    AppendDigits(mText, inNumber);
    return *this;
}

template <typename Char>
BasicStringStream<Char>& BasicStringStream<Char>::AppendNumber(unsigned long long inNumber)
{
    AppendDigits(mText, inNumber);
    return *this;
}

template class BasicStringStream<unsigned char>;
template class BasicStringStream<char16_t>;

} // namespace ombrel::string
