#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include <ombrel/Export.h>

namespace ombrel::utility {

/// One typed value of a `Dictionary`: nothing, a bool, an integer, a floating-point number or UTF-8 text.
class OMBREL_EXPORT DictionaryValue
{
public:
    enum class Type
    {
        kNone,
        kBool,
        kInteger,
        kDouble,
        kString
    };

    DictionaryValue() noexcept = default;
    DictionaryValue(std::string inValue) noexcept : mValue(std::move(inValue)) {}
    DictionaryValue(std::string_view inValue) : mValue(std::string(inValue)) {}
    DictionaryValue(const char* inValue) : mValue(std::string(inValue)) {}
    /// Integers are kept as 64 bits; an unsigned one above the signed range wraps.
    template <typename T>
    requires std::is_arithmetic_v<T> DictionaryValue(T inValue)
    noexcept : mValue(static_cast<Stored<T>>(inValue)) {}

    [[nodiscard]] Type GetType() const noexcept { return static_cast<Type>(mValue.index()); }

    /// The value as the named type, the default when it is of another. An integer is given as double, too.
    [[nodiscard]] bool GetBool(bool inDefault = false) const noexcept;
    [[nodiscard]] std::int64_t GetInteger(std::int64_t inDefault = 0) const noexcept;
    [[nodiscard]] double GetDouble(double inDefault = 0.0) const noexcept;
    /// The text; empty when it is no text. Lives as long as the value.
    [[nodiscard]] const std::string& GetString() const noexcept;

    /// Any type as text: "", "true" or "false", the number in its shortest exact form, the text itself.
    [[nodiscard]] std::string ToString() const;

    friend bool operator==(const DictionaryValue&, const DictionaryValue&) = default;

private:
    template <typename T>
    using Stored = std::conditional_t<std::is_same_v<T, bool>, bool,
                                      std::conditional_t<std::is_integral_v<T>, std::int64_t, double>>;

    std::variant<std::monostate, bool, std::int64_t, double, std::string> mValue;
};

/// Typed values under UTF-8 names, each name once: the additional data of an exception, for one. Iteration
/// goes in the order of the names. A plain value: copies are deep, one thread at a time.
class OMBREL_EXPORT Dictionary
{
public:
    using Container = std::map<std::string, DictionaryValue, std::less<>>;

    Dictionary() = default;
    Dictionary(std::initializer_list<Container::value_type> inValues) : mValues(inValues) {}

    /// Stores a value under the name, in place of the one that was there.
    void Set(std::string_view inName, DictionaryValue inValue);
    /// The value under the name, one of type `kNone` when there is none.
    [[nodiscard]] const DictionaryValue& Get(std::string_view inName) const noexcept;
    [[nodiscard]] bool Contains(std::string_view inName) const noexcept;
    /// Returns whether there was one.
    bool Remove(std::string_view inName);
    void Clear() noexcept { mValues.clear(); }
    /// Takes over all values of the other; these win over values under the same names.
    void Merge(Dictionary&& ioOther);

    [[nodiscard]] std::size_t GetSize() const noexcept { return mValues.size(); }
    [[nodiscard]] bool IsEmpty() const noexcept { return mValues.empty(); }
    [[nodiscard]] Container::const_iterator begin() const noexcept { return mValues.begin(); }
    [[nodiscard]] Container::const_iterator end() const noexcept { return mValues.end(); }

    friend bool operator==(const Dictionary&, const Dictionary&) = default;

private:
    Container mValues;
};

} // namespace ombrel::utility
