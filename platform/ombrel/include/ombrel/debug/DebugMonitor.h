#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <ombrel/Export.h>
#include <ombrel/string/StringStream.h>

/// The host's debug monitor: a view that shows the state of whatever has registered with it, as text.
namespace ombrel::debug {

using DebugMonitorCallback = std::function<void(oUTF16StringStream& ioText)>;

/// Names one entry of a callback; never given out twice.
using DebugMonitorToken = std::uint64_t;

/// Enters a callback under an id. Several callbacks may stand under one id; the token tells them apart.
/// [any thread]
OMBREL_EXPORT DebugMonitorToken RegisterDebugMonitorCallback(std::string_view inId,
                                                             DebugMonitorCallback inCallback);

/// Takes out the callback that was entered with this token under the id; unknown ones are ignored. When it
/// returns, the callback is not running and will not run any more, unless it is the callback that calls.
/// [any thread]
OMBREL_EXPORT void UnregisterDebugMonitorCallback(std::string_view inId, DebugMonitorToken inToken);

/// Takes out the callback that was entered last under the id, whoever entered it: for ids that have a single
/// owner. [any thread]
OMBREL_EXPORT void UnregisterDebugMonitorCallback(std::string_view inId);

/// Ids that have a callback, sorted. [any thread]
[[nodiscard]] OMBREL_EXPORT std::vector<std::string> GetDebugMonitorIds();

/// Lets the callbacks under one id write to the text, in the order of their entry; returns whether there was
/// one. An exception of a callback ends its part of the text, is logged and goes no further. Callbacks run on
/// the calling thread, one at a time, under the monitor's lock: they must not wait for a thread that
/// registers. [any thread]
OMBREL_EXPORT bool RunDebugMonitor(std::string_view inId, oUTF16StringStream& ioText);

/// The same for all ids, each part headed by a line with its id and followed by an empty line. [any thread]
OMBREL_EXPORT void RunDebugMonitors(oUTF16StringStream& ioText);

} // namespace ombrel::debug
