#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <ombrel/string/ReplaceInString.h>
#include <ombrel/string/Unicode.h>

namespace {

void Require(bool inCondition)
{
    if (!inCondition) {
        std::abort();
    }
}

} // namespace

/// Any bytes, as UTF-8 and as UTF-16, must give well-formed text that all the conversions agree on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    using namespace ombrel::string;
    const std::string_view narrow(reinterpret_cast<const char*>(inData), inSize);
    const auto wide = Std8ToUTF16String(narrow);
    const auto repaired = UTF16ToStd8String(wide);
    Require(IsWellFormed(repaired));
    Require(IsWellFormed(narrow) == (narrow == repaired));
    Require(Std8ToUTF16String(repaired) == wide);
    Require(UTF8ToStd8String(Std8ToUTF8String(narrow)) == repaired);

    std::u16string units(inSize / 2, u'\0');
    if (!units.empty()) {
        std::memcpy(units.data(), inData, units.size() * 2);
    }
    Require(IsWellFormed(UTF16ToStd8String(units)));
    Require(AsciiToUTF16(narrow).size() == inSize);
    Require(ReplaceInString(narrow, "@0", "").size() <= inSize);
    return 0;
}
