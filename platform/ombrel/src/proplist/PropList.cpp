#include <ombrel/proplist/PropList.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include <ombrel/string/Unicode.h>

#include "Property.h"

namespace ombrel::proplist {

namespace {

/// Converts between types of numbers where that loses nothing; a `double` may lose digits on the way to
/// `float`.
template <typename To, typename From>
bool ConvertNumber(From inFrom, To& outTo)
{
    if constexpr (std::is_integral_v<To> && std::is_integral_v<From>) {
        if (!std::in_range<To>(inFrom)) {
            return false;
        }
    } else if constexpr (std::is_integral_v<To>) {
        // The bounds are powers of two, exact in any floating-point type; written so that NaN fails.
        const From limit = std::ldexp(From(1), std::numeric_limits<To>::digits);
        const From low = std::is_signed_v<To> ? -limit : From(0);
        if (!(inFrom >= low && inFrom < limit) || std::trunc(inFrom) != inFrom) {
            return false;
        }
    } else if constexpr (std::is_integral_v<From>) {
        const auto converted = static_cast<To>(inFrom);
        From back = 0;
        if (!ConvertNumber(converted, back) || back != inFrom) {
            return false;
        }
    }
    outTo = static_cast<To>(inFrom);
    return true;
}

template <typename T>
constexpr bool kIsNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

} // namespace

PropList::PropList() = default;
PropList::PropList(const PropList& inOther) = default;
PropList::PropList(PropList&& ioOther) noexcept = default;
PropList::~PropList() = default;

PropList& PropList::operator=(PropList inOther) noexcept
{
    mProperties = std::move(inOther.mProperties);
    return *this;
}

const PropList::Property* PropList::Find(std::string_view inName) const
{
    const auto found = std::find_if(mProperties.begin(), mProperties.end(),
                                    [inName](const auto& inProperty) { return inProperty.mName == inName; });
    return found == mProperties.end() ? nullptr : &*found;
}

PropList::Property& PropList::FindOrAdd(std::string_view inName)
{
    if (const auto* found = Find(inName)) {
        return const_cast<Property&>(*found);
    }
    return mProperties.emplace_back(Property{std::string(inName), {}});
}

void PropList::SetValue(std::string_view inName, bool inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, std::int32_t inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, std::uint32_t inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, std::int64_t inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, std::uint64_t inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, float inValue)
{
    FindOrAdd(inName).mValue = inValue;
}
void PropList::SetValue(std::string_view inName, double inValue)
{
    FindOrAdd(inName).mValue = inValue;
}

void PropList::SetValue(std::string_view inName, std::string_view inValue)
{
    std::string copy(inValue); // the text may be that of this very property
    FindOrAdd(inName).mValue = std::move(copy);
}

void PropList::SetValue(std::string_view inName, UTF8StringView inValue)
{
    FindOrAdd(inName).mValue = string::UTF8ToStd8String(inValue);
}

void PropList::SetValue(std::string_view inName, UTF16StringView inValue)
{
    FindOrAdd(inName).mValue = string::UTF16ToStd8String(inValue);
}

template <typename T>
bool PropList::GetNumber(std::string_view inName, T& outValue) const
{
    const auto* property = Find(inName);
    return property != nullptr && std::visit(
                                      [&outValue](const auto& inStored) {
                                          using Stored = std::decay_t<decltype(inStored)>;
                                          if constexpr (kIsNumber<Stored>) {
                                              return ConvertNumber(inStored, outValue);
                                          } else {
                                              return false;
                                          }
                                      },
                                      property->mValue);
}

bool PropList::GetValue(std::string_view inName, std::int32_t& outValue) const
{
    return GetNumber(inName, outValue);
}
bool PropList::GetValue(std::string_view inName, std::uint32_t& outValue) const
{
    return GetNumber(inName, outValue);
}
bool PropList::GetValue(std::string_view inName, std::int64_t& outValue) const
{
    return GetNumber(inName, outValue);
}
bool PropList::GetValue(std::string_view inName, std::uint64_t& outValue) const
{
    return GetNumber(inName, outValue);
}
bool PropList::GetValue(std::string_view inName, float& outValue) const
{
    return GetNumber(inName, outValue);
}
bool PropList::GetValue(std::string_view inName, double& outValue) const
{
    return GetNumber(inName, outValue);
}

bool PropList::GetValue(std::string_view inName, bool& outValue) const
{
    const auto* property = Find(inName);
    const auto* stored = property ? std::get_if<bool>(&property->mValue) : nullptr;
    outValue = stored ? *stored : outValue;
    return stored != nullptr;
}

bool PropList::GetValue(std::string_view inName, std::string& outValue) const
{
    const auto* property = Find(inName);
    const auto* stored = property ? std::get_if<std::string>(&property->mValue) : nullptr;
    if (stored) {
        outValue = *stored;
    }
    return stored != nullptr;
}

bool PropList::GetValue(std::string_view inName, UTF8String& outValue) const
{
    std::string text;
    const bool found = GetValue(inName, text);
    if (found) {
        outValue = string::Std8ToUTF8String(text);
    }
    return found;
}

bool PropList::GetValue(std::string_view inName, UTF16String& outValue) const
{
    std::string text;
    const bool found = GetValue(inName, text);
    if (found) {
        outValue = string::Std8ToUTF16String(text);
    }
    return found;
}

PropList& PropList::NewSubList(std::string_view inName)
{
    return FindOrAdd(inName).mValue.emplace<SubList>().Get();
}

const PropList* PropList::GetSubList(std::string_view inName) const
{
    const auto* property = Find(inName);
    const auto* list = property ? std::get_if<SubList>(&property->mValue) : nullptr;
    return list ? &list->Get() : nullptr;
}

PropList* PropList::GetSubList(std::string_view inName)
{
    return const_cast<PropList*>(std::as_const(*this).GetSubList(inName));
}

PropertyType PropList::GetPropertyType(std::string_view inName) const
{
    const auto* property = Find(inName);
    return property ? static_cast<PropertyType>(property->mValue.index()) : PropertyType::kNone;
}

std::vector<std::string> PropList::GetPropertyNames() const
{
    std::vector<std::string> names;
    names.reserve(mProperties.size());
    for (const auto& property : mProperties) {
        names.push_back(property.mName);
    }
    return names;
}

bool PropList::IsEmpty() const
{
    return mProperties.empty();
}

void PropList::Clear()
{
    mProperties.clear();
}

void PropList::AppendPropList(const PropList& inOther)
{
    if (&inOther == this) {
        return; // every name has that value already
    }
    const PropList copy(inOther); // it may be a sub-list of this one
    for (const auto& property : copy.mProperties) {
        const auto* theirs = std::get_if<SubList>(&property.mValue);
        auto* ours = theirs ? GetSubList(property.mName) : nullptr;
        if (ours) {
            ours->AppendPropList(theirs->Get());
        } else {
            FindOrAdd(property.mName).mValue = property.mValue;
        }
    }
}

bool PropList::operator==(const PropList& inOther) const
{
    return mProperties == inOther.mProperties;
}

} // namespace ombrel::proplist
