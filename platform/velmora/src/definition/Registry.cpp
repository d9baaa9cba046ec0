#include <velmora/definition/Registry.h>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

#include <velmora/definition/ScriptObjectDefinition.h>

#include "definition/RegistryAccess.h"

namespace velmora::definition {

namespace {

struct Registry
{
    std::shared_mutex mMutex;
    /// In the order of registration.
    std::vector<const ScriptObjectDefinitionBase*> mDefinitions;
};

Registry& GetRegistry()
{
    // Never destroyed: definitions are withdrawn, and objects ask for theirs, as late as at the program's
    // end.
    static Registry& registry = *new Registry;
    return registry;
}

template <typename Predicate>
const ScriptObjectDefinitionBase* FindIf(Predicate inPredicate)
{
    Registry& registry = GetRegistry();
    const std::shared_lock lock(registry.mMutex);
    const auto found = std::find_if(registry.mDefinitions.begin(), registry.mDefinitions.end(), inPredicate);
    return found != registry.mDefinitions.end() ? *found : nullptr;
}

} // namespace

void EnterIntoRegistry(const ScriptObjectDefinitionBase& inDefinition)
{
    Registry& registry = GetRegistry();
    const std::lock_guard lock(registry.mMutex);
    registry.mDefinitions.push_back(&inDefinition);
}

void TakeFromRegistry(const ScriptObjectDefinitionBase& inDefinition) noexcept
{
    Registry& registry = GetRegistry();
    const std::lock_guard lock(registry.mMutex);
    std::erase(registry.mDefinitions, &inDefinition);
}

std::vector<const ScriptObjectDefinitionBase*> GetDefinitions()
{
    std::vector<const ScriptObjectDefinitionBase*> definitions;
    {
        Registry& registry = GetRegistry();
        const std::shared_lock lock(registry.mMutex);
        definitions = registry.mDefinitions;
    }
    const auto name = [](const auto* inDefinition) -> const std::string& {
        return inDefinition->GetFullName();
    };
    std::ranges::stable_sort(definitions, {}, name);
    const auto repeated = std::ranges::unique(definitions, {}, name);
    definitions.erase(repeated.begin(), repeated.end());
    return definitions;
}

const ScriptObjectDefinitionBase* FindDefinition(std::string_view inFullName)
{
    return FindIf([=](const auto* inDefinition) { return inDefinition->GetFullName() == inFullName; });
}

const ScriptObjectDefinitionBase* FindDefinition(std::type_index inClass)
{
    return FindIf([=](const auto* inDefinition) { return inDefinition->GetClass() == inClass; });
}

} // namespace velmora::definition
