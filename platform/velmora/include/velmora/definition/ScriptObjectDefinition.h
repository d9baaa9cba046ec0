#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/utility/Noncopyable.h>
#include <velmora/Export.h>
#include <velmora/ParameterType.h>
#include <velmora/PropertyType.h>
#include <velmora/ScriptObject.h>
#include <velmora/definition/ScriptItemDefinition.h>

namespace velmora::definition {

/// The definition of a script class, as an engine sees it: names, descriptions, types, and calls. It is found
/// in the registry (`Registry.h`) from the loading of the class's library to its unloading.
///
/// An engine is bound to a class by one walk over the definition:
///
///     for (const auto* definition : GetDefinitions()) {
///         for (const auto& method : definition->GetMethods()) { ... method.Call(object, arguments) ... }
///         for (const auto& property : definition->GetProperties()) { ... property.Get(object) ... }
///         for (const auto& constant : definition->GetConstants()) { ... constant.GetValue() ... }
///         if (const auto* constructor = definition->GetConstructor()) { ... }
///     }
///
/// Immutable once registered: any thread may read it.
class VELMORA_EXPORT ScriptObjectDefinitionBase : private ombrel::utility::noncopyable
{
public:
    /// Name of the class within its namespace: "WaveformData".
    [[nodiscard]] const std::string& GetClassName() const noexcept { return mClassName; }
    /// In English, for the documentation of the script interface.
    [[nodiscard]] const std::string& GetDescription() const noexcept { return mDescription; }
    /// "tessaro"; parts of a nested one are joined by dots; empty for a class in the global scope.
    [[nodiscard]] const std::string& GetNamespace() const noexcept { return mNamespace; }
    /// A number that the class has given with its namespace, 0 if none. It is carried to the engine's
    /// binding, to which its meaning belongs.
    [[nodiscard]] std::uint32_t GetNamespaceValue() const noexcept { return mNamespaceValue; }
    /// "tessaro.WaveformData".
    [[nodiscard]] const std::string& GetFullName() const noexcept { return mFullName; }
    /// The C++ class.
    [[nodiscard]] std::type_index GetClass() const noexcept { return mType->mClass; }
    /// Whether the object is of the class or one derived from it.
    [[nodiscard]] bool IsInstance(const ScriptObjectBase& inObject) const
    {
        return mType->mIsInstance(inObject);
    }

    /// The items, each kind in the order of definition; the constructor is null if scripts can't make objects
    /// of the class.
    [[nodiscard]] const ScriptConstructorDefinition* GetConstructor() const noexcept;
    [[nodiscard]] std::span<const ScriptMethodDefinition> GetMethods() const noexcept { return mMethods; }
    [[nodiscard]] std::span<const ScriptPropertyDefinition> GetProperties() const noexcept
    {
        return mProperties;
    }
    [[nodiscard]] std::span<const ScriptConstantDefinition> GetConstants() const noexcept
    {
        return mConstants;
    }

    /// An item by its name, which is unique among all kinds; null if there is none.
    [[nodiscard]] const ScriptMethodDefinition* FindMethod(std::string_view inName) const noexcept;
    [[nodiscard]] const ScriptPropertyDefinition* FindProperty(std::string_view inName) const noexcept;
    [[nodiscard]] const ScriptConstantDefinition* FindConstant(std::string_view inName) const noexcept;
    [[nodiscard]] const ScriptItemDefinitionBase* FindItem(std::string_view inName) const noexcept;

protected:
    struct ClassType
    {
        std::type_index mClass;
        bool (*mIsInstance)(const ScriptObjectBase&);
    };

    ScriptObjectDefinitionBase(const ClassType& inType, std::string inClassName, std::string inDescription);
    /// Withdraws from the registry.
    ~ScriptObjectDefinitionBase();

    void Register();

    void SetNamespace(std::string inNamespace, std::uint32_t inValue);
    void Add(ScriptConstructorDefinition inConstructor);
    void Add(ScriptMethodDefinition inMethod);
    void Add(ScriptPropertyDefinition inProperty);
    void Add(ScriptConstantDefinition inConstant);

private:
    void CheckNewItem(const ScriptItemDefinitionBase& inItem) const;

