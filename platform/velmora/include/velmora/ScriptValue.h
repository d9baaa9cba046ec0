#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/string/StringTypes.h>
#include <velmora/Export.h>

namespace velmora {

class ScriptObjectBase;
class ScriptValue;

/// What `boost::intrusive_ptr` calls; here, so that a pointer can be held where the class is not known.
VELMORA_EXPORT void intrusive_ptr_add_ref(const ScriptObjectBase* inObject) noexcept;
VELMORA_EXPORT void intrusive_ptr_release(const ScriptObjectBase* inObject) noexcept;

/// A shared reference to a script object.
using ScriptObjectPtr = boost::intrusive_ptr<ScriptObjectBase>;
using ScriptArray = std::vector<ScriptValue>;

/// The kinds of values that cross between a script engine and the program.
enum class ScriptValueKind
{
    kNothing, ///< undefined, null, None
    kBool,
    kInteger, ///< 64 bits, signed
    kNumber,  ///< double precision
    kString,  ///< UTF-8
    kObject,  ///< a reference, never null
    kArray    ///< any values, in order
};

/// One value on its way between a script engine and the program: the only currency of calls by name.
///
/// An engine turns its own values into these without knowing what the callee wants, and the callee's declared
/// types check and convert them (`ScriptTransferTypeInfo`). So an engine whose language has only one numeric
/// type passes everything as `kNumber`: integer parameters take numbers without a fraction.
///
///     ScriptValue(true)                        bool
///     ScriptValue(3), ScriptValue(3u)          integer
///     ScriptValue(3.0), ScriptValue(3.0F)      number
///     ScriptValue("abc")                       string
///     ScriptValue(ScriptArray{1, "two", 3.0})  array
///     ScriptValue()                            nothing
///
/// A plain value: copies of strings and arrays are deep, of objects share the object. One thread at a time.
/// Copying may throw `std::bad_alloc`; the getters never throw.
class VELMORA_EXPORT ScriptValue
{
public:
    /// Nothing.
    ScriptValue() noexcept = default;
    /// Exactly bool, so that no pointer slips in.
    template <std::same_as<bool> T>
    ScriptValue(T inValue) noexcept : mValue(inValue)
    {
    }
    /// An integer; an unsigned one above the range of 64 signed bits becomes the nearest number.
    template <std::integral T>
    requires(!std::same_as<T, bool>) ScriptValue(T inValue)
    noexcept
    {
        if (std::in_range<std::int64_t>(inValue)) {
            mValue = static_cast<std::int64_t>(inValue);
        } else {
            mValue = static_cast<double>(inValue);
        }
    }
    /// A number, NaN and infinity included.
    template <std::floating_point T>
    ScriptValue(T inValue) noexcept : mValue(static_cast<double>(inValue))
    {
    }
    ScriptValue(std::string inText) noexcept : mValue(std::move(inText)) {}
    ScriptValue(std::string_view inText) : mValue(std::string(inText)) {}
    /// Nothing, if the pointer is null.
    ScriptValue(const char* inText)
    {
        if (inText != nullptr) {
            mValue = std::string(inText);
        }
    }
    /// Other encodings become UTF-8; ill-formed parts become U+FFFD.
    ScriptValue(ombrel::UTF8StringView inText);
    ScriptValue(ombrel::UTF16StringView inText);
    /// Nothing, if the pointer is null.
    ScriptValue(ScriptObjectPtr inObject) noexcept;
    template <std::derived_from<ScriptObjectBase> T>
    ScriptValue(boost::intrusive_ptr<T> inObject) noexcept : ScriptValue(ScriptObjectPtr(std::move(inObject)))
    {
    }
    ScriptValue(ScriptArray inElements) noexcept : mValue(std::move(inElements)) {}

    ScriptValue(const ScriptValue&);
    ScriptValue(ScriptValue&&) noexcept;
    ScriptValue& operator=(const ScriptValue&);
    ScriptValue& operator=(ScriptValue&&) noexcept;
    ~ScriptValue();

    [[nodiscard]] ScriptValueKind GetKind() const noexcept
    {
        return static_cast<ScriptValueKind>(mValue.index());
    }
    [[nodiscard]] bool IsNothing() const noexcept { return GetKind() == ScriptValueKind::kNothing; }

    /// The value, if it is of the kind that the name tells; else false, 0, empty, null. The references live
    /// as long as the value stands unchanged.
    [[nodiscard]] bool GetBool() const noexcept;
    /// A number is taken, too, if it has no fraction and fits into 64 bits.
    [[nodiscard]] std::int64_t GetInteger() const noexcept;
    /// An integer is taken, too.
    [[nodiscard]] double GetNumber() const noexcept;
    [[nodiscard]] const std::string& GetString() const noexcept;
    [[nodiscard]] ScriptObjectPtr GetObject() const noexcept;
    [[nodiscard]] const ScriptArray& GetArray() const noexcept;

    /// True for integers, and for numbers that `GetInteger` takes.
    [[nodiscard]] bool IsWhole() const noexcept;

    /// Kind and value in a few words for a message to people: `string "abc"`, `number 1.5`, `array of 3`,
    /// `tessaro.WaveformData object`, `nothing`. Long strings are cut.
    [[nodiscard]] std::string Describe() const;

    /// Same kind and same value: the integer 1 is not the number 1, NaN equals nothing, objects are equal to
    /// themselves only.
    friend VELMORA_EXPORT bool operator==(const ScriptValue& inA, const ScriptValue& inB) noexcept;

private:
    // In the order of ScriptValueKind.
    std::variant<std::monostate, bool, std::int64_t, double, std::string, ScriptObjectPtr, ScriptArray>
        mValue;
};

} // namespace velmora
