#include <velmora/definition/ScriptItemDefinition.h>

#include <cstddef>
#include <utility>

#include <velmora/ScriptException.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora::definition {

namespace {

std::string CountOfArguments(std::size_t inCount)
{
    return std::to_string(inCount) + (inCount == 1 ? " argument" : " arguments");
}

/// "2 arguments (gain, frames)".
std::string DescribeParameters(std::span<const ParameterInfo> inParameters)
{
    std::string text = CountOfArguments(inParameters.size());
    const char* separator = " (";
    for (const ParameterInfo& parameter : inParameters) {
        text += separator + parameter.mName;
        separator = ", ";
    }
    return inParameters.empty() ? text : text + ")";
}

void CheckValue(const ScriptItemDefinitionBase& inItem, const std::string& inName,
                const ScriptTransferTypeInfo& inType, const ScriptValue& inValue)
{
    if (const auto mismatch = inType.Check(inValue)) {
        throw ParameterErrorException(inItem.GetFullName(), inName + mismatch->mPath, mismatch->mExpected,
                                      mismatch->mGot);
    }
}

} // namespace

ScriptItemDefinitionBase::ScriptItemDefinitionBase(const ScriptObjectDefinitionBase& inOwner,
                                                   std::string inName, std::string inDescription,
                                                   const ScriptTransferTypeInfo& inType)
    : mOwner(&inOwner), mName(std::move(inName)), mDescription(std::move(inDescription)), mType(&inType)
{
}

ScriptItemDefinitionBase::~ScriptItemDefinitionBase() = default;

std::string ScriptItemDefinitionBase::GetFullName() const
{
    return mOwner->GetFullName() + "." + mName;
}

void ScriptItemDefinitionBase::CheckObject(const ScriptObjectBase& inObject) const
{
    if (!mOwner->IsInstance(inObject)) {
        const definition::ScriptObjectDefinitionBase* const other = inObject.GetDefinition();
        throw ScriptException(GetFullName() + ": called on " +
                              (other != nullptr ? other->GetFullName() : "an object of another class"));
    }
}

ScriptCallableDefinition::ScriptCallableDefinition(const ScriptObjectDefinitionBase& inOwner,
                                                   std::string inName, std::string inDescription,
                                                   const ScriptTransferTypeInfo& inType,
                                                   std::vector<ParameterInfo> inParameters)
    : ScriptItemDefinitionBase(inOwner, std::move(inName), std::move(inDescription), inType),
      mParameters(std::move(inParameters))
{
}

void ScriptCallableDefinition::CheckArguments(std::span<const ScriptValue> inArguments) const
{
    if (inArguments.size() != mParameters.size()) {
        throw ParameterErrorException(GetFullName(), {}, DescribeParameters(mParameters),
                                      std::to_string(inArguments.size()));
    }
    for (std::size_t i = 0; i < mParameters.size(); ++i) {
        CheckValue(*this, mParameters[i].mName, *mParameters[i].mType, inArguments[i]);
    }
}

ScriptConstructorDefinition::ScriptConstructorDefinition(const ScriptObjectDefinitionBase& inOwner,
                                                         std::string inDescription,
                                                         const ScriptTransferTypeInfo& inType,
                                                         std::vector<ParameterInfo> inParameters,
                                                         Function inFunction)
    : ScriptCallableDefinition(inOwner, "constructor", std::move(inDescription), inType,
                               std::move(inParameters)),
      mFunction(std::move(inFunction))
{
}

ScriptObjectPtr ScriptConstructorDefinition::Construct(std::span<const ScriptValue> inArguments) const
{
    CheckArguments(inArguments);
    return mFunction(inArguments);
}

ScriptMethodDefinition::ScriptMethodDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                                               std::string inDescription,
                                               const ScriptTransferTypeInfo& inType,
                                               std::vector<ParameterInfo> inParameters, Function inFunction)
    : ScriptCallableDefinition(inOwner, std::move(inName), std::move(inDescription), inType,
                               std::move(inParameters)),
      mFunction(std::move(inFunction))
{
}

ScriptValue ScriptMethodDefinition::Call(ScriptObjectBase& ioObject,
                                         std::span<const ScriptValue> inArguments) const
{
    CheckObject(ioObject);
    CheckArguments(inArguments);
    return mFunction(ioObject, inArguments);
}

ScriptPropertyDefinition::ScriptPropertyDefinition(const ScriptObjectDefinitionBase& inOwner,
                                                   std::string inName, std::string inDescription,
                                                   const ScriptTransferTypeInfo& inType, Getter inGetter,
                                                   Setter inSetter)
    : ScriptItemDefinitionBase(inOwner, std::move(inName), std::move(inDescription), inType),
      mGetter(std::move(inGetter)),
      mSetter(std::move(inSetter))
{
}

ScriptValue ScriptPropertyDefinition::Get(ScriptObjectBase& ioObject) const
{
    CheckObject(ioObject);
    return mGetter(ioObject);
}

void ScriptPropertyDefinition::Set(ScriptObjectBase& ioObject, const ScriptValue& inValue) const
{
    CheckObject(ioObject);
    if (IsReadOnly()) {
        throw ScriptException(GetFullName() + " is read-only");
    }
    CheckValue(*this, "value", GetType(), inValue);
    mSetter(ioObject, inValue);
}

ScriptConstantDefinition::ScriptConstantDefinition(const ScriptObjectDefinitionBase& inOwner,
                                                   std::string inName, std::string inDescription,
                                                   const ScriptTransferTypeInfo& inType, ScriptValue inValue)
    : ScriptItemDefinitionBase(inOwner, std::move(inName), std::move(inDescription), inType),
      mValue(std::move(inValue))
{
}

} // namespace velmora::definition
