#include "DropoutReasonTable.h"

#include <array>
#include <cstddef>

#include <tessaro/dropouts/DropoutReporter.h>

namespace tessaro::dropouts {

namespace {

constexpr std::array<DropoutReasonTexts, kDropoutReasonCount> kTexts{{
    {"ClockJitter", "CLOCK_JITTER", "Too much jitter on the audio clock.", "\tClock jitter:\t\t\t\t\t\t",
     "$$$/tessaro/dropouts/AudioDropoutAudioJitter=Audio and video clock out-of-sync"},
    {"PrefetchRequestsNotDispatched", "PREFETCH_REQUESTS_NOT_DISPATCHED",
     "Some prefetch requests have not been dispatched as we did not have enough capacity to accumulate all "
     "prefetch requests needed to render the audio processing chain.",
     "\tPrefetch requests not dispatched:\t\t", nullptr},
    {"PrefetchTimeLimitExceeded", "PREFETCH_TIME_LIMIT_EXCEEDED",
     "Requested audio data is not prefetched within the time limit.", "\tPrefetch time limit exceeded:\t\t",
     "$$$/tessaro/dropouts/AudioDropoutAudioPrefetchBehind=Audio disk I/O overloaded"},
    {"AudioNotInCache", "AUDIO_NOT_IN_CACHE",
     "The audio I/O thread needs to read prefetched audio data from the cache but the audio data is not "
     "found in the cache.",
     "\tAudio not in cache:\t\t\t\t", "$$$/tessaro/dropouts/AudioDropoutAudioNotFound=Audio not found"},
    {"IOTimeLimitExceeded", "IO_TIME_LIMIT_EXCEEDED",
     "The audio I/O thread exceeded its time limit, taking more time than available in the I/O cycle.",
     "\tI/O time limit exceeded:\t\t\t",
     "$$$/tessaro/dropouts/AudioDropoutAudioIOOverload=Audio hardware I/O overloaded"},
    {"IOBufferUnderrun", "IO_BUFFER_UNDERRUN", "The audio I/O ran into a buffer underrun situation.",
     "\tI/O buffer underrun:\t\t\t\t",
     "$$$/tessaro/dropouts/AudioDropoutAudioIODropout=Audio hardware I/O dropout detected"},
}};

} // namespace

const DropoutReasonTexts& GetTexts(DropoutReason inReason)
{
    const auto index = static_cast<unsigned>(inReason);
    if (index >= kTexts.size()) {
        throw ombrel::ombrel_exception("Unknown dropout reason", kResultDropoutFailure);
    }
    return kTexts[index];
}

} // namespace tessaro::dropouts
