#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

#include <ombrel/Export.h>
#include <ombrel/utility/CheckedValue.h>
#include <ombrel/utility/ImmutableString.h>

namespace ombrel::utility {

/// Text or nothing: a setting that may be absent, to be read as text, number or truth value. Shares its text
/// with its copies.
class OMBREL_EXPORT StringValue
{
public:
    /// Nothing, which differs from the empty text.
    StringValue() noexcept = default;
    /// Anything that an `ImmutableString` can be made of.
    template <typename T>
    requires std::is_convertible_v<T, ImmutableString> StringValue(T&& inText)
        : mText(std::forward<T>(inText)), mHasValue(true)
    {
    }

    [[nodiscard]] bool HasValue() const noexcept { return mHasValue; }
    /// The text, empty when there is none.
    [[nodiscard]] const ImmutableString& GetString() const noexcept { return mText; }
    [[nodiscard]] ImmutableString GetStringOr(ImmutableString inDefault) const noexcept
    {
        return mHasValue ? mText : std::move(inDefault);
    }

    /// The whole text as decimal integer, as number (not depending on the locale), as "true" or "false";
    /// invalid when it is anything else or out of range.
    [[nodiscard]] checked_value<std::int64_t> ToInteger() const noexcept;
    [[nodiscard]] checked_value<double> ToDouble() const noexcept;
    [[nodiscard]] checked_value<bool> ToBool() const noexcept;

    friend bool operator==(const StringValue&, const StringValue&) noexcept = default;

private:
    ImmutableString mText;
    bool mHasValue = false;
};

} // namespace ombrel::utility
