#pragma once

#include <exception>
#include <string_view>

#include <ombrel/Export.h>

namespace ombrel::logging {

/// Category of the lines of `LogException`; their level is 0.
inline constexpr std::string_view kExceptionCategory = "ombrel.exception";

/// Traces one line about a caught exception: where it was caught, its message, its result code in hexadecimal
/// and, for an `ombrel_exception`, each item of its additional data as "name=value". Never throws. [any
/// thread]
///
///     catch (...) { LogException(std::current_exception(), "loading the model"); }
OMBREL_EXPORT void LogException(std::exception_ptr inException, std::string_view inWhere) noexcept;
OMBREL_EXPORT void LogException(const std::exception& inException, std::string_view inWhere) noexcept;

} // namespace ombrel::logging
