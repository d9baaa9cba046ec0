#pragma once

#include <string_view>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

namespace ombrel::config {

/// Name of the application as its user knows it, for messages. "Application" until the host has set it. [any
/// thread]
[[nodiscard]] OMBREL_EXPORT UTF8String GetApplicationName();

/// Sets the name (UTF-8). [any thread]
OMBREL_EXPORT void SetApplicationName(std::string_view inName);

} // namespace ombrel::config
