#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace host {

/// A linear level in dB, "-inf" for 0.
std::string FormatLevel(double inLinear);

/// A linear level in dB for programs: null for 0, as JSON has no infinity.
nlohmann::ordered_json LevelToJson(double inLinear);

/// "1:02:03.456"; hours only where there are any.
std::string FormatTime(double inSeconds);

/// Prints one JSON value and a line end on standard output.
void PrintJson(const nlohmann::ordered_json& inValue);

/// Prints a label and a value in the columns that all commands share.
void PrintRow(const std::string& inLabel, const std::string& inValue);

/// Flushes standard output, and throws when what was printed has not got through.
void FinishOutput();

} // namespace host
