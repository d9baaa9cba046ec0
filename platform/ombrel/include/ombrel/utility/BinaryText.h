#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <ombrel/Export.h>

/// Bytes as text that survives any channel for UTF-8: base64 of RFC 4648, section 4, with padding and without
/// line breaks.
namespace ombrel::utility {

/// Four characters for each three bytes, rounded up. A count of 0 gives an empty text; `inData` may then be
/// null. [any thread]
OMBREL_EXPORT std::string EncodeBinaryDataToUTF8String(const void* inData, std::size_t inByteCount);

/// The inverse. Returns false, and leaves `outData` empty, for any text that the encoder cannot have written:
/// other characters (white space too), a length that is no multiple of four, padding anywhere but at the end,
/// or set bits behind the last byte. [any thread]
OMBREL_EXPORT bool DecodeBinaryDataFromUTF8String(std::string_view inText,
                                                  std::vector<unsigned char>& outData);

} // namespace ombrel::utility
