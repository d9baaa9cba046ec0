#include "ContainerCheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "HostError.h"

namespace host {

namespace {

constexpr std::uint32_t kUnknownLength = 0xFFFFFFFFu;
constexpr std::size_t kLargestOggPage = 65307;
constexpr std::size_t kOggHeaderSize = 27;
constexpr std::uint8_t kOggLastPage = 0x04;

std::uint32_t ReadLength(const char* inBytes, bool inBigEndian)
{
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const auto byte = static_cast<std::uint8_t>(inBytes[inBigEndian ? i : 3 - i]);
        value = value << 8 | byte;
    }
    return value;
}

[[noreturn]] void FailTruncated(const std::filesystem::path& inPath)
{
    throw FileError(inPath.string(), "is truncated: it ends before its audio does; get a complete copy");
}

/// Walks the chunks behind the 12 bytes of a RIFF or FORM header to the one that holds the samples.
void CheckChunks(const std::filesystem::path& inPath, std::ifstream& ioFile, std::int64_t inFileSize,
                 std::string_view inSampleChunk, bool inBigEndian)
{
    std::int64_t position = 12;
    std::array<char, 8> header;
    while (position + static_cast<std::int64_t>(header.size()) <= inFileSize) {
        ioFile.seekg(position);
        if (!ioFile.read(header.data(), header.size())) {
            break;
        }
        const std::uint32_t length = ReadLength(header.data() + 4, inBigEndian);
        const std::int64_t end = position + 8 + static_cast<std::int64_t>(length);
        if (std::string_view(header.data(), 4) == inSampleChunk) {
            if (length != 0 && length != kUnknownLength && end > inFileSize) {
                FailTruncated(inPath);
            }
            return;
        }
        position = end + (length & 1); // chunks are padded to an even length
    }
    FailTruncated(inPath);
}

void CheckLastOggPage(const std::filesystem::path& inPath, std::ifstream& ioFile, std::int64_t inFileSize)
{
    std::vector<char> tail(static_cast<std::size_t>(std::min<std::int64_t>(inFileSize, kLargestOggPage)));
    ioFile.seekg(inFileSize - static_cast<std::int64_t>(tail.size()));
    ioFile.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const auto page = std::string_view(tail.data(), tail.size()).rfind("OggS");
    if (page == std::string_view::npos || page + kOggHeaderSize > tail.size()) {
        FailTruncated(inPath);
    }
    const auto* header = reinterpret_cast<const std::uint8_t*>(tail.data()) + page;
    std::size_t end = page + kOggHeaderSize + header[26];
    for (std::size_t i = 0; i < header[26] && page + kOggHeaderSize + i < tail.size(); ++i) {
        end += header[kOggHeaderSize + i];
    }
    if ((header[5] & kOggLastPage) == 0 || end > tail.size()) {
        FailTruncated(inPath);
    }
}

} // namespace

void CheckContainer(const std::filesystem::path& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    std::array<char, 12> header{};
    file.read(header.data(), header.size());
    file.clear();
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(inPath));
    const std::string_view container(header.data(), 4);
    const std::string_view form(header.data() + 8, 4);
    if ((container == "RIFF" || container == "RIFX") && form == "WAVE") {
        CheckChunks(inPath, file, size, "data", container == "RIFX");
    } else if (container == "FORM" && (form == "AIFF" || form == "AIFC")) {
        CheckChunks(inPath, file, size, "SSND", true);
    } else if (container == "OggS") {
        CheckLastOggPage(inPath, file, size);
    }
}

} // namespace host
