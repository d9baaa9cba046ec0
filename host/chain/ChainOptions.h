#pragma once

#include <string>

#include "ChainDescription.h"

namespace CLI {
class App;
}

namespace host {

/// The options by which a command is given a chain: `--chain`, `--preset` and `--save-preset`.
class ChainOptions
{
public:
    void Define(CLI::App& ioApp);

    /// The chain as given, without effects when none was; saves the preset that was asked for.
    ChainDescription Load() const;

private:
    std::string mChain;
    std::string mPreset;
    std::string mSavePreset;
};

} // namespace host
