#pragma once

namespace velmora::definition {

class ScriptObjectDefinitionBase;

void EnterIntoRegistry(const ScriptObjectDefinitionBase& inDefinition);
/// Does nothing for a definition that was never entered.
void TakeFromRegistry(const ScriptObjectDefinitionBase& inDefinition) noexcept;

} // namespace velmora::definition
