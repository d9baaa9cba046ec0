#pragma once

#include <string>
#include <string_view>

namespace ombrel::string {

/// UTF-8 text that the type system keeps apart from narrow text of unknown encoding.
using UTF8String = std::basic_string<unsigned char>;
using UTF8StringView = std::basic_string_view<unsigned char>;

using UTF16String = std::basic_string<char16_t>;
using UTF16StringView = std::basic_string_view<char16_t>;

} // namespace ombrel::string

namespace ombrel {

using string::UTF16String;
using string::UTF16StringView;
using string::UTF8String;
using string::UTF8StringView;

} // namespace ombrel
