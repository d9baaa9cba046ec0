#include <velmora/definition/ScriptObjectDefinition.h>

#include <algorithm>

#include <velmora/ScriptException.h>

#include "definition/RegistryAccess.h"

namespace velmora::definition {

namespace {

bool IsLetter(char inCharacter)
{
    return (inCharacter >= 'a' && inCharacter <= 'z') || (inCharacter >= 'A' && inCharacter <= 'Z') ||
           inCharacter == '_';
}

bool IsIdentifier(std::string_view inName)
{
    return !inName.empty() && IsLetter(inName.front()) && std::ranges::all_of(inName, [](char inCharacter) {
        return IsLetter(inCharacter) || (inCharacter >= '0' && inCharacter <= '9');
    });
}

bool IsNamespace(std::string_view inName)
{
    const std::size_t dot = inName.find('.');
    return IsIdentifier(inName.substr(0, dot)) &&
           (dot == std::string_view::npos || IsNamespace(inName.substr(dot + 1)));
}

template <typename Items>
auto FindByName(const Items& inItems, std::string_view inName) noexcept -> decltype(inItems.data())
{
    const auto found =
        std::ranges::find_if(inItems, [=](const auto& inItem) { return inItem.GetName() == inName; });
    return found != inItems.end() ? &*found : nullptr;
}

} // namespace

ScriptObjectDefinitionBase::ScriptObjectDefinitionBase(const ClassType& inType, std::string inClassName,
                                                       std::string inDescription)
    : mType(&inType),
      mClassName(std::move(inClassName)),
      mDescription(std::move(inDescription)),
      mFullName(mClassName)
{
    if (!IsIdentifier(mClassName)) {
        throw ScriptException("\"" + mClassName + "\" is no name for a script class");
    }
}

ScriptObjectDefinitionBase::~ScriptObjectDefinitionBase()
{
    TakeFromRegistry(*this);
}

void ScriptObjectDefinitionBase::Register()
{
    EnterIntoRegistry(*this);
}

void ScriptObjectDefinitionBase::SetNamespace(std::string inNamespace, std::uint32_t inValue)
{
    if (!IsNamespace(inNamespace)) {
        throw ScriptException(mClassName + ": \"" + inNamespace + "\" is no name for a namespace");
    }
    mNamespace = std::move(inNamespace);
    mNamespaceValue = inValue;
    mFullName = mNamespace + "." + mClassName;
}

void ScriptObjectDefinitionBase::CheckNewItem(const ScriptItemDefinitionBase& inItem) const
{
    if (!IsIdentifier(inItem.GetName())) {
        throw ScriptException(mFullName + ": \"" + inItem.GetName() + "\" is no name for an item");
    }
    if (FindItem(inItem.GetName()) != nullptr) {
        throw ScriptException(inItem.GetFullName() + " is defined twice");
    }
}

void ScriptObjectDefinitionBase::Add(ScriptConstructorDefinition inConstructor)
{
    CheckNewItem(inConstructor);
    mConstructor.emplace(std::move(inConstructor));
}

void ScriptObjectDefinitionBase::Add(ScriptMethodDefinition inMethod)
{
    CheckNewItem(inMethod);
    mMethods.push_back(std::move(inMethod));
}

void ScriptObjectDefinitionBase::Add(ScriptPropertyDefinition inProperty)
{
    CheckNewItem(inProperty);
    mProperties.push_back(std::move(inProperty));
}

void ScriptObjectDefinitionBase::Add(ScriptConstantDefinition inConstant)
{
    CheckNewItem(inConstant);
    mConstants.push_back(std::move(inConstant));
}

const ScriptConstructorDefinition* ScriptObjectDefinitionBase::GetConstructor() const noexcept
{
    return mConstructor.has_value() ? &*mConstructor : nullptr;
}

const ScriptMethodDefinition* ScriptObjectDefinitionBase::FindMethod(std::string_view inName) const noexcept
{
    return FindByName(mMethods, inName);
}

const ScriptPropertyDefinition*
ScriptObjectDefinitionBase::FindProperty(std::string_view inName) const noexcept
{
    return FindByName(mProperties, inName);
}

const ScriptConstantDefinition*
ScriptObjectDefinitionBase::FindConstant(std::string_view inName) const noexcept
{
    return FindByName(mConstants, inName);
}

const ScriptItemDefinitionBase* ScriptObjectDefinitionBase::FindItem(std::string_view inName) const noexcept
{
    if (mConstructor.has_value() && mConstructor->GetName() == inName) {
        return &*mConstructor;
    }
    if (const auto* const method = FindMethod(inName)) {
        return method;
    }
    if (const auto* const property = FindProperty(inName)) {
        return property;
    }
    return FindConstant(inName);
}

} // namespace velmora::definition