    const ClassType* mType;
    std::string mClassName;
    std::string mDescription;
    std::string mNamespace;
    std::uint32_t mNamespaceValue = 0;
    std::string mFullName;
    std::optional<ScriptConstructorDefinition> mConstructor;
    std::vector<ScriptMethodDefinition> mMethods;
    std::vector<ScriptPropertyDefinition> mProperties;
    std::vector<ScriptConstantDefinition> mConstants;
};

namespace details {

/// Turns into a `T` and nothing else. A function that is invocable with it takes exactly a `T`.
template <typename T>
struct Exactly
{
    template <typename U>
    requires std::same_as<U, T>
    operator U() const;
};

/// A function of a script class that is called with the declared parameters, no conversion between.
template <typename Function, typename Object, typename... Parameters>
concept TakesParameters = std::invocable<const Function&, Object&, Exactly<Parameters>...>;

} // namespace details

/// The definition of the script class `T`, made by the class itself.
///
/// The class derives from `ScriptObject` and has a static `DefineObject`, which may be private if it
/// befriends this template; one constant in its source file makes the definition and registers it at load:
///
///     class Fader : public velmora::ScriptObject
///     {
///     public:
///         static void DefineObject(velmora::definition::ScriptObjectDefinition<Fader>& ioDefinition);
///         ...
///     };
///
///     // Fader.cpp
///     namespace {
///     const velmora::definition::ScriptObjectDefinition<Fader> kDefinition("Fader", "A gain with a name.");
///     }
///
///     void Fader::DefineObject(velmora::definition::ScriptObjectDefinition<Fader>& ioDefinition)
///     {
///         ioDefinition.AddNamespace("mixer");
///         ioDefinition.AddConstructor("Create a new instance.");
///         ioDefinition.AddConstant("UNITY", "The gain that changes nothing.", 1.0);
///         ioDefinition.AddProperty("gain", "Linear gain.", &Fader::GetGain, &Fader::SetGain);
///         ioDefinition.AddMethod("fade", "Fade to a gain.", &Fader::Fade, ParameterType<double>("gain"),
///                                ParameterType<unsigned>("frames", "Length of the fade."));
///     }
///
/// Functions are given as pointers to members or as anything callable with a `T&` first. The types of
/// results, properties and constants follow from the functions; a parameter's declared type must be exactly
/// the type that the function takes, by value or const reference, which the compiler checks.
///
/// Names are identifiers (letters, digits, underscores, no digit first) and unique within the class; a fault
/// there throws `ScriptException`, which at load ends the program, so it cannot get past its first run. The
/// constructor of a definition that throws leaves nothing registered. Definitions need nothing but this
/// library and may be constructed in any order, by any thread.
template <typename T>
class ScriptObjectDefinition final : public ScriptObjectDefinitionBase
{
public:
    /// Runs `T::DefineObject` and registers. [any thread]
    ScriptObjectDefinition(std::string inClassName, std::string inDescription)
        : ScriptObjectDefinitionBase(GetClassType(), std::move(inClassName), std::move(inDescription))
    {
        static_assert(std::derived_from<T, ScriptObjectBase>, "a script class derives from ScriptObject");
        T::DefineObject(*this);
        Register();
    }

    /// Puts the class into a namespace; a nested one is written with dots. `inValue` is carried along for the
    /// engine (`GetNamespaceValue`).
    void AddNamespace(std::string inNamespace, std::uint32_t inValue = 0)
    {
        SetNamespace(std::move(inNamespace), inValue);
    }

    /// Lets scripts make objects by the default constructor.
    void AddConstructor(std::string inDescription)
    {
        AddConstructor(std::move(inDescription), [] { return utils::CreateScriptObject<T>(); });
    }

    /// Lets scripts make objects by a function that returns a `boost::intrusive_ptr<T>`, never null.
    template <typename Function, typename... Parameters>
    requires std::invocable<const Function&, details::Exactly<Parameters>...>
    void AddConstructor(std::string inDescription, Function inFunction,
                        const ParameterType<Parameters>&... inParameters)
    {
        Add(ScriptConstructorDefinition(
            *this, std::move(inDescription), PropertyType<boost::intrusive_ptr<T>>::GetInfo(),
            {inParameters.GetInfo()...},
            [inFunction](std::span<const ScriptValue> inArguments) -> ScriptObjectPtr {
                return Apply<Parameters...>(inArguments, inFunction);
            }));
    }

