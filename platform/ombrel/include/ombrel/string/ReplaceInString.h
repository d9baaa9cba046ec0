#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

namespace ombrel::string {

namespace details {

OMBREL_EXPORT std::string FillPlaceholders(std::string_view inText,
                                           std::span<const std::string_view> inValues);
OMBREL_EXPORT UTF8String FillPlaceholders(UTF8StringView inText, std::span<const UTF8StringView> inValues);
OMBREL_EXPORT UTF16String FillPlaceholders(UTF16StringView inText, std::span<const UTF16StringView> inValues);

} // namespace details

/// Fills the placeholders "@0" to "@9" of a text with the values in their order. A value may stand at several
/// places or nowhere; a placeholder without a value, and an "@" without a digit behind it, stay as they are.
/// What was filled in is not looked at again, so a value may hold an "@1" of its own. All texts of one call
/// are of one encoding.
///
///     ReplaceInString("@0 at @1", message, timecode)
template <typename... Values>
[[nodiscard]] std::string ReplaceInString(std::string_view inText, const Values&... inValues)
{
    const std::array<std::string_view, sizeof...(Values)> values{std::string_view(inValues)...};
    return details::FillPlaceholders(inText, values);
}

template <typename... Values>
[[nodiscard]] UTF8String ReplaceInString(UTF8StringView inText, const Values&... inValues)
{
    const std::array<UTF8StringView, sizeof...(Values)> values{UTF8StringView(inValues)...};
    return details::FillPlaceholders(inText, values);
}

template <typename... Values>
[[nodiscard]] UTF16String ReplaceInString(UTF16StringView inText, const Values&... inValues)
{
    const std::array<UTF16StringView, sizeof...(Values)> values{UTF16StringView(inValues)...};
    return details::FillPlaceholders(inText, values);
}

} // namespace ombrel::string
