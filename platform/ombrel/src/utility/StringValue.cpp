#include <ombrel/utility/StringValue.h>

#include <charconv>
#include <system_error>

namespace ombrel::utility {

namespace {

template <typename T>
checked_value<T> Parse(std::string_view inText) noexcept
{
    T value{};
    const char* end = inText.data() + inText.size();
    const auto result = std::from_chars(inText.data(), end, value);
    return result.ec == std::errc() && result.ptr == end ? checked_value<T>(value) : checked_value<T>();
}

} // namespace

checked_value<std::int64_t> StringValue::ToInteger() const noexcept
{
    return Parse<std::int64_t>(mText);
}

checked_value<double> StringValue::ToDouble() const noexcept
{
    return Parse<double>(mText);
}

checked_value<bool> StringValue::ToBool() const noexcept
{
    const std::string_view text = mText;
    return text == "true"    ? checked_value<bool>(true)
           : text == "false" ? checked_value<bool>(false)
                             : checked_value<bool>();
}

} // namespace ombrel::utility
