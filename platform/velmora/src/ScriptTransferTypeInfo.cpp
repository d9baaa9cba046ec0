#include <velmora/ScriptTransferTypeInfo.h>

#include <cstddef>
#include <limits>

#include <velmora/ScriptObject.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora {

namespace {

template <typename T>
bool IsRangeOf(std::int64_t inMinimum, std::int64_t inMaximum)
{
    return inMinimum == std::numeric_limits<T>::min() && inMaximum == std::numeric_limits<T>::max();
}

std::string NameOfInteger(std::int64_t inMinimum, std::int64_t inMaximum)
{
    if (IsRangeOf<std::int32_t>(inMinimum, inMaximum) || IsRangeOf<std::int64_t>(inMinimum, inMaximum)) {
        return "integer";
    }
    return "integer from " + std::to_string(inMinimum) + " to " + std::to_string(inMaximum);
}

} // namespace

ScriptTransferTypeInfo::ScriptTransferTypeInfo(ScriptValueKind inKind) : mKind(inKind), mClass(typeid(void))
{
}

ScriptTransferTypeInfo::ScriptTransferTypeInfo(std::int64_t inMinimum, std::int64_t inMaximum)
    : mKind(ScriptValueKind::kInteger), mMinimum(inMinimum), mMaximum(inMaximum), mClass(typeid(void))
{
}

ScriptTransferTypeInfo::ScriptTransferTypeInfo(std::type_index inClass, ObjectTest inTest)
    : mKind(ScriptValueKind::kObject), mClass(inClass), mObjectTest(inTest)
{
}

ScriptTransferTypeInfo::ScriptTransferTypeInfo(const ScriptTransferTypeInfo* inElementType)
    : mKind(ScriptValueKind::kArray), mClass(typeid(void)), mElementType(inElementType)
{
}

const definition::ScriptObjectDefinitionBase* ScriptTransferTypeInfo::GetObjectDefinition() const
{
    return mKind == ScriptValueKind::kObject ? definition::FindDefinition(mClass) : nullptr;
}

std::string ScriptTransferTypeInfo::GetName() const
{
    switch (mKind) {
    case ScriptValueKind::kNothing:
        break;
    case ScriptValueKind::kBool:
        return "bool";
    case ScriptValueKind::kInteger:
        return NameOfInteger(mMinimum, mMaximum);
    case ScriptValueKind::kNumber:
        return "number";
    case ScriptValueKind::kString:
        return "string";
    case ScriptValueKind::kObject: {
        const definition::ScriptObjectDefinitionBase* const definition = GetObjectDefinition();
        return definition != nullptr ? definition->GetFullName() + " object" : "object";
    }
    case ScriptValueKind::kArray:
        return "array of " + mElementType->GetName();
    }
    return "nothing";
}

bool ScriptTransferTypeInfo::TakesAlone(const ScriptValue& inValue) const
{
    switch (mKind) {
    case ScriptValueKind::kInteger:
        return inValue.IsWhole() && inValue.GetInteger() >= mMinimum && inValue.GetInteger() <= mMaximum;
    case ScriptValueKind::kNumber:
        return inValue.GetKind() == ScriptValueKind::kNumber ||
               inValue.GetKind() == ScriptValueKind::kInteger;
    case ScriptValueKind::kObject:
        return inValue.GetKind() == ScriptValueKind::kObject && mObjectTest(*inValue.GetObject());
    default:
        return inValue.GetKind() == mKind;
    }
}

std::optional<ScriptTransferTypeInfo::Mismatch>
ScriptTransferTypeInfo::Check(const ScriptValue& inValue) const
{
    if (!TakesAlone(inValue)) {
        return Mismatch{{}, GetName(), inValue.Describe()};
    }
    if (mElementType != nullptr) {
        const ScriptArray& elements = inValue.GetArray();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            if (auto mismatch = mElementType->Check(elements[i])) {
                mismatch->mPath.insert(0, "[" + std::to_string(i) + "]");
                return mismatch;
            }
        }
    }
    return std::nullopt;
}

} // namespace velmora
