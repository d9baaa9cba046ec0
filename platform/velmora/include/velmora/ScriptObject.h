#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <ombrel/utility/RefCounted.h>
#include <velmora/Export.h>
#include <velmora/ScriptValue.h>

/// Script objects: what a program shows of itself to scripts, whatever the script engine.
///
/// Three sides meet here, and none knows the others:
///
/// - A class that is written for scripts derives from `ScriptObject` and defines its items once: names,
///   descriptions, types and the functions behind them (`definition/ScriptObjectDefinition.h`).
/// - The registry holds all definitions of the loaded libraries (`definition/Registry.h`).
/// - The binding of an engine walks the registry and makes a class of its language from each definition. It
///   converts its own values to and from `ScriptValue`, and knows nothing else.
///
/// What crosses is checked against the declared types before any code of the class runs
/// (`ScriptTransferTypeInfo.h`), and faults arrive as the exceptions of `ScriptException.h`.
///
/// A binding in outline:
///
///     to the engine: nothing, bools, numbers, strings and arrays become the engine's own values. An object
///         whose `GetDefinition` is null becomes a plain object of the language, property by property; any
///         other becomes an instance of the class that was made from its definition and holds the pointer.
///     from the engine: the same backwards. Numbers may all come as `kNumber`.
///     a call: `ScriptMethodDefinition::Call` with the held object and the converted arguments, inside a
///         try block that turns exceptions into the engine's errors.
///     collection: the engine's finaliser drops the pointer.
namespace velmora {

namespace definition {

class ScriptObjectDefinitionBase;
/// Here, so that the header of a script class can declare its `DefineObject` without the rest.
template <typename T>
class ScriptObjectDefinition;

} // namespace definition

/// Any object that a script can hold: what an engine sees of it.
///
/// Everything goes by name and by `ScriptValue`, so that an engine is bound once to this class and thereby to
/// all that will ever be defined. Objects are reference-counted; an engine's handle is one
/// `boost::intrusive_ptr`, given back when the engine collects it. Counting is safe on any thread; everything
/// else is for one thread at a time unless the class says otherwise, and nothing here is for a real-time
/// thread.
class VELMORA_EXPORT ScriptObjectBase : public virtual ombrel::utility::RefCountedInterface
{
public:
    /// The definition of the object's class; null for an anonymous object and for a class that has none.
    [[nodiscard]] virtual const definition::ScriptObjectDefinitionBase* GetDefinition() const = 0;

    /// Names of all properties, in the order of their definition, read-only ones included; empty for a class
    /// without a definition.
    [[nodiscard]] virtual std::vector<std::string> GetPropertyNames() const = 0;

    /// Throws `ScriptException` for an unknown name, and what the getter throws.
    [[nodiscard]] virtual ScriptValue GetProperty(std::string_view inName) = 0;

    /// Throws `ScriptException` for an unknown name or a property that is read-only,
    /// `ParameterErrorException` for a value that its type does not take, and what the setter throws.
    virtual void SetProperty(std::string_view inName, const ScriptValue& inValue) = 0;

    /// Returns nothing for a method without a result. Throws `ScriptException` for an unknown name,
    /// `ParameterErrorException` for arguments that the declared parameters do not take, and what the method
    /// throws.
    virtual ScriptValue CallMethod(std::string_view inName, std::span<const ScriptValue> inArguments) = 0;

protected:
    ~ScriptObjectBase() override;
};

/// Base of all classes that are written for scripts. What the members above do follows from the class's
/// definition (`definition/ScriptObjectDefinition.h`), so a class has nothing to override.
///
/// Made by `utils::CreateScriptObject`; the first pointer makes the count 1. Objects that hold each other
/// keep each other alive: no collector looks through them, so one direction of such a link is better a weak
/// pointer (`ombrel::utility::WeakPtr`).
///
/// The definition is found by the object's exact C++ class. An object of a class that derives from a defined
/// one, but is not defined itself, has none: it can be passed where the base class is wanted, and called
/// through the base's items, but not by name.
class VELMORA_EXPORT ScriptObject : public ScriptObjectBase,
                                    public ombrel::utility::RefCountedObjectWithWeakPtr
{
public:
    [[nodiscard]] const definition::ScriptObjectDefinitionBase* GetDefinition() const override;
    [[nodiscard]] std::vector<std::string> GetPropertyNames() const override;
    [[nodiscard]] ScriptValue GetProperty(std::string_view inName) override;
    void SetProperty(std::string_view inName, const ScriptValue& inValue) override;
    ScriptValue CallMethod(std::string_view inName, std::span<const ScriptValue> inArguments) override;

protected:
    ScriptObject();
    ~ScriptObject() override;

private:
    [[nodiscard]] const definition::ScriptObjectDefinitionBase& RequireDefinition() const;
};

/// An object without a class: names with values, as a record that a method returns. An engine hands it to
/// scripts as one of its own plain objects, by value or by reference as it likes.
///
/// Setting an unknown name adds the property behind the others. It has no methods.
class VELMORA_EXPORT AnonObject : public ScriptObjectBase, public ombrel::utility::RefCountedObject
{
public:
    using Properties = std::vector<std::pair<std::string, ScriptValue>>;

    AnonObject();
    /// Each name once; of several with the same name the first is found.
    explicit AnonObject(Properties inProperties) noexcept;
    ~AnonObject() override;

    /// All properties, in the order in which they were set.
    [[nodiscard]] const Properties& GetProperties() const noexcept { return mProperties; }
    /// Null for an unknown name. The pointer is good until the next property is set.
    [[nodiscard]] const ScriptValue* FindProperty(std::string_view inName) const noexcept;

    [[nodiscard]] const definition::ScriptObjectDefinitionBase* GetDefinition() const override;
    [[nodiscard]] std::vector<std::string> GetPropertyNames() const override;
    [[nodiscard]] ScriptValue GetProperty(std::string_view inName) override;
    void SetProperty(std::string_view inName, const ScriptValue& inValue) override;
    ScriptValue CallMethod(std::string_view inName, std::span<const ScriptValue> inArguments) override;

private:
    Properties mProperties;
};

} // namespace velmora
