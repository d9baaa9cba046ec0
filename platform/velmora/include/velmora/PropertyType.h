#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <typeindex>
#include <utility>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/string/StringTypes.h>
#include <ombrel/string/Unicode.h>
#include <velmora/ScriptCastInterface.h>
#include <velmora/ScriptObject.h>
#include <velmora/ScriptTransferTypeInfo.h>
#include <velmora/ScriptValue.h>

namespace velmora {

/// How a C++ type crosses to scripts and back: what a property, a constant, a parameter or a result of type
/// `T` is to an engine.
///
/// - `void` (results): nothing.
/// - `bool`: bool.
/// - `int`, `unsigned` and all other integers: integer within the range of `T`, at most 64 signed bits.
/// - `float`, `double`: number; a `float` takes the nearest value, beyond its range infinity.
/// - `std::string`, `ombrel::UTF8String`, `ombrel::UTF16String`, not as parameter `const char*`: string.
/// - `boost::intrusive_ptr` of a script class, `AnonObject`, `ScriptObjectBase`: object of that class.
/// - a type with a `utility::ScriptingObjectOf`: object of a class that stands for it.
/// - `std::vector` of any of these, with any allocator: array.
///
/// Three static functions make up a specialisation; a library may add its own for a type of its own:
///
/// - `GetInfo()`: the declared type, the same object each time.
/// - `ToScript(const T&)`: never fails but for memory. A null pointer to an object or text becomes nothing.
/// - `FromScript(const ScriptValue&)`: for values that `GetInfo().Check` has passed; others give any `T`.
///   A type without it can be that of a result, a read-only property or a constant, not of a parameter.
///
/// An enumeration, for example, whose values scripts know as integers from 0 to 5:
///
///     template <>
///     struct velmora::PropertyType<Reason>
///     {
///         static const ScriptTransferTypeInfo& GetInfo()
///         {
///             static const ScriptTransferTypeInfo info(0, 5);
///             return info;
///         }
///         static ScriptValue ToScript(Reason inReason) { return static_cast<int>(inReason); }
///         static Reason FromScript(const ScriptValue& inValue) { return Reason(inValue.GetInteger()); }
///     };
template <typename T>
struct PropertyType;

/// Results only: neither `ToScript` nor `FromScript`.
template <>
struct PropertyType<void>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(ScriptValueKind::kNothing);
        return info;
    }
};

template <>
struct PropertyType<bool>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(ScriptValueKind::kBool);
        return info;
    }
    static ScriptValue ToScript(bool inValue) { return inValue; }
    static bool FromScript(const ScriptValue& inValue) { return inValue.GetBool(); }
};

/// An unsigned 64-bit result above the signed range becomes the nearest number.
template <std::integral T>
struct PropertyType<T>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        constexpr auto kHighest = std::numeric_limits<std::int64_t>::max();
        static const ScriptTransferTypeInfo info(
            std::int64_t{std::numeric_limits<T>::min()},
            std::in_range<std::int64_t>(std::numeric_limits<T>::max())
                ? static_cast<std::int64_t>(std::numeric_limits<T>::max())
                : kHighest);
        return info;
    }
    static ScriptValue ToScript(T inValue) { return inValue; }
    static T FromScript(const ScriptValue& inValue) { return static_cast<T>(inValue.GetInteger()); }
};

template <std::floating_point T>
struct PropertyType<T>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(ScriptValueKind::kNumber);
        return info;
    }
    static ScriptValue ToScript(T inValue) { return inValue; }
    static T FromScript(const ScriptValue& inValue) { return static_cast<T>(inValue.GetNumber()); }
};

namespace details {

struct StringPropertyType
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(ScriptValueKind::kString);
        return info;
    }
};

} // namespace details

template <>
struct PropertyType<std::string> : details::StringPropertyType
{
    static ScriptValue ToScript(std::string inValue) { return inValue; }
    static std::string FromScript(const ScriptValue& inValue) { return inValue.GetString(); }
};

template <>
struct PropertyType<const char*> : details::StringPropertyType
{
    static ScriptValue ToScript(const char* inValue) { return inValue; }
};

/// Ill-formed text is mended on both ways: each wrong part becomes U+FFFD. `std::string` passes as it is.
template <>
struct PropertyType<ombrel::UTF8String> : details::StringPropertyType
{
    static ScriptValue ToScript(ombrel::UTF8StringView inValue) { return inValue; }
    static ombrel::UTF8String FromScript(const ScriptValue& inValue)
    {
        return ombrel::string::Std8ToUTF8String(inValue.GetString());
    }
};

template <>
struct PropertyType<ombrel::UTF16String> : details::StringPropertyType
{
    static ScriptValue ToScript(ombrel::UTF16StringView inValue) { return inValue; }
    static ombrel::UTF16String FromScript(const ScriptValue& inValue)
    {
        return ombrel::string::Std8ToUTF16String(inValue.GetString());
    }
};

/// A parameter is never null: scripts that pass nothing are refused.
template <std::derived_from<ScriptObjectBase> T>
struct PropertyType<boost::intrusive_ptr<T>>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(typeid(T),
                                                 []([[maybe_unused]] const ScriptObjectBase& inObject) {
                                                     if constexpr (std::same_as<T, ScriptObjectBase>) {
                                                         return true;
                                                     } else {
                                                         return dynamic_cast<const T*>(&inObject) != nullptr;
                                                     }
                                                 });
        return info;
    }
    static ScriptValue ToScript(boost::intrusive_ptr<T> inValue) { return inValue; }
    static boost::intrusive_ptr<T> FromScript(const ScriptValue& inValue)
    {
        return boost::dynamic_pointer_cast<T>(inValue.GetObject());
    }
};

/// Every result is wrapped anew, so the same object of the program may reach scripts as several objects. A
/// parameter takes an object of any class that derives from `ScriptCastInterface<T>`.
template <utility::HasScriptingObject T>
struct PropertyType<T>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        using Object = typename utility::ScriptingObjectOf<T>::type;
        static const ScriptTransferTypeInfo info(typeid(Object), [](const ScriptObjectBase& inObject) {
            return dynamic_cast<const ScriptCastInterface<T>*>(&inObject) != nullptr;
        });
        return info;
    }
    static ScriptValue ToScript(const T& inValue)
    {
        return utility::TransformObjectIntoScriptingObject(inValue);
    }
    static T FromScript(const ScriptValue& inValue)
    {
        T object{};
        if (const ScriptObjectPtr scriptObject = inValue.GetObject()) {
            (void)utility::TransformScriptingObjectIntoObject(*scriptObject, object);
        }
        return object;
    }
};

/// Arrays are copied in both directions: a script that changes one changes its own.
template <typename T, typename Allocator>
struct PropertyType<std::vector<T, Allocator>>
{
    static const ScriptTransferTypeInfo& GetInfo()
    {
        static const ScriptTransferTypeInfo info(&PropertyType<T>::GetInfo());
        return info;
    }
    static ScriptValue ToScript(const std::vector<T, Allocator>& inValues)
    {
        ScriptArray elements;
        elements.reserve(inValues.size());
        for (const auto& value : inValues) {
            elements.push_back(PropertyType<T>::ToScript(value));
        }
        return elements;
    }
    static std::vector<T, Allocator> FromScript(const ScriptValue& inValue)
    {
        const ScriptArray& elements = inValue.GetArray();
        std::vector<T, Allocator> values;
        values.reserve(elements.size());
        for (const ScriptValue& element : elements) {
            values.push_back(PropertyType<T>::FromScript(element));
        }
        return values;
    }
};

} // namespace velmora
