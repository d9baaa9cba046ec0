#pragma once

#include <filesystem>
#include <string_view>

#include <ombrel/Export.h>

namespace ombrel::utility {

/// Text to a file in one call, for dumps and diagnostics. The bytes are written as they are, without line-end
/// conversion. They return whether all went well and never throw but for lack of memory.
class OMBREL_EXPORT FileUtils
{
public:
    FileUtils() = delete;

    /// Makes the file, or replaces its contents.
    static bool SimpleWriteStringToFile(const std::filesystem::path& inPath, std::string_view inText);
    /// Makes the file, or writes behind its contents.
    static bool SimpleAppendStringToFile(const std::filesystem::path& inPath, std::string_view inText);
};

} // namespace ombrel::utility
