#include "DropoutTrace.h"

#include <atomic>
#include <cstdint>

#include <ombrel/logging/Trace.h>

namespace tessaro::dropouts {

bool IsTracing()
{
    // Change count and answer in one word, so that threads never see one without the other.
    constexpr std::uint64_t kAsked = std::uint64_t{1} << 32;
    constexpr std::uint64_t kEnabled = std::uint64_t{1} << 33;
    static std::atomic<std::uint64_t> sCached{0};

    const std::uint64_t current = kAsked | ombrel::logging::TraceChangeCount();
    std::uint64_t cached = sCached.load(std::memory_order_relaxed);
    if ((cached & ~kEnabled) != current) {
        cached = current | (ombrel::logging::TraceEnabled(kTraceLevel, kTraceCategory) ? kEnabled : 0);
        sCached.store(cached, std::memory_order_relaxed);
    }
    return (cached & kEnabled) != 0;
}

} // namespace tessaro::dropouts
