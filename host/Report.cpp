#include "Report.h"

#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "HostError.h"

namespace host {

std::string FormatLevel(double inLinear)
{
    if (inLinear == 0.0) {
        return "-inf";
    }
    char text[32];
    const double hundredths = std::round(2000.0 * std::log10(inLinear));
    std::snprintf(text, sizeof text, "%.2f", hundredths / 100.0 + 0.0); // no "-0.00"
    return text;
}

nlohmann::ordered_json LevelToJson(double inLinear)
{
    const double decibels = 20.0 * std::log10(inLinear);
    return std::isfinite(decibels) ? nlohmann::ordered_json(decibels) : nlohmann::ordered_json(nullptr);
}

std::string FormatTime(double inSeconds)
{
    const auto milliseconds = std::llround(inSeconds * 1000.0);
    const auto hours = milliseconds / 3600000;
    const auto minutes = milliseconds / 60000 % 60;
    const auto seconds = milliseconds / 1000 % 60;
    char text[64];
    if (hours > 0) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld.%03lld", hours, minutes, seconds,
                      milliseconds % 1000);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld.%03lld", minutes, seconds, milliseconds % 1000);
    }
    return text;
}

void PrintJson(const nlohmann::ordered_json& inValue)
{
    // A path need not be valid UTF-8; a replacement character is better than no report.
    std::puts(inValue.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

void PrintRow(const std::string& inLabel, const std::string& inValue)
{
    std::printf("%-10s %s\n", inLabel.c_str(), inValue.c_str());
}

void FinishOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        throw HostError(HostError::kWorkFailed, "standard output", "cannot be written");
    }
}

} // namespace host
