#pragma once

#include <filesystem>

#include "ChainDescription.h"

namespace host {

/// A chain in a JSON file: what was given, by the names of effects, parameters and fields.
///
///     { "tessaro chain": 1,
///       "effects": [ { "effect": "gain", "parameters": { "gain": -3 } } ] }
///
/// A parameter with several fields is an object of fields, one that was given several times a list.
/// Parameters and fields that are missing have their defaults.
ChainDescription ReadPreset(const std::filesystem::path& inPath);

/// Reads the text of a preset.
ChainDescription ParsePreset(const ChainSource& inSource, const std::string& inText);

std::string FormatPreset(const ChainDescription& inChain);

void WritePreset(const std::filesystem::path& inPath, const ChainDescription& inChain);

} // namespace host
