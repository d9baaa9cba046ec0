#pragma once

#include <string>
#include <string_view>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

/// Conversions between the encodings of text.
///
/// Narrow `std::string` text ("Std8") is taken as UTF-8. Nothing is refused: each ill-formed part of the
/// input becomes one U+FFFD. In UTF-8 such a part is the longest beginning of a well-formed sequence, else
/// one byte (the practice of the Unicode standard, section 3.9); in UTF-16 it is a surrogate without its
/// partner. Hence well-formed text comes back unchanged from a round trip, and the output is always
/// well-formed. Zero characters pass like any other.
///
/// All functions throw only `std::bad_alloc`. [any thread]
namespace ombrel::string {

[[nodiscard]] OMBREL_EXPORT UTF16String Std8ToUTF16String(std::string_view inText);
[[nodiscard]] OMBREL_EXPORT UTF16String UTF8to16(UTF8StringView inText);

/// Each byte above 0x7F becomes U+FFFD.
[[nodiscard]] OMBREL_EXPORT UTF16String AsciiToUTF16(std::string_view inText);

[[nodiscard]] OMBREL_EXPORT UTF8String UTF16to8(UTF16StringView inText);
[[nodiscard]] OMBREL_EXPORT std::string UTF16ToStd8String(UTF16StringView inText);

/// The same bytes in the other type; ill-formed parts are replaced here, too.
[[nodiscard]] OMBREL_EXPORT UTF8String Std8ToUTF8String(std::string_view inText);
[[nodiscard]] OMBREL_EXPORT std::string UTF8ToStd8String(UTF8StringView inText);

/// True when the text needs no replacement.
[[nodiscard]] OMBREL_EXPORT bool IsWellFormed(std::string_view inText) noexcept;

} // namespace ombrel::string