    /// A method, with or without a result, const or not.
    template <typename Function, typename... Parameters>
    requires details::TakesParameters<Function, T, Parameters...>
    void AddMethod(std::string inName, std::string inDescription, Function inFunction,
                   const ParameterType<Parameters>&... inParameters)
    {
        using Result =
            std::remove_cvref_t<std::invoke_result_t<const Function&, T&, details::Exactly<Parameters>...>>;
        Add(ScriptMethodDefinition(
            *this, std::move(inName), std::move(inDescription), PropertyType<Result>::GetInfo(),
            {inParameters.GetInfo()...},
            [inFunction](ScriptObjectBase& ioObject,
                         std::span<const ScriptValue> inArguments) -> ScriptValue {
                T& object = dynamic_cast<T&>(ioObject);
                const auto call = [&](auto&&... inValues) -> decltype(auto) {
                    return std::invoke(inFunction, object, std::forward<decltype(inValues)>(inValues)...);
                };
                if constexpr (std::is_void_v<Result>) {
                    Apply<Parameters...>(inArguments, call);
                    return {};
                } else {
                    return PropertyType<Result>::ToScript(Apply<Parameters...>(inArguments, call));
                }
            }));
    }

    /// A property that scripts can only read.
    template <typename Getter>
    requires std::invocable<const Getter&, T&>
    void AddProperty(std::string inName, std::string inDescription, Getter inGetter)
    {
        AddPropertyOf<std::remove_cvref_t<std::invoke_result_t<const Getter&, T&>>>(
            std::move(inName), std::move(inDescription), std::move(inGetter), {});
    }

    /// A property that scripts can read and write; the setter takes the type that the getter returns.
    template <typename Getter, typename Setter>
    requires std::invocable<const Getter&, T&>
    void AddProperty(std::string inName, std::string inDescription, Getter inGetter, Setter inSetter)
    {
        using Value = std::remove_cvref_t<std::invoke_result_t<const Getter&, T&>>;
        static_assert(details::TakesParameters<Setter, T, Value>, "getter and setter differ in their type");
        AddPropertyOf<Value>(std::move(inName), std::move(inDescription), std::move(inGetter),
                             [inSetter](ScriptObjectBase& ioObject, const ScriptValue& inValue) {
                                 std::invoke(inSetter, dynamic_cast<T&>(ioObject),
                                             PropertyType<Value>::FromScript(inValue));
                             });
    }

    /// A constant of any type that a property can have.
    template <typename Value>
    void AddConstant(std::string inName, std::string inDescription, Value inValue)
    {
        Add(ScriptConstantDefinition(*this, std::move(inName), std::move(inDescription),
                                     PropertyType<Value>::GetInfo(), PropertyType<Value>::ToScript(inValue)));
    }

private:
    static const ClassType& GetClassType()
    {
        static const ClassType type{typeid(T), [](const ScriptObjectBase& inObject) {
                                        return dynamic_cast<const T*>(&inObject) != nullptr;
                                    }};
        return type;
    }

    /// Calls with the arguments, which have been checked, converted to the parameters' types.
    template <typename... Parameters, typename Function>
    static decltype(auto) Apply(std::span<const ScriptValue> inArguments, const Function& inFunction)
    {
        return [&]<std::size_t... Index>(std::index_sequence<Index...>)->decltype(auto)
        {
            return std::invoke(inFunction, ParameterType<Parameters>::FromScript(inArguments[Index])...);
        }
        (std::index_sequence_for<Parameters...>());
    }

    template <typename Value, typename Getter>
    void AddPropertyOf(std::string inName, std::string inDescription, Getter inGetter,
                       ScriptPropertyDefinition::Setter inSetter)
    {
        Add(ScriptPropertyDefinition(
            *this, std::move(inName), std::move(inDescription), PropertyType<Value>::GetInfo(),
            [inGetter](ScriptObjectBase& ioObject) -> ScriptValue {
                return PropertyType<Value>::ToScript(std::invoke(inGetter, dynamic_cast<T&>(ioObject)));
            },
            std::move(inSetter)));
    }
};

} // namespace velmora::definition
