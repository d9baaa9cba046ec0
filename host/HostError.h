#pragma once

#include <stdexcept>
#include <string>

namespace host {

/// What ends a command. `main` prints it as one line on standard error and leaves with its exit status.
class HostError : public std::runtime_error
{
public:
    static constexpr int kWorkFailed = 1;
    static constexpr int kBadCommandLine = 2;

    /// `inSubject` is the file or option at fault, `inReason` says what is wrong and what to do about it.
    HostError(int inStatus, const std::string& inSubject, const std::string& inReason)
        : std::runtime_error(inSubject + ": " + inReason), mStatus(inStatus)
    {
    }

    int GetStatus() const { return mStatus; }

private:
    int mStatus;
};

/// A file that cannot be read or written as asked: exit status 1.
class FileError : public HostError
{
public:
    FileError(const std::string& inPath, const std::string& inReason)
        : HostError(kWorkFailed, inPath, inReason)
    {
    }
};

/// An option or argument that makes no sense: exit status 2.
class UsageError : public HostError
{
public:
    UsageError(const std::string& inOption, const std::string& inReason)
        : HostError(kBadCommandLine, inOption, inReason)
    {
    }
};

} // namespace host
