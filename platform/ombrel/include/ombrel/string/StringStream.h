#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

namespace ombrel::string {

/// Builds up text in one encoding from text in any, numbers and truth values.
///
/// The standard's streams cannot do this: those over other character types have no number formatting. Narrow
/// text counts as UTF-8; ill-formed parts become U+FFFD. Numbers do not depend on the locale: integers in
/// decimal, floating point in the shortest form that reads back exactly ("0.1", "1e+30", "inf", "nan"), bool
/// as "true" and "false".
template <typename Char>
class BasicStringStream
{
public:
    BasicStringStream& operator<<(std::string_view inText);
    BasicStringStream& operator<<(UTF8StringView inText);
    BasicStringStream& operator<<(UTF16StringView inText);
    BasicStringStream& operator<<(const char* inText) { return *this << std::string_view(inText); }
    BasicStringStream& operator<<(char inCharacter) { return *this << std::string_view(&inCharacter, 1); }
    BasicStringStream& operator<<(char16_t inCharacter) { return *this << UTF16StringView(&inCharacter, 1); }

    template <typename T>
    requires std::is_arithmetic_v<T> BasicStringStream& operator<<(T inNumber)
    {
        if constexpr (std::is_same_v<T, bool>) {
            return *this << (inNumber ? "true" : "false");
        } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
            return AppendNumber(inNumber);
        } else if constexpr (std::is_floating_point_v<T>) {
            return AppendNumber(static_cast<double>(inNumber));
        } else if constexpr (std::is_signed_v<T>) {
            return AppendNumber(static_cast<long long>(inNumber));
        } else {
            return AppendNumber(static_cast<unsigned long long>(inNumber));
        }
    }

    /// The text so far.
    [[nodiscard]] const std::basic_string<Char>& str() const& noexcept { return mText; }
    [[nodiscard]] std::basic_string<Char> str() && noexcept { return std::move(mText); }
    /// Replaces the text.
    void str(std::basic_string<Char> inText) noexcept { mText = std::move(inText); }

private:
    BasicStringStream& AppendNumber(float inNumber);
    BasicStringStream& AppendNumber(double inNumber);
    BasicStringStream& AppendNumber(long long inNumber);
    BasicStringStream& AppendNumber(unsigned long long inNumber);

    std::basic_string<Char> mText;
};

extern template class OMBREL_EXPORT BasicStringStream<unsigned char>;
extern template class OMBREL_EXPORT BasicStringStream<char16_t>;

using oUTF8StringStream = BasicStringStream<unsigned char>;
using oUTF16StringStream = BasicStringStream<char16_t>;

} // namespace ombrel::string

namespace ombrel {

using string::oUTF16StringStream;
using string::oUTF8StringStream;

} // namespace ombrel
