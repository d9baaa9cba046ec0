#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <typeindex>

#include <velmora/Export.h>
#include <velmora/ScriptValue.h>

namespace velmora {

namespace definition {

class ScriptObjectDefinitionBase;

} // namespace definition

/// A declared type of what crosses between script and program: the type of a parameter, a property, a
/// constant or a result. It can be asked by an engine or a documentation tool, and it is what checks a value.
///
/// What a type takes:
///
/// - nothing: nothing (a method without a result).
/// - bool: a bool, and no number in its place.
/// - integer: an integer, or a number without a fraction, within the range.
/// - number: a number or an integer.
/// - string: a string.
/// - object: an object of the class or of a class derived from it; never nothing.
/// - array: an array, each of whose elements the element type takes.
///
/// No kind is turned into another quietly: the text "1" is no integer, 1 is no bool. Types are immutable and
/// live for ever, one for each C++ type (`PropertyType<T>::GetInfo`). [any thread]
class VELMORA_EXPORT ScriptTransferTypeInfo
{
public:
    /// Tells whether an object is of a class.
    using ObjectTest = bool (*)(const ScriptObjectBase& inObject);

    /// Why a value was refused. `mPath` names the place in nested arrays, as "[2][0]"; empty for the value
    /// itself.
    struct Mismatch
    {
        std::string mPath;
        std::string mExpected;
        std::string mGot;
    };

    /// Nothing, bool, number or string.
    explicit ScriptTransferTypeInfo(ScriptValueKind inKind);
    /// An integer from `inMinimum` to `inMaximum`.
    ScriptTransferTypeInfo(std::int64_t inMinimum, std::int64_t inMaximum);
    /// An object of a class. `inClass` is what the class's definition, if it has one, is found by.
    ScriptTransferTypeInfo(std::type_index inClass, ObjectTest inTest);
    /// An array of `inElementType`, which must live as long.
    explicit ScriptTransferTypeInfo(const ScriptTransferTypeInfo* inElementType);

    [[nodiscard]] ScriptValueKind GetKind() const noexcept { return mKind; }
    /// The range of integers; 0 and 0 for other kinds.
    [[nodiscard]] std::int64_t GetMinimum() const noexcept { return mMinimum; }
    [[nodiscard]] std::int64_t GetMaximum() const noexcept { return mMaximum; }
    /// Of an array; else null.
    [[nodiscard]] const ScriptTransferTypeInfo* GetElementType() const noexcept { return mElementType; }
    /// The definition of an object's class; null for other kinds, for anonymous objects and for classes whose
    /// definition isn't loaded.
    [[nodiscard]] const definition::ScriptObjectDefinitionBase* GetObjectDefinition() const;

    /// For people: "bool", "integer", "integer from 0 to 255", "number", "string", "object",
    /// "tessaro.WaveformData object", "array of number". The ranges of the usual signed types stay unsaid.
    [[nodiscard]] std::string GetName() const;

    /// Empty if the type takes the value.
    [[nodiscard]] std::optional<Mismatch> Check(const ScriptValue& inValue) const;

private:
    [[nodiscard]] bool TakesAlone(const ScriptValue& inValue) const;

    ScriptValueKind mKind;
    std::int64_t mMinimum = 0;
    std::int64_t mMaximum = 0;
    std::type_index mClass;
    ObjectTest mObjectTest = nullptr;
    const ScriptTransferTypeInfo* mElementType = nullptr;
};

} // namespace velmora
