#include <velmora/utils/CreateScriptObject.h>

#include <string>

#include <velmora/ScriptException.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora::utils {

ScriptObjectPtr CreateScriptObject(std::string_view inFullName, std::span<const ScriptValue> inArguments)
{
    const definition::ScriptObjectDefinitionBase* const definition = definition::FindDefinition(inFullName);
    if (definition == nullptr) {
        throw ScriptException("There is no script class \"" + std::string(inFullName) + "\"");
    }
    const definition::ScriptConstructorDefinition* const constructor = definition->GetConstructor();
    if (constructor == nullptr) {
        throw ScriptException(definition->GetFullName() + " has no constructor");
    }
    return constructor->Construct(inArguments);
}

} // namespace velmora::utils
