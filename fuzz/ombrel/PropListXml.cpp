#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <ombrel/proplist/PropList.h>

/// What is read writes a text that reads as the same list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    ombrel::proplist::PropList list;
    if (list.InputFromXMLFragment({reinterpret_cast<const char*>(inData), inSize})) {
        const auto written = list.OutputAsXMLFragment();
        ombrel::proplist::PropList again;
        // The text is compared, as NaN differs from itself.
        if (!again.InputFromXMLFragment(written) || again.OutputAsXMLFragment() != written) {
            std::abort();
        }
    }
    return 0;
}
