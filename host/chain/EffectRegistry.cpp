#include "EffectRegistry.h"

#include <algorithm>

namespace host {

namespace {

std::vector<EffectEntry>& Entries()
{
    static std::vector<EffectEntry> entries;
    return entries;
}

} // namespace

EffectRegistrar::EffectRegistrar(EffectEntry inEntry)
{
    auto& entries = Entries();
    const auto place = std::upper_bound(
        entries.begin(), entries.end(), inEntry,
        [](const EffectEntry& inLeft, const EffectEntry& inRight) { return inLeft.mName < inRight.mName; });
    entries.insert(place, std::move(inEntry));
}

const std::vector<EffectEntry>& GetEffects()
{
    return Entries();
}

const EffectEntry* FindEffect(const std::string& inName)
{
    const auto& entries = GetEffects();
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const EffectEntry& inEntry) { return inEntry.mName == inName; });
    return found == entries.end() ? nullptr : &*found;
}

} // namespace host
