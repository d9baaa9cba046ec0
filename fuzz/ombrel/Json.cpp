#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <ombrel/serialization/Json.h>

/// What is read writes a text that reads as the same value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    std::any value;
    if (ombrel::serialization::ReadJSON({reinterpret_cast<const char*>(inData), inSize}, value)) {
        const auto written = ombrel::serialization::WriteJSON(value);
        std::any again;
        if (!ombrel::serialization::ReadJSON(written, again) ||
            ombrel::serialization::WriteJSON(again) != written) {
            std::abort();
        }
    }
    return 0;
}
