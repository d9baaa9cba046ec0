#pragma once

#include <any>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <ombrel/Export.h>

/// Values without a fixed type, and their text form in JSON (RFC 8259).
///
/// A value is a `std::any` that holds nothing (null), `bool`, `std::int64_t`, `std::uint64_t`, `double`,
/// `std::string`, `Array` or `Object`. Values that were read hold just these; a value to be written may hold
/// any integer type, `float` and `const char*` as well. Readers take a value apart with `ValueAs`, so that a
/// value of another type than expected ends in `BadAnyCast`.
namespace ombrel::serialization {

/// A value is not of the type that was asked for. The text is "Bad any_cast".
class OMBREL_EXPORT BadAnyCast : public std::bad_any_cast
{
public:
    ~BadAnyCast() override;
    const char* what() const noexcept override;
};

using Array = std::vector<std::any>;

/// Names with values, in the order in which they were added.
using Object = std::vector<std::pair<std::string, std::any>>;

/// Whether a value is an object that has the name.
OMBREL_EXPORT bool ObjectHasProperty(const std::any& inObject, std::string_view inName);

/// The value of a name; nothing when the value is no object or has no such name.
OMBREL_EXPORT std::any GetVariantInObject(const std::any& inObject, std::string_view inName);

/// The value as a `T`: one that holds exactly a `T`, or, where `T` is a number other than `bool`, any number
/// that `T` holds without loss, as the text form does not tell 3 from 3.0. A `float` takes every finite
/// `double` in its range, rounded. Throws `BadAnyCast` for all others.
template <typename T>
T ValueAs(const std::any& inValue);

/// Gives a name a value, anew if it has one. A value that holds nothing becomes an object first. Throws
/// `BadAnyCast` when it holds anything else than an object.
OMBREL_EXPORT void AddToObject(std::any& ioObject, std::string_view inName, std::any inValue);

/// The text form, on one line for `inIndent` below 0, otherwise indented by so many spaces a level. Numbers
/// come back exactly; infinities and NaN, which JSON does not know, become null; bytes that are no UTF-8
/// become U+FFFD. Throws `ombrel_exception` for a value of a type not named above.
OMBREL_EXPORT std::string WriteJSON(const std::any& inValue, int inIndent = -1);

/// Reads a text. Whole numbers become `std::int64_t`, or `std::uint64_t` where they are too large for it, all
/// others `double`. Returns false, and leaves `outValue` empty, for a text that is not JSON from end to end
/// or nests deeper than 256 levels; of a name that stands twice in an object the last counts.
OMBREL_EXPORT bool ReadJSON(std::string_view inText, std::any& outValue);

namespace details {

[[noreturn]] OMBREL_EXPORT void ThrowBadAnyCast();

/// The number as a `T` if that is exact (to the nearest for a `float`).
template <typename T, typename Held>
std::optional<T> ConvertNumber(Held inNumber)
{
    if constexpr (std::is_integral_v<T> && std::is_integral_v<Held>) {
        return std::in_range<T>(inNumber) ? std::optional(static_cast<T>(inNumber)) : std::nullopt;
    } else if constexpr (std::is_integral_v<T>) {
        // 2^digits is the first number above the range, and exact in floating point.
        const auto end = std::ldexp(1.0, std::numeric_limits<T>::digits);
        const bool fits = inNumber >= (std::is_signed_v<T> ? -end : 0.0) && inNumber < end;
        return fits && std::trunc(inNumber) == inNumber ? std::optional(static_cast<T>(inNumber))
                                                        : std::nullopt;
    } else if constexpr (std::is_integral_v<Held>) {
        const auto number = static_cast<T>(inNumber);
        return ConvertNumber<Held>(number) == inNumber ? std::optional(number) : std::nullopt;
    } else {
        const bool fits = !(std::abs(inNumber) > std::numeric_limits<T>::max()) || std::isinf(inNumber);
        return fits ? std::optional(static_cast<T>(inNumber)) : std::nullopt;
    }
}

template <typename T, typename... Held>
std::optional<T> ConvertHeldNumber(const std::any& inValue)
{
    std::optional<T> result;
    const auto tryOne = [&result](const auto* inHeld) {
        if (inHeld != nullptr) {
            result = ConvertNumber<T>(*inHeld);
        }
    };
    (tryOne(std::any_cast<Held>(&inValue)), ...);
    return result;
}

} // namespace details

template <typename T>
T ValueAs(const std::any& inValue)
{
    if (const auto* value = std::any_cast<T>(&inValue)) {
        return *value;
    }
    if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) {
        const auto number = details::ConvertHeldNumber<T, std::int64_t, std::uint64_t, double, float, int,
                                                       unsigned, short, unsigned short, signed char,
                                                       unsigned char, long long, unsigned long long>(inValue);
        if (number) {
            return *number;
        }
    }
    details::ThrowBadAnyCast();
}

} // namespace ombrel::serialization
