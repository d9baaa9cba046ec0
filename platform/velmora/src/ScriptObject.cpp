#include <velmora/ScriptObject.h>

#include <algorithm>
#include <typeindex>

#include <velmora/ScriptException.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora {

namespace {

[[noreturn]] void ThrowUnknown(const std::string& inClass, const char* inKind, std::string_view inName)
{
    throw ScriptException(inClass + " has no " + inKind + " \"" + std::string(inName) + "\"");
}

constexpr const char* kAnonymous = "Anonymous object";

} // namespace

ScriptObjectBase::~ScriptObjectBase() = default;

ScriptObject::ScriptObject() = default;
ScriptObject::~ScriptObject() = default;

const definition::ScriptObjectDefinitionBase* ScriptObject::GetDefinition() const
{
    return definition::FindDefinition(std::type_index(typeid(*this)));
}

const definition::ScriptObjectDefinitionBase& ScriptObject::RequireDefinition() const
{
    const definition::ScriptObjectDefinitionBase* const definition = GetDefinition();
    if (definition == nullptr) {
        throw ScriptException("The object's class has no definition");
    }
    return *definition;
}

std::vector<std::string> ScriptObject::GetPropertyNames() const
{
    std::vector<std::string> names;
    if (const definition::ScriptObjectDefinitionBase* const definition = GetDefinition()) {
        for (const auto& property : definition->GetProperties()) {
            names.push_back(property.GetName());
        }
    }
    return names;
}

ScriptValue ScriptObject::GetProperty(std::string_view inName)
{
    const auto& definition = RequireDefinition();
    const auto* const property = definition.FindProperty(inName);
    if (property == nullptr) {
        ThrowUnknown(definition.GetFullName(), "property", inName);
    }
    return property->Get(*this);
}

void ScriptObject::SetProperty(std::string_view inName, const ScriptValue& inValue)
{
    const auto& definition = RequireDefinition();
    const auto* const property = definition.FindProperty(inName);
    if (property == nullptr) {
        ThrowUnknown(definition.GetFullName(), "property", inName);
    }
    property->Set(*this, inValue);
}

ScriptValue ScriptObject::CallMethod(std::string_view inName, std::span<const ScriptValue> inArguments)
{
    const auto& definition = RequireDefinition();
    const auto* const method = definition.FindMethod(inName);
    if (method == nullptr) {
        ThrowUnknown(definition.GetFullName(), "method", inName);
    }
    return method->Call(*this, inArguments);
}

AnonObject::AnonObject() = default;
AnonObject::AnonObject(Properties inProperties) noexcept : mProperties(std::move(inProperties)) {}
AnonObject::~AnonObject() = default;

const ScriptValue* AnonObject::FindProperty(std::string_view inName) const noexcept
{
    const auto found = std::ranges::find(mProperties, inName, &Properties::value_type::first);
    return found != mProperties.end() ? &found->second : nullptr;
}

const definition::ScriptObjectDefinitionBase* AnonObject::GetDefinition() const
{
    return nullptr;
}

std::vector<std::string> AnonObject::GetPropertyNames() const
{
    std::vector<std::string> names;
    names.reserve(mProperties.size());
    for (const auto& [name, value] : mProperties) {
        names.push_back(name);
    }
    return names;
}

ScriptValue AnonObject::GetProperty(std::string_view inName)
{
    const ScriptValue* const value = FindProperty(inName);
    if (value == nullptr) {
        ThrowUnknown(kAnonymous, "property", inName);
    }
    return *value;
}

void AnonObject::SetProperty(std::string_view inName, const ScriptValue& inValue)
{
    const auto found = std::ranges::find(mProperties, inName, &Properties::value_type::first);
    if (found != mProperties.end()) {
        found->second = inValue;
    } else {
        mProperties.emplace_back(inName, inValue);
    }
}

ScriptValue AnonObject::CallMethod(std::string_view inName, std::span<const ScriptValue> /*inArguments*/)
{
    ThrowUnknown(kAnonymous, "method", inName);
}

} // namespace velmora
