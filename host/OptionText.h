#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A decimal number that takes the whole text and is finite.
std::optional<double> ReadNumber(std::string_view inText);

/// A number as people write it: "0.5", "20000".
std::string ShortenNumber(double inValue);

/// A decimal number that takes the whole text, is finite and lies in the range. Throws `UsageError` that
/// names `inOption`, the text and the range with its unit.
double ParseNumber(const std::string& inOption, std::string_view inText, double inLow, double inHigh,
                   const char* inUnit);

/// A whole number, with the same rules.
std::int64_t ParseInteger(const std::string& inOption, std::string_view inText, std::int64_t inLow,
                          std::int64_t inHigh, const char* inUnit);

/// The pieces between separators; an empty text is one empty piece.
std::vector<std::string_view> SplitText(std::string_view inText, char inSeparator);

/// Range of every gain option in dB; the floor stands for silence.
inline constexpr double kLowestGainDb = -400.0;
inline constexpr double kHighestGainDb = 60.0;

/// A gain in dB as a linear factor; `kLowestGainDb` gives exactly 0, 0 dB exactly 1.
float ParseGain(const std::string& inOption, std::string_view inText);

} // namespace host
