#pragma once

#include <concepts>
#include <span>
#include <string_view>
#include <utility>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <velmora/Export.h>
#include <velmora/ScriptObject.h>
#include <velmora/ScriptValue.h>

namespace velmora::utils {

/// Makes a script object of a class that the caller knows. Throws what the constructor throws.
template <std::derived_from<ScriptObjectBase> T, typename... Arguments>
[[nodiscard]] boost::intrusive_ptr<T> CreateScriptObject(Arguments&&... inArguments)
{
    return boost::intrusive_ptr<T>(new T(std::forward<Arguments>(inArguments)...));
}

/// Makes a script object by name, through the constructor of its definition: "tessaro.DropoutReporter".
/// Throws `ScriptException` if there is no such class or it has no constructor, `ParameterErrorException` for
/// arguments that the constructor does not take, and what the constructor throws. [control]
[[nodiscard]] VELMORA_EXPORT ScriptObjectPtr
CreateScriptObject(std::string_view inFullName, std::span<const ScriptValue> inArguments = {});

} // namespace velmora::utils
