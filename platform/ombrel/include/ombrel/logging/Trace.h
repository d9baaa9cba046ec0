#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include <ombrel/Export.h>
#include <ombrel/string/StringTypes.h>

/// Trace lines for developers, switched on by category and level at run time.
///
/// A line has a category, such as "tessaro.dropouts", and a level: 0 for what should not happen, higher for
/// finer detail. It is written when the category's level is at least the line's level and the host has
/// installed a sink. Without a sink nothing is written anywhere. All calls take a lock, so none belongs on a
/// real-time thread. A loop that traces often keeps the answer of `TraceEnabled` and asks again when
/// `TraceChangeCount` has moved.
namespace ombrel::logging {

/// Level of a category of which nothing is traced. Every category starts with it.
inline constexpr int kTraceOff = -1;

/// Writes a line as it is, without adding a line end. [any thread]
OMBREL_EXPORT void Trace(int inLevel, std::string_view inCategory, std::string_view inText);
OMBREL_EXPORT void Trace(int inLevel, std::string_view inCategory, UTF8StringView inText);
OMBREL_EXPORT void Trace(int inLevel, std::string_view inCategory, UTF16StringView inText);

/// Whether a line of this level would be written now. [any thread]
[[nodiscard]] OMBREL_EXPORT bool TraceEnabled(int inLevel, std::string_view inCategory);

/// Counts the changes of levels and sink. A read of one atomic word: may be called anywhere. [any thread]
[[nodiscard]] OMBREL_EXPORT std::uint32_t TraceChangeCount() noexcept;

/// Sets the highest level that is written, for one category, and for all that have no level of their own.
/// [any thread]
OMBREL_EXPORT void SetTraceLevel(std::string_view inCategory, int inLevel);
OMBREL_EXPORT void SetDefaultTraceLevel(int inLevel);
/// Takes away every level that was set. [any thread]
OMBREL_EXPORT void ResetTraceLevels();

/// Receives level, category and UTF-8 text of each line.
using TraceSink = std::function<void(int inLevel, std::string_view inCategory, std::string_view inText)>;

/// Installs where the lines go; an empty function switches all tracing off. The sink is called on the tracing
/// threads, several at once; it may still be running for a moment after it was replaced. It may trace and
/// change levels itself. [any thread]
OMBREL_EXPORT void SetTraceSink(TraceSink inSink);

} // namespace ombrel::logging
