#pragma once

namespace tessaro::dropouts {

inline constexpr int kTraceLevel = 6;
inline constexpr char kTraceCategory[] = "tessaro.dropouts";

/// Whether dropouts are traced. Asks anew only when levels or sink have changed since the last time.
bool IsTracing();

} // namespace tessaro::dropouts
