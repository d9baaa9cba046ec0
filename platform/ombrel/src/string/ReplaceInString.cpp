#include <ombrel/string/ReplaceInString.h>

namespace ombrel::string::details {

namespace {

template <typename Char>
std::basic_string<Char> Fill(std::basic_string_view<Char> inText,
                             std::span<const std::basic_string_view<Char>> inValues)
{
    constexpr auto kMark = static_cast<Char>('@');
    std::basic_string<Char> text;
    text.reserve(inText.size());
    for (std::size_t i = 0; i < inText.size(); ++i) {
        if (inText[i] == kMark && i + 1 < inText.size() && inText[i + 1] >= static_cast<Char>('0') &&
            inText[i + 1] <= static_cast<Char>('9')) {
            const auto index = static_cast<std::size_t>(inText[i + 1] - static_cast<Char>('0'));
            if (index < inValues.size()) {
                text.append(inValues[index]);
                ++i;
                continue;
            }
        }
        text.push_back(inText[i]);
    }
    return text;
}

} // namespace

std::string FillPlaceholders(std::string_view inText, std::span<const std::string_view> inValues)
{
    return Fill(inText, inValues);
}

UTF8String FillPlaceholders(UTF8StringView inText, std::span<const UTF8StringView> inValues)
{
    return Fill(inText, inValues);
}

UTF16String FillPlaceholders(UTF16StringView inText, std::span<const UTF16StringView> inValues)
{
    return Fill(inText, inValues);
}

} // namespace ombrel::string::details
