#pragma once

#include <atomic>
#include <cstddef>

namespace brisken::details {

/// Index of the active target in Highway's dispatch tables. It is 0 until the library's own start-up has run;
/// the table entry at 0 makes the choice itself, so that a kernel may be called from any static constructor.
/// Hidden, so that reading it costs one load and no detour through the global offset table.
extern std::atomic<std::size_t> gTargetIndex __attribute__((visibility("hidden")));

inline std::size_t GetTargetIndex()
{
    return gTargetIndex.load(std::memory_order_relaxed);
}

} // namespace brisken::details

/// Calls the active target's instance of a kernel that HWY_EXPORT has listed: a load, and a jump through the
/// table.
#define BRISKEN_DISPATCH(NAME) (*HWY_DISPATCH_TABLE(NAME)[::brisken::details::GetTargetIndex()])
