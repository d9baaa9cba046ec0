#include "Command.h"

#include <algorithm>

namespace host {

namespace {

std::vector<CommandEntry>& Entries()
{
    static std::vector<CommandEntry> entries;
    return entries;
}

} // namespace

CommandRegistrar::CommandRegistrar(CommandEntry inEntry)
{
    Entries().push_back(std::move(inEntry));
}

std::vector<CommandEntry> GetCommands()
{
    auto entries = Entries();
    std::sort(entries.begin(), entries.end(),
              [](const auto& inLeft, const auto& inRight) { return inLeft.mName < inRight.mName; });
    return entries;
}

} // namespace host
