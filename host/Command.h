#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace host {

/// One word after `tessaro-host`. A command lives in one file of host/commands, which registers it with a
/// static `CommandRegistrar`; nothing else needs to know it.
class Command
{
public:
    virtual ~Command() = default;

    /// Declares options and arguments; what they are parsed into must live as long as the command.
    virtual void Define(CLI::App& ioApp) = 0;

    /// Does the work. Throws `HostError` when it cannot be done.
    virtual void Run() = 0;
};

struct CommandEntry
{
    std::string mName;
    std::string mDescription;
    std::function<std::unique_ptr<Command>()> mCreate;
};

/// All registered commands, by name.
std::vector<CommandEntry> GetCommands();

class CommandRegistrar
{
public:
    explicit CommandRegistrar(CommandEntry inEntry);
};

/// Registers the command class `T`.
template <typename T>
class RegisterCommand : public CommandRegistrar
{
public:
    RegisterCommand(const char* inName, const char* inDescription)
        : CommandRegistrar({inName, inDescription, [] { return std::make_unique<T>(); }})
    {
    }
};

} // namespace host
