#pragma once

#include <concepts>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <velmora/ScriptValue.h>
#include <velmora/utils/CreateScriptObject.h>

namespace velmora {

/// Base of a script object that stands for an object of the program, mostly a `std::shared_ptr` to one: the
/// way back from the script's object to what it stands for.
template <typename T>
class ScriptCastInterface
{
public:
    /// Hands out what the script object stands for. False, and nothing handed out, if it stands for nothing
    /// at the moment; a function with such an argument gets a default `T`, mostly a null pointer.
    [[nodiscard]] virtual bool CastTo(T& outObject) const = 0;

protected:
    ~ScriptCastInterface() = default;
};

namespace utility {

/// Names the script class that stands for a `T` of the program. Specialised beside the script class with a
/// member `type`, which has `Initialize(const T&)` and derives from `ScriptCastInterface<T>`:
///
///     template <>
///     struct velmora::utility::ScriptingObjectOf<std::shared_ptr<WaveformData>>
///     {
///         using type = WaveformDataObject;
///     };
///
/// With it, `T` itself may be the type of a parameter, a property or a result.
template <typename T>
struct ScriptingObjectOf
{
};

/// A type that a script class stands for.
template <typename T>
concept HasScriptingObject = requires
{
    typename ScriptingObjectOf<T>::type;
};

/// Wraps an object of the program into a new script object. A null pointer is wrapped like any other value.
template <HasScriptingObject T>
[[nodiscard]] boost::intrusive_ptr<typename ScriptingObjectOf<T>::type>
TransformObjectIntoScriptingObject(const T& inObject)
{
    auto object = utils::CreateScriptObject<typename ScriptingObjectOf<T>::type>();
    object->Initialize(inObject);
    return object;
}

/// The way back: what a script's object stands for. False for an object that stands for no `T`.
template <typename T>
[[nodiscard]] bool TransformScriptingObjectIntoObject(const ScriptObjectBase& inScriptObject, T& outObject)
{
    const auto* const cast = dynamic_cast<const ScriptCastInterface<T>*>(&inScriptObject);
    return cast != nullptr && cast->CastTo(outObject);
}

} // namespace utility

} // namespace velmora
