#include <ombrel/filesupport/ByteStream.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ombrel/filesupport/File.h>

#include "filesupport/FileFailure.h"

namespace ombrel::filesupport {

namespace {

/// The system takes no more at once.
constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;
constexpr mode_t kNewFileMode = 0666;

int FlagsOf(OpenMode inMode)
{
    switch (inMode) {
    case OpenMode::kRead:
        return O_RDONLY;
    case OpenMode::kWrite:
        return O_WRONLY | O_CREAT | O_TRUNC;
    case OpenMode::kAppend:
        return O_WRONLY | O_CREAT | O_APPEND;
    case OpenMode::kReadWrite:
        break;
    }
    return O_RDWR | O_CREAT;
}

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto Uninterrupted(const Call& inCall)
{
    auto result = inCall();
    while (result < 0 && errno == EINTR) {
        result = inCall();
    }
    return result;
}

} // namespace

OByteStream::~OByteStream() = default;

void OByteStream::ReadExactly(void* outData, std::size_t inCount)
{
    if (Read(outData, inCount) != inCount) {
        throw config::ombrel_exception("Can't read \"" + GetName() + "\": the file ends too early",
                                       config::kResultFileFailure);
    }
}

OPlatformByteStream::OPlatformByteStream(const File& inFile, OpenMode inMode)
    : mFile(std::make_unique<File>(inFile)), mMode(inMode)
{
    mDescriptor = Uninterrupted(
        [&] { return ::open(mFile->GetPath().c_str(), FlagsOf(inMode) | O_CLOEXEC, kNewFileMode); });
    if (mDescriptor < 0) {
        Fail("open");
    }
    struct stat status
    {
    };
    if (::fstat(mDescriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(mDescriptor);
        errno = EISDIR;
        Fail("open");
    }
    if (inMode == OpenMode::kAppend) {
        mPosition = ::lseek(mDescriptor, 0, SEEK_END);
        if (mPosition < 0) {
            mPosition = 0;
        }
    }
}

OPlatformByteStream::~OPlatformByteStream()
{
    if (mDescriptor >= 0) {
        ::close(mDescriptor);
    }
}

void OPlatformByteStream::Close()
{
    // Not repeated after a signal: the descriptor is gone either way.
    if (mDescriptor >= 0 && ::close(std::exchange(mDescriptor, -1)) != 0 && errno != EINTR) {
        Fail("close");
    }
}

std::size_t OPlatformByteStream::Read(void* outData, std::size_t inCount)
{
    auto* data = static_cast<unsigned char*>(outData);
    std::size_t done = 0;
    while (done < inCount) {
        const auto count = std::min(inCount - done, kLargestTransfer);
        const auto read = Uninterrupted([&] { return ::read(mDescriptor, data + done, count); });
        if (read < 0) {
            Fail("read");
        }
        if (read == 0) {
            break;
        }
        done += static_cast<std::size_t>(read);
        mPosition += read;
    }
    return done;
}

void OPlatformByteStream::Write(const void* inData, std::size_t inCount)
{
    const auto* data = static_cast<const unsigned char*>(inData);
    std::size_t done = 0;
    while (done < inCount) {
        const auto count = std::min(inCount - done, kLargestTransfer);
        const auto written = Uninterrupted([&] { return ::write(mDescriptor, data + done, count); });
        if (written < 0) {
            Fail("write");
        }
        done += static_cast<std::size_t>(written);
        mPosition += written;
    }
    if (mMode == OpenMode::kAppend && inCount > 0) {
        // The system has put it behind what others may have appended.
        const auto position = ::lseek(mDescriptor, 0, SEEK_CUR);
        mPosition = position >= 0 ? position : mPosition;
    }
}

std::int64_t OPlatformByteStream::Seek(std::int64_t inOffset, SeekOrigin inOrigin)
{
    const int origin = inOrigin == SeekOrigin::kBegin     ? SEEK_SET
                       : inOrigin == SeekOrigin::kCurrent ? SEEK_CUR
                                                          : SEEK_END;
    const auto position = ::lseek(mDescriptor, inOffset, origin);
    if (position < 0) {
        Fail("seek in");
    }
    return mPosition = position;
}

std::int64_t OPlatformByteStream::GetSize() const
{
    struct stat status
    {
    };
    if (::fstat(mDescriptor, &status) != 0) {
        Fail("get the size of");
    }
    return status.st_size;
}

void OPlatformByteStream::SetSize(std::int64_t inSize)
{
    if (Uninterrupted([&] { return ::ftruncate(mDescriptor, inSize); }) != 0) {
        Fail("change the size of");
    }
}

std::string OPlatformByteStream::GetName() const
{
    return mFile->GetPath().string();
}

void OPlatformByteStream::Fail(const char* inAction) const
{
    const std::error_code reason(errno, std::generic_category()); // before anything else sets it
    throw FileFailure(inAction, GetName(), reason);
}

} // namespace ombrel::filesupport
