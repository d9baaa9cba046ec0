#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Parameter.h"
#include "effects/Effect.h"

namespace host {

/// All that the host knows of an effect. One file of host/effects holds the effect and registers it with a
/// static `EffectRegistrar`; nothing else needs to know it.
struct EffectEntry
{
    std::string mName;
    std::string mDescription; ///< one line
    std::vector<ParameterSpec> mParameters;
    std::string mExample; ///< the effect as it stands in a chain
    std::function<std::unique_ptr<Effect>()> mCreate;
    std::vector<std::string> mNotes = {}; ///< what a user should know beyond the parameters
    bool mIsLinear = true;                ///< linear and constant in time, so that it has a response
};

/// All registered effects, by name. They stay where they are.
const std::vector<EffectEntry>& GetEffects();

/// Null for a name that nobody has registered.
const EffectEntry* FindEffect(const std::string& inName);

class EffectRegistrar
{
public:
    explicit EffectRegistrar(EffectEntry inEntry);
};

} // namespace host
