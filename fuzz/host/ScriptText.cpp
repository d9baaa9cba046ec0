#include "script/ScriptText.h"

#include <cstdint>
#include <cstdlib>

#include <ombrel/string/Unicode.h>

/// Text that goes into the script engine comes out well-formed, and as it was where it was well-formed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    static duk_context* const heap = duk_create_heap_default();
    const std::string_view text(reinterpret_cast<const char*>(inData), inSize);
    host::PushText(heap, text);
    duk_size_t size = 0;
    const char* const pushed = duk_get_lstring(heap, -1, &size);
    const auto back = host::ToUtf8({pushed, size});
    const auto direct = host::ToUtf8(text); // text of any kind may come from the engine
    duk_pop(heap);
    if (!ombrel::string::IsWellFormed(back) || (ombrel::string::IsWellFormed(text) && back != text) ||
        direct.size() > text.size()) {
        std::abort();
    }
    return 0;
}
