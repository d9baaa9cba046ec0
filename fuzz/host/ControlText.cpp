#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "HostError.h"
#include "play/ControlFile.h"

/// Whatever is taken for a control file has events in the order of time that say all that they need.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    using Action = host::ControlEvent::Action;
    try {
        double seconds = 0.0;
        for (const auto& event :
             host::ParseControl("control", {reinterpret_cast<const char*>(inData), inSize})) {
            const bool hasPosition = event.mAction != Action::kMode;
            const bool hasText = event.mAction != Action::kRemove;
            if (event.mSeconds < seconds || hasPosition != (event.mPosition > 0) ||
                hasText == event.mText.empty()) {
                std::abort();
            }
            seconds = event.mSeconds;
        }
    } catch (const host::HostError&) {
    }
    return 0;
}
