#include "OptionText.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "HostError.h"

namespace host {

namespace {

[[noreturn]] void FailRange(const std::string& inOption, std::string_view inText, const std::string& inLow,
                            const std::string& inHigh, const char* inUnit)
{
    throw UsageError(inOption, "'" + std::string(inText) + "' is not a number from " + inLow + " to " +
                                   inHigh + (*inUnit ? " " : "") + inUnit);
}

template <typename T>
bool ReadWhole(std::string_view inText, T& outValue)
{
    if (inText.size() > 1 && inText.front() == '+' && inText[1] != '-') {
        inText.remove_prefix(1);
    }
    const auto end = inText.data() + inText.size();
    const auto result = std::from_chars(inText.data(), end, outValue);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

std::optional<double> ReadNumber(std::string_view inText)
{
    double value = 0.0;
    return ReadWhole(inText, value) && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string ShortenNumber(double inValue)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", inValue);
    return text;
}

double ParseNumber(const std::string& inOption, std::string_view inText, double inLow, double inHigh,
                   const char* inUnit)
{
    const auto value = ReadNumber(inText);
    if (!value || *value < inLow || *value > inHigh) {
        FailRange(inOption, inText, ShortenNumber(inLow), ShortenNumber(inHigh), inUnit);
    }
    return *value;
}

std::int64_t ParseInteger(const std::string& inOption, std::string_view inText, std::int64_t inLow,
                          std::int64_t inHigh, const char* inUnit)
{
    std::int64_t value = 0;
    if (!ReadWhole(inText, value) || value < inLow || value > inHigh) {
        FailRange(inOption, inText, std::to_string(inLow), std::to_string(inHigh), inUnit);
    }
    return value;
}

std::vector<std::string_view> SplitText(std::string_view inText, char inSeparator)
{
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto position = inText.find(inSeparator);
        pieces.push_back(inText.substr(0, position));
        if (position == std::string_view::npos) {
            return pieces;
        }
        inText.remove_prefix(position + 1);
    }
}

float ParseGain(const std::string& inOption, std::string_view inText)
{
    const double decibels = ParseNumber(inOption, inText, kLowestGainDb, kHighestGainDb, "dB");
    return decibels == kLowestGainDb ? 0.0f : static_cast<float>(std::pow(10.0, decibels / 20.0));
}

} // namespace host
