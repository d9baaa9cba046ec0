#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include <velmora/Export.h>
#include <velmora/ParameterType.h>
#include <velmora/ScriptTransferTypeInfo.h>
#include <velmora/ScriptValue.h>

/// The items of a script class: constructor, methods, properties, constants.
///
/// Items are made by a `ScriptObjectDefinition` and live in it; an engine reads and calls them. They are
/// immutable once the definition is registered, so any thread may read them. Calls run the object's code on
/// the calling thread.
///
/// Every call checks the values against the declared types first, so that no code of a class runs with a
/// value that it has not asked for, and throws
///
/// - `ScriptException` if the object isn't of the item's class,
/// - `ParameterErrorException` for a wrong number of arguments or a value of a wrong type,
/// - what the class's own code throws, unchanged.
namespace velmora::definition {

class ScriptObjectDefinitionBase;

/// What all items have in common.
class VELMORA_EXPORT ScriptItemDefinitionBase
{
public:
    virtual ~ScriptItemDefinitionBase();

    [[nodiscard]] const std::string& GetName() const noexcept { return mName; }
    /// In English, for the documentation of the script interface.
    [[nodiscard]] const std::string& GetDescription() const noexcept { return mDescription; }
    /// Type of the result of a method, of the value of a property or constant, of what a constructor makes.
    [[nodiscard]] const ScriptTransferTypeInfo& GetType() const noexcept { return *mType; }
    /// The definition that the item belongs to.
    [[nodiscard]] const ScriptObjectDefinitionBase& GetOwner() const noexcept { return *mOwner; }
    /// "tessaro.DropoutReporter.reset"; messages begin with it.
    [[nodiscard]] std::string GetFullName() const;

protected:
    ScriptItemDefinitionBase(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                             std::string inDescription, const ScriptTransferTypeInfo& inType);
    ScriptItemDefinitionBase(const ScriptItemDefinitionBase&) = default;
    ScriptItemDefinitionBase(ScriptItemDefinitionBase&&) noexcept = default;
    ScriptItemDefinitionBase& operator=(const ScriptItemDefinitionBase&) = default;
    ScriptItemDefinitionBase& operator=(ScriptItemDefinitionBase&&) noexcept = default;

    /// Throws `ScriptException` if the object is not of the owner's class.
    void CheckObject(const ScriptObjectBase& inObject) const;

private:
    const ScriptObjectDefinitionBase* mOwner;
    std::string mName;
    std::string mDescription;
    const ScriptTransferTypeInfo* mType;
};

/// An item that is called with arguments. All parameters must be given, in their order; there are no default
/// values and no overloads.
class VELMORA_EXPORT ScriptCallableDefinition : public ScriptItemDefinitionBase
{
public:
    [[nodiscard]] std::span<const ParameterInfo> GetParameters() const noexcept { return mParameters; }

protected:
    ScriptCallableDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                             std::string inDescription, const ScriptTransferTypeInfo& inType,
                             std::vector<ParameterInfo> inParameters);

    /// Throws `ParameterErrorException` unless there are as many arguments as parameters and each is taken.
    void CheckArguments(std::span<const ScriptValue> inArguments) const;

private:
    std::vector<ParameterInfo> mParameters;
};

/// Makes an object; its name is "constructor".
class VELMORA_EXPORT ScriptConstructorDefinition : public ScriptCallableDefinition
{
public:
    using Function = std::function<ScriptObjectPtr(std::span<const ScriptValue>)>;

    ScriptConstructorDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inDescription,
                                const ScriptTransferTypeInfo& inType, std::vector<ParameterInfo> inParameters,
                                Function inFunction);

    /// A new object, never null. [control]
    [[nodiscard]] ScriptObjectPtr Construct(std::span<const ScriptValue> inArguments) const;

private:
    Function mFunction;
};

/// Does something with an object.
class VELMORA_EXPORT ScriptMethodDefinition : public ScriptCallableDefinition
{
public:
    using Function = std::function<ScriptValue(ScriptObjectBase&, std::span<const ScriptValue>)>;

    ScriptMethodDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                           std::string inDescription, const ScriptTransferTypeInfo& inType,
                           std::vector<ParameterInfo> inParameters, Function inFunction);

    /// The result, as `GetType` tells; nothing in place of a null object. [control]
    ScriptValue Call(ScriptObjectBase& ioObject, std::span<const ScriptValue> inArguments) const;

private:
    Function mFunction;
};

/// A value of an object that is read and, mostly, written. Getter and setter are functions of the class, so
/// either may compute, and either may throw.
class VELMORA_EXPORT ScriptPropertyDefinition : public ScriptItemDefinitionBase
{
public:
    using Getter = std::function<ScriptValue(ScriptObjectBase&)>;
    using Setter = std::function<void(ScriptObjectBase&, const ScriptValue&)>;

    /// An empty setter makes the property read-only.
    ScriptPropertyDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                             std::string inDescription, const ScriptTransferTypeInfo& inType, Getter inGetter,
                             Setter inSetter);

    [[nodiscard]] bool IsReadOnly() const noexcept { return !mSetter; }
    [[nodiscard]] ScriptValue Get(ScriptObjectBase& ioObject) const;
    /// Throws `ScriptException`, too, if the property is read-only.
    void Set(ScriptObjectBase& ioObject, const ScriptValue& inValue) const;

private:
    Getter mGetter;
    Setter mSetter;
};

/// A value that belongs to the class and never changes. It is made when the class is defined; an engine may
/// copy it into its own class object.
class VELMORA_EXPORT ScriptConstantDefinition : public ScriptItemDefinitionBase
{
public:
    ScriptConstantDefinition(const ScriptObjectDefinitionBase& inOwner, std::string inName,
                             std::string inDescription, const ScriptTransferTypeInfo& inType,
                             ScriptValue inValue);

    [[nodiscard]] const ScriptValue& GetValue() const noexcept { return mValue; }

private:
    ScriptValue mValue;
};

} // namespace velmora::definition
