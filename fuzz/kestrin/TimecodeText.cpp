#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include <kestrin/Timecode.h>

/// The first bytes choose display and rate, the rest is read as timecode text in each encoding. What is read
/// must print and be read back to the same time.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    constexpr std::size_t headerSize = 1 + sizeof(std::int64_t);
    if (inSize < headerSize) {
        return 0;
    }
    using namespace kestrin;
    const TimeDisplay display(inData[0] < 16 ? 100 + inData[0] : inData[0]);
    std::int64_t ticks = 0;
    std::memcpy(&ticks, inData + 1, sizeof(ticks));
    const FrameRate rate(ticks);
    const std::string_view bytes(reinterpret_cast<const char*>(inData) + headerSize, inSize - headerSize);

    const auto time = TimecodeToTime(bytes, rate, display, 0);
    const std::u16string wide(bytes.begin(), bytes.end());
    if (TimecodeToTime(wide, rate, display, 0) != time) {
        std::abort();
    }
    // Beyond the range, times stop at its ends, which need not be where a frame begins.
    const auto isInRange = time < TickTime(std::numeric_limits<std::int64_t>::max()) &&
                           time > TickTime(std::numeric_limits<std::int64_t>::min());
    if (!time.IsNoTime() && isInRange &&
        TimecodeToTime(TimeToTimecode(time, rate, display, 0), rate, display, 0) != time) {
        std::abort();
    }
    TimeToTimecodeUTF8(TickTime(ticks), rate, display, 0);
    return 0;
}
