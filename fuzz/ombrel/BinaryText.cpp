#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <ombrel/utility/BinaryText.h>
#include <ombrel/utility/Guid.h>

/// The encoder is the only text that the decoder takes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    const std::string_view text(reinterpret_cast<const char*>(inData), inSize);
    std::vector<unsigned char> bytes;
    if (ombrel::utility::DecodeBinaryDataFromUTF8String(text, bytes) &&
        ombrel::utility::EncodeBinaryDataToUTF8String(bytes.data(), bytes.size()) != text) {
        std::abort();
    }
    ombrel::utility::Guid guid;
    ombrel::utility::Guid::FromString(text, guid);
    return 0;
}
