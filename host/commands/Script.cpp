#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Command.h"
#include "HostError.h"
#include "Report.h"
#include "script/ScriptEngine.h"

namespace host {

namespace {

/// `script FILE`: runs JavaScript over the script classes of the library and the host.
class ScriptCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("FILE", mFile, "Script to run")->required();
        ioApp.add_option("ARGS", mArguments, "What the script finds in the array args");
    }

    void Run() override
    {
        if (std::filesystem::is_directory(mFile)) {
            throw FileError(mFile, "is a directory; name a script");
        }
        errno = 0;
        std::ifstream file(mFile, std::ios::binary);
        const std::string source{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (!file.is_open() || errno != 0) {
            throw FileError(mFile, std::string("cannot be read: ") + std::strerror(errno));
        }
        ScriptEngine(mArguments).Run(mFile, source);
        FinishOutput();
    }

private:
    std::string mFile;
    std::vector<std::string> mArguments;
};

const RegisterCommand<ScriptCommand> kScript("script", "Run a script over the library's script classes");

} // namespace

} // namespace host
