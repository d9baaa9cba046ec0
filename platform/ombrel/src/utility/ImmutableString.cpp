#include <ombrel/utility/ImmutableString.h>

#include <utility>

namespace ombrel::utility {

ImmutableString::ImmutableString(std::string inText)
    : mText(inText.empty() ? nullptr : std::make_shared<const std::string>(std::move(inText)))
{
}

const std::string& ImmutableString::GetString() const noexcept
{
    static const auto& empty = *new std::string;
    return mText != nullptr ? *mText : empty;
}

} // namespace ombrel::utility
