#pragma once

#include <string>
#include <string_view>

#include <duktape.h>

namespace host {

/// The script engine keeps a character above U+FFFF as two surrogates of three bytes each; everything around
/// it speaks UTF-8.

/// From the engine; a surrogate without its partner becomes U+FFFD.
std::string ToUtf8(std::string_view inEngineText);

/// Pushes UTF-8 on the engine's stack; each byte that is no part of a character becomes U+FFFD. No local
/// object of it needs a destructor.
void PushText(duk_context* ioHeap, std::string_view inText);

} // namespace host
