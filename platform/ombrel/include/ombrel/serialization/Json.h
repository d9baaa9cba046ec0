#pragma once

#include <any>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <ombrel/Export.h>

/// Values without a fixed type, and their text form in JSON (RFC 8259).
///
/// A value is a `std::any` that holds nothing (null), `bool`, `std::int64_t`, `std::uint64_t`, `double`,
/// `std::string`, `Array` or `Object`. Values that were read hold just these; a value to be written may hold
/// any integer type, `float` and `const char*` as well. Readers take a value apart with `std::any_cast`, so
/// that a value of another type than expected ends in `std::bad_any_cast`.
namespace ombrel::serialization {

using Array = std::vector<std::any>;

/// Names with values, in the order in which they were added.
using Object = std::vector<std::pair<std::string, std::any>>;

/// Whether a value is an object that has the name.
OMBREL_EXPORT bool ObjectHasProperty(const std::any& inObject, std::string_view inName);

/// The value of a name; nothing when the value is no object or has no such name.
OMBREL_EXPORT std::any GetVariantInObject(const std::any& inObject, std::string_view inName);

/// Gives a name a value, anew if it has one. A value that holds nothing becomes an object first. Throws
/// `std::bad_any_cast` when it holds anything else than an object.
OMBREL_EXPORT void AddToObject(std::any& ioObject, std::string_view inName, std::any inValue);

/// The text form, on one line for `inIndent` below 0, otherwise indented by so many spaces a level. Numbers
/// come back exactly; infinities and NaN, which JSON does not know, become null; bytes that are no UTF-8
/// become U+FFFD. Throws `ombrel_exception` for a value of a type not named above.
OMBREL_EXPORT std::string WriteJSON(const std::any& inValue, int inIndent = -1);

/// Reads a text. Whole numbers become `std::int64_t`, or `std::uint64_t` where they are too large for it, all
/// others `double`. Returns false, and leaves `outValue` empty, for a text that is not JSON from end to end
/// or nests deeper than 256 levels; of a name that stands twice in an object the last counts.
OMBREL_EXPORT bool ReadJSON(std::string_view inText, std::any& outValue);

} // namespace ombrel::serialization
