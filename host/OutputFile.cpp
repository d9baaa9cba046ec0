#include "OutputFile.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "HostError.h"

namespace host {

namespace {

// The temporary file of the moment, for the signal handler: a plain buffer, as a handler may not touch a
// string.
char gTemporary[4096];

extern "C" void RemoveTemporaryAndDie(int inSignal)
{
    if (gTemporary[0] != '\0') {
        unlink(gTemporary);
    }
    std::signal(inSignal, SIG_DFL);
    std::raise(inSignal);
}

void RemoveOnSignal(const std::string& inPath)
{
    if (inPath.size() < sizeof gTemporary) {
        std::memcpy(gTemporary, inPath.c_str(), inPath.size() + 1);
        for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
            std::signal(signal, RemoveTemporaryAndDie);
        }
    }
}

/// The mode that a plain open would give the file, or that of the file which it replaces.
mode_t TargetMode(const std::filesystem::path& inTarget)
{
    struct stat existing;
    if (stat(inTarget.c_str(), &existing) == 0) {
        return existing.st_mode & 07777;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

OutputFile::OutputFile(const std::filesystem::path& inTarget) : mTarget(inTarget), mName(inTarget.string())
{
    std::error_code error;
    if (std::filesystem::is_symlink(mTarget, error)) {
        mTarget = std::filesystem::weakly_canonical(mTarget, error);
    }
    const auto status = std::filesystem::status(mTarget, error);
    if (std::filesystem::is_directory(status)) {
        throw FileError(mName, "is a directory; name a file in it");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw FileError(mName, "is not a regular file; name one that may be replaced");
    }
    const auto directory = mTarget.has_parent_path() ? mTarget.parent_path() : std::filesystem::path(".");
    if (!std::filesystem::is_directory(directory, error)) {
        throw FileError(mName, "its directory does not exist; make it first");
    }
    mTemporary = (directory / ".tessaro-XXXXXX").string();
    mDescriptor = mkostemp(mTemporary.data(), O_CLOEXEC);
    if (mDescriptor < 0) {
        throw FileError(mName, std::string("cannot be written: ") + std::strerror(errno));
    }
    RemoveOnSignal(mTemporary);
    fchmod(mDescriptor, TargetMode(mTarget));
}

OutputFile::~OutputFile()
{
    if (mDescriptor >= 0) {
        close(mDescriptor);
        unlink(mTemporary.c_str());
        gTemporary[0] = '\0';
    }
}

std::int64_t OutputFile::Write(const void* inData, std::int64_t inCount) noexcept
{
    auto bytes = static_cast<const char*>(inData);
    std::int64_t written = 0;
    while (written < inCount) {
        const auto result = write(mDescriptor, bytes + written, static_cast<std::size_t>(inCount - written));
        if (result < 0 && errno == EINTR) {
            continue;
        }
        if (result <= 0) {
            mError = mError != 0 ? mError : (result < 0 ? errno : ENOSPC);
            break;
        }
        written += result;
    }
    return written;
}

std::int64_t OutputFile::Read(void* outData, std::int64_t inCount) noexcept
{
    const auto result = read(mDescriptor, outData, static_cast<std::size_t>(inCount));
    return result < 0 ? 0 : result;
}

std::int64_t OutputFile::Seek(std::int64_t inOffset, int inWhence) noexcept
{
    const auto position = lseek(mDescriptor, inOffset, inWhence);
    if (position < 0 && mError == 0) {
        mError = errno;
    }
    return position;
}

std::int64_t OutputFile::GetSize() const noexcept
{
    struct stat status;
    return fstat(mDescriptor, &status) == 0 ? status.st_size : 0;
}

void OutputFile::ThrowIfFailed() const
{
    if (mError != 0) {
        Fail(mError);
    }
}

void OutputFile::Commit()
{
    ThrowIfFailed();
    if (fsync(mDescriptor) != 0 && errno != EINVAL && errno != ENOTSUP) {
        Fail(errno);
    }
    if (std::rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
        Fail(errno);
    }
    gTemporary[0] = '\0';
    close(mDescriptor);
    mDescriptor = -1;
}

void OutputFile::Fail(int inError) const
{
    std::string reason = std::string("cannot be written: ") + std::strerror(inError);
    if (inError == ENOSPC || inError == EFBIG || inError == EDQUOT) {
        reason += "; free some space or name a file elsewhere";
    }
    throw FileError(mName, reason);
}

} // namespace host
