#pragma once

#include <string_view>

#include <ombrel/proplist/PropList.h>

namespace ombrel::proplist {

/// Whether a text is UTF-8 of characters that XML 1.0 can hold: no control characters but tab, line feed and
/// carriage return, no surrogates, neither U+FFFE nor U+FFFF.
bool IsXmlText(std::string_view inText);

/// The name of a type in XML; empty for `kNone` and `kSubList`, which have none.
std::string_view NameOfType(PropertyType inType);

/// The inverse; `kNone` for any other name.
PropertyType TypeOfName(std::string_view inName);

} // namespace ombrel::proplist
