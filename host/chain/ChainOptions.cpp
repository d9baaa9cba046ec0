#include "ChainOptions.h"

#include <CLI/CLI.hpp>

#include "ChainPreset.h"

namespace host {

void ChainOptions::Define(CLI::App& ioApp)
{
    auto* chain = ioApp
                      .add_option("--chain", mChain,
                                  "Effects in their order; 'tessaro-host effects' lists and explains them")
                      ->type_name("NAME:PARAMETER=VALUE,...;NAME:...");
    ioApp.add_option("--preset", mPreset, "Chain from a preset file")->type_name("FILE")->excludes(chain);
    ioApp.add_option("--save-preset", mSavePreset, "Write the chain to a preset file")->type_name("FILE");
}

ChainDescription ChainOptions::Load() const
{
    auto chain = mPreset.empty() ? ParseChain("--chain", mChain) : ReadPreset(mPreset);
    if (!mSavePreset.empty()) {
        WritePreset(mSavePreset, chain);
    }
    return chain;
}

} // namespace host
