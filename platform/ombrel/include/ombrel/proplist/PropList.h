#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

/// Trees of named typed values, in which parameter records are kept and handed on.
namespace ombrel::proplist {

enum class PropertyType
{
    kNone, ///< no such property
    kBool,
    kInt32,
    kUInt32,
    kInt64,
    kUInt64,
    kFloat,
    kDouble,
    kString, ///< UTF-8
    kSubList
};

namespace details {

template <typename T>
using Integer64Of = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;

/// `long long` where `std::int64_t` is `long`, or the other way round
template <typename T>
concept OtherInteger64 = (std::same_as<T, long> || std::same_as<T, unsigned long> ||
                          std::same_as<T, long long> || std::same_as<T, unsigned long long>)&&sizeof(T) ==
                             8 &&
                         !std::same_as<T, Integer64Of<T>>;

} // namespace details

/// A list of properties, each a name with a value of one of the types above; a sub-list is a list again.
///
/// Names are unique within a list, case-sensitive, any UTF-8 text. The order is that in which names were
/// first set, and setting one anew keeps its place. A list is a value: copies are deep. Not for real-time
/// threads; one thread at a time.
class OMBREL_EXPORT PropList
{
public:
    PropList();
    PropList(const PropList& inOther);
    PropList(PropList&& ioOther) noexcept;
    PropList& operator=(PropList inOther) noexcept;
    ~PropList();

    /// Gives the name this value, whatever type it had before.
    void SetValue(std::string_view inName, bool inValue);
    void SetValue(std::string_view inName, std::int32_t inValue);
    void SetValue(std::string_view inName, std::uint32_t inValue);
    void SetValue(std::string_view inName, std::int64_t inValue);
    void SetValue(std::string_view inName, std::uint64_t inValue);
    void SetValue(std::string_view inName, float inValue);
    void SetValue(std::string_view inName, double inValue);
    void SetValue(std::string_view inName, std::string_view inValue);
    void SetValue(std::string_view inName, const char* inValue)
    {
        SetValue(inName, std::string_view(inValue));
    }
    /// Text of the other two encodings, which is kept as UTF-8
    void SetValue(std::string_view inName, UTF8StringView inValue);
    void SetValue(std::string_view inName, UTF16StringView inValue);
    void SetValue(std::string_view inName, const char16_t* inValue)
    {
        SetValue(inName, UTF16StringView(inValue));
    }
    /// Any other pointer, which would be taken for a `bool`
    void SetValue(std::string_view inName, const void* inValue) = delete;
    /// The 64-bit integers that are not called `std::int64_t` and `std::uint64_t` here
    template <details::OtherInteger64 T>
    void SetValue(std::string_view inName, T inValue)
    {
        SetValue(inName, static_cast<details::Integer64Of<T>>(inValue));
    }

    /// Reads a value. Returns false, and leaves `outValue` as it is, when there is no such name or its value
    /// cannot be had in this type: numbers convert to any type of number that holds them exactly (and
    /// `double` to the nearest `float`), everything else only to its own type.
    bool GetValue(std::string_view inName, bool& outValue) const;
    bool GetValue(std::string_view inName, std::int32_t& outValue) const;
    bool GetValue(std::string_view inName, std::uint32_t& outValue) const;
    bool GetValue(std::string_view inName, std::int64_t& outValue) const;
    bool GetValue(std::string_view inName, std::uint64_t& outValue) const;
    bool GetValue(std::string_view inName, float& outValue) const;
    bool GetValue(std::string_view inName, double& outValue) const;
    bool GetValue(std::string_view inName, std::string& outValue) const;
    bool GetValue(std::string_view inName, UTF8String& outValue) const;
    bool GetValue(std::string_view inName, UTF16String& outValue) const;
    template <details::OtherInteger64 T>
    bool GetValue(std::string_view inName, T& outValue) const
    {
        details::Integer64Of<T> value{};
        const bool found = GetValue(inName, value);
        outValue = found ? static_cast<T>(value) : outValue;
        return found;
    }

    /// Gives the name an empty sub-list as its value and returns it. The reference, as that of `GetSubList`,
    /// holds until the name gets another value or the list goes.
    PropList& NewSubList(std::string_view inName);

    /// The sub-list of that name, or null.
    PropList* GetSubList(std::string_view inName);
    const PropList* GetSubList(std::string_view inName) const;

    /// The type of a value, `kNone` for a name that is not there.
    PropertyType GetPropertyType(std::string_view inName) const;

    /// All names in order.
    std::vector<std::string> GetPropertyNames() const;

    bool IsEmpty() const;

    void Clear();

    /// Adds copies of all properties of another list. A name that both have takes the other's value; where
    /// both are sub-lists, the other's is appended in the same way. A list may be appended to itself.
    void AppendPropList(const PropList& inOther);

    /// The list as an XML element without a declaration, indented by two spaces a level:
    ///
    ///     <proplist>
    ///       <property name="gain" type="float">-6.5</property>
    ///       <proplist name="bands">
    ///       </proplist>
    ///     </proplist>
    ///
    /// Types are `bool`, `int32`, `uint32`, `int64`, `uint64`, `float`, `double` and `string`. Numbers are
    /// written so that they come back exactly, infinities and NaN as `inf`, `-inf` and `nan`. A name or
    /// string that XML cannot hold (control characters, bytes that are no UTF-8) is written in base64, marked
    /// by `encoding="base64"` on the element for a string and by the attribute `name64` in place of `name`
    /// for a name.
    std::string OutputAsXMLFragment() const;

    /// Takes the properties from such an element in place of its own. Returns false, and is empty, for a text
    /// of any other form, and for one of more than 64 levels.
    bool InputFromXMLFragment(std::string_view inText);

    /// Equal names in equal order with equal types and values; NaN differs from everything.
    bool operator==(const PropList& inOther) const;

private:
    struct Property;

    const Property* Find(std::string_view inName) const;
    Property& FindOrAdd(std::string_view inName);
    template <typename T>
    bool GetNumber(std::string_view inName, T& outValue) const;

    std::vector<Property> mProperties;
};

} // namespace ombrel::proplist
