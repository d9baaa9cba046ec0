#include <algorithm>
#include <csignal>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include <CLI/CLI.hpp>

#include "Command.h"
#include "HostError.h"

namespace {

int Fail(int inStatus, std::string inText)
{
    std::replace(inText.begin(), inText.end(), '\n', ' ');
    std::fprintf(stderr, "tessaro-host: %s\n", inText.c_str());
    return inStatus;
}

int ParseAndRun(int inCount, char** inArguments)
{
    CLI::App app{"Reference host of the tessaro audio library", "tessaro-host"};
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", TESSARO_HOST_VERSION);

    std::vector<std::unique_ptr<host::Command>> commands;
    for (const auto& entry : host::GetCommands()) {
        commands.push_back(entry.mCreate());
        auto* command = commands.back().get();
        auto* parser = app.add_subcommand(entry.mName, entry.mDescription);
        command->Define(*parser);
        parser->final_callback([command] { command->Run(); });
    }
    try {
        app.parse(inCount, inArguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return app.exit(error); // --help and --version
        }
        return Fail(host::HostError::kBadCommandLine,
                    std::string(error.what()) +
                        "; tessaro-host --help lists the commands, COMMAND --help its options");
    }
    if (app.get_subcommands().empty()) {
        throw host::UsageError("COMMAND", "is missing; tessaro-host --help lists the commands");
    }
    return 0;
}

} // namespace

int main(int inCount, char** inArguments)
{
    // A pipe that is closed or a file that grows past its limit is an error of the write call, not a death.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return ParseAndRun(inCount, inArguments);
    } catch (const host::HostError& error) {
        return Fail(error.GetStatus(), error.what());
    } catch (const std::bad_alloc&) {
        return Fail(host::HostError::kWorkFailed, "out of memory; try a smaller --block or a shorter file");
    } catch (const std::exception& error) {
        return Fail(host::HostError::kWorkFailed, error.what());
    }
}
