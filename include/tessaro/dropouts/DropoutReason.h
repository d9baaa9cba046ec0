#pragma once

namespace tessaro::dropouts {

/// Why audio failed to be there in time. The numbers are known to scripts.
enum class DropoutReason : int
{
    kClockJitter = 0,                   ///< Too much jitter on the audio clock.
    kPrefetchRequestsNotDispatched = 1, ///< No capacity was left to take in all prefetch requests.
    kPrefetchTimeLimitExceeded = 2,     ///< Requested audio was not prefetched within the time limit.
    kAudioNotInCache = 3,               ///< Audio that should have been prefetched was not in the cache.
    kIOTimeLimitExceeded = 4,           ///< The audio thread took longer than its I/O cycle lasts.
    kIOBufferUnderrun = 5               ///< The audio hardware ran out of data.
};

/// Number of reasons; the values lie below it.
inline constexpr int kDropoutReasonCount = 6;

} // namespace tessaro::dropouts
