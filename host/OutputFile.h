#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace host {

/// A file that appears under its name only once it is complete.
///
/// Bytes go to a temporary file beside the target; `Commit` renames it over the target. Without `Commit` the
/// destructor removes it, and so does an interrupt from the keyboard, so that a failed run leaves no half
/// file and an existing target stays as it was. A target that is a symbolic link keeps being one: what it
/// points to is replaced.
class OutputFile
{
public:
    /// Throws `FileError` naming `inTarget` when nothing can be written there.
    explicit OutputFile(const std::filesystem::path& inTarget);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// These three never throw, as they are called from a C library. The first failure is kept for
    /// `ThrowIfFailed`.
    std::int64_t Write(const void* inData, std::int64_t inCount) noexcept;
    std::int64_t Read(void* outData, std::int64_t inCount) noexcept;
    std::int64_t Seek(std::int64_t inOffset, int inWhence) noexcept;

    std::int64_t GetSize() const noexcept;

    /// Throws `FileError` with the system's reason when a write or seek has failed.
    void ThrowIfFailed() const;

    /// Brings the bytes to the disk and gives the file its name.
    void Commit();

private:
    [[noreturn]] void Fail(int inError) const;

    std::filesystem::path mTarget;
    std::string mName;
    std::string mTemporary;
    int mDescriptor = -1;
    int mError = 0;
};

} // namespace host
