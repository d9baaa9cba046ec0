#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <ombrel/Export.h>

namespace ombrel::filesupport {

class File;

/// How a stream opens its file.
enum class OpenMode
{
    kRead,     ///< for reading; the file must exist
    kWrite,    ///< for writing; an existing file is emptied, a missing one is made
    kAppend,   ///< for writing: each write goes to the end; a missing file is made
    kReadWrite ///< for both, from the start on; contents are kept, a missing file is made
};

enum class SeekOrigin
{
    kBegin,
    kCurrent,
    kEnd
};

/// A row of bytes with a position, to be read and written.
///
/// Every failure is an `ombrel_exception` with `kResultFileFailure` whose message names the file and the
/// reason. One thread at a time; never on a real-time thread.
class OMBREL_EXPORT OByteStream
{
public:
    OByteStream() = default;
    OByteStream(const OByteStream&) = delete;
    OByteStream& operator=(const OByteStream&) = delete;
    virtual ~OByteStream();

    /// Reads up to `inCount` bytes and returns how many came: fewer only at the end of the stream.
    virtual std::size_t Read(void* outData, std::size_t inCount) = 0;
    /// Writes all of the bytes, or throws.
    virtual void Write(const void* inData, std::size_t inCount) = 0;
    /// Moves the position and returns it. Behind the end is allowed: a later write fills the gap with zeros.
    /// A position before the start throws and leaves the old one.
    virtual std::int64_t Seek(std::int64_t inOffset, SeekOrigin inOrigin) = 0;
    [[nodiscard]] virtual std::int64_t GetPosition() const = 0;
    [[nodiscard]] virtual std::int64_t GetSize() const = 0;
    /// Cuts the stream or lengthens it with zeros. The position stays.
    virtual void SetSize(std::int64_t inSize) = 0;
    /// Hands everything written so far to the system.
    virtual void Flush() = 0;
    [[nodiscard]] virtual bool CanWrite() const noexcept = 0;
    /// What messages call the stream: the path of its file.
    [[nodiscard]] virtual std::string GetName() const = 0;

    /// Reads exactly `inCount` bytes; throws when the stream ends before.
    void ReadExactly(void* outData, std::size_t inCount);
};

/// A file of the operating system, unbuffered: each call is a call of the system. It also reads what has no
/// positions, such as a pipe. The file is closed with the object.
class OMBREL_EXPORT OPlatformByteStream : public OByteStream
{
public:
    OPlatformByteStream(const File& inFile, OpenMode inMode);
    ~OPlatformByteStream() override;

    std::size_t Read(void* outData, std::size_t inCount) override;
    void Write(const void* inData, std::size_t inCount) override;
    std::int64_t Seek(std::int64_t inOffset, SeekOrigin inOrigin) override;
    [[nodiscard]] std::int64_t GetPosition() const override { return mPosition; }
    [[nodiscard]] std::int64_t GetSize() const override;
    void SetSize(std::int64_t inSize) override;
    void Flush() override {}
    [[nodiscard]] bool CanWrite() const noexcept override { return mMode != OpenMode::kRead; }
    [[nodiscard]] std::string GetName() const override;

    /// Closes the file and throws when the system reports that something written was lost, which the
    /// destructor cannot. Afterwards every other call but `GetName` fails; closing again does nothing.
    void Close();

private:
    [[noreturn]] void Fail(const char* inAction) const;

    std::unique_ptr<File> mFile;
    OpenMode mMode;
    int mDescriptor = -1;
    std::int64_t mPosition = 0;
};

/// Gathers small reads and writes of another stream in a buffer. Requests of the buffer's size and more pass
/// through.
///
/// The destructor flushes but cannot report a failure: call `Flush` where it matters.
class OMBREL_EXPORT OBufferedByteStream : public OByteStream
{
public:
    static constexpr std::size_t kDefaultBufferBytes = 65536;

    /// The other stream is driven by this one alone from now on. `inBufferBytes` of 0 counts as 1.
    explicit OBufferedByteStream(std::unique_ptr<OByteStream> inStream,
                                 std::size_t inBufferBytes = kDefaultBufferBytes);
    /// Buffers an `OPlatformByteStream` of the file.
    OBufferedByteStream(const File& inFile, OpenMode inMode, std::size_t inBufferBytes = kDefaultBufferBytes);
    ~OBufferedByteStream() override;

    std::size_t Read(void* outData, std::size_t inCount) override;
    void Write(const void* inData, std::size_t inCount) override;
    std::int64_t Seek(std::int64_t inOffset, SeekOrigin inOrigin) override;
    [[nodiscard]] std::int64_t GetPosition() const override;
    [[nodiscard]] std::int64_t GetSize() const override;
    void SetSize(std::int64_t inSize) override;
    void Flush() override;
    [[nodiscard]] bool CanWrite() const noexcept override { return mStream->CanWrite(); }
    [[nodiscard]] std::string GetName() const override { return mStream->GetName(); }

private:
    void MoveStreamTo(std::int64_t inPosition);
    void WriteBack();
    void DropBuffer(std::int64_t inPosition) noexcept;

    std::unique_ptr<OByteStream> mStream;
    std::vector<unsigned char> mBuffer;
    std::int64_t mBufferPosition; ///< where the buffer's first byte lies in the stream
    std::size_t mFilled = 0;      ///< bytes of the buffer that hold the stream's contents
    std::size_t mCursor = 0;      ///< the position within the buffer, 0 to mFilled
    std::size_t mDirtyBegin = 0;  ///< bytes that were written and are not in the stream yet
    std::size_t mDirtyEnd = 0;
};

} // namespace ombrel::filesupport
