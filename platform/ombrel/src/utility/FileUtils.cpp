#include <ombrel/utility/FileUtils.h>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/filesupport/ByteStream.h>
#include <ombrel/filesupport/File.h>

namespace ombrel::utility {

namespace {

bool Write(const std::filesystem::path& inPath, std::string_view inText, filesupport::OpenMode inMode)
{
    try {
        filesupport::OPlatformByteStream stream(filesupport::File(inPath), inMode);
        stream.Write(inText.data(), inText.size());
        stream.Close();
        return true;
    } catch (const config::ombrel_exception&) {
        return false;
    }
}

} // namespace

bool FileUtils::SimpleWriteStringToFile(const std::filesystem::path& inPath, std::string_view inText)
{
    return Write(inPath, inText, filesupport::OpenMode::kWrite);
}

bool FileUtils::SimpleAppendStringToFile(const std::filesystem::path& inPath, std::string_view inText)
{
    return Write(inPath, inText, filesupport::OpenMode::kAppend);
}

} // namespace ombrel::utility
