#include <ombrel/filesupport/ByteStream.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "filesupport/FileFailure.h"

namespace ombrel::filesupport {

OBufferedByteStream::OBufferedByteStream(std::unique_ptr<OByteStream> inStream, std::size_t inBufferBytes)
    : mStream(std::move(inStream)),
      mBuffer(std::max<std::size_t>(inBufferBytes, 1)),
      mBufferPosition(mStream->GetPosition())
{
}

OBufferedByteStream::OBufferedByteStream(const File& inFile, OpenMode inMode, std::size_t inBufferBytes)
    : OBufferedByteStream(std::make_unique<OPlatformByteStream>(inFile, inMode), inBufferBytes)
{
}

OBufferedByteStream::~OBufferedByteStream()
{
    try {
        Flush();
    } catch (...) {
        // Told to whoever called Flush before; nobody is left to hear it here.
    }
}

std::size_t OBufferedByteStream::Read(void* outData, std::size_t inCount)
{
    auto* data = static_cast<unsigned char*>(outData);
    std::size_t done = 0;
    while (done < inCount) {
        if (mCursor < mFilled) {
            const auto count = std::min(inCount - done, mFilled - mCursor);
            std::memcpy(data + done, mBuffer.data() + mCursor, count);
            mCursor += count;
            done += count;
            continue;
        }
        const auto position = GetPosition();
        WriteBack();
        MoveStreamTo(position);
        if (inCount - done >= mBuffer.size()) {
            DropBuffer(position);
            const auto read = mStream->Read(data + done, inCount - done);
            DropBuffer(position + static_cast<std::int64_t>(read));
            return done + read;
        }
        DropBuffer(position);
        mFilled = mStream->Read(mBuffer.data(), mBuffer.size());
        if (mFilled == 0) {
            break;
        }
    }
    return done;
}

void OBufferedByteStream::Write(const void* inData, std::size_t inCount)
{
    if (!CanWrite()) {
        mStream->Write(inData, inCount);
        return;
    }
    const auto* data = static_cast<const unsigned char*>(inData);
    std::size_t done = 0;
    while (done < inCount) {
        if (mCursor == mBuffer.size() || (inCount - done >= mBuffer.size())) {
            const auto position = GetPosition();
            WriteBack();
            DropBuffer(position);
        }
        if (inCount - done >= mBuffer.size()) {
            MoveStreamTo(mBufferPosition);
            mStream->Write(data + done, inCount - done);
            DropBuffer(mBufferPosition + static_cast<std::int64_t>(inCount - done));
            return;
        }
        const auto count = std::min(inCount - done, mBuffer.size() - mCursor);
        std::memcpy(mBuffer.data() + mCursor, data + done, count);
        const bool isClean = mDirtyBegin == mDirtyEnd;
        mDirtyBegin = isClean ? mCursor : std::min(mDirtyBegin, mCursor);
        mCursor += count;
        mDirtyEnd = isClean ? mCursor : std::max(mDirtyEnd, mCursor);
        mFilled = std::max(mFilled, mCursor);
        done += count;
    }
}

std::int64_t OBufferedByteStream::Seek(std::int64_t inOffset, SeekOrigin inOrigin)
{
    const auto from = inOrigin == SeekOrigin::kBegin     ? 0
                      : inOrigin == SeekOrigin::kCurrent ? GetPosition()
                                                         : GetSize();
    if (inOffset < -from || (from > 0 && inOffset > std::numeric_limits<std::int64_t>::max() - from)) {
        throw FileFailure("seek in", GetName(), std::make_error_code(std::errc::invalid_argument));
    }
    const auto target = from + inOffset;
    const auto inBuffer = target - mBufferPosition;
    if (inBuffer >= 0 && inBuffer <= static_cast<std::int64_t>(mFilled)) {
        mCursor = static_cast<std::size_t>(inBuffer);
    } else {
        WriteBack();
        MoveStreamTo(target);
        DropBuffer(target);
    }
    return target;
}

std::int64_t OBufferedByteStream::GetPosition() const
{
    return mBufferPosition + static_cast<std::int64_t>(mCursor);
}

std::int64_t OBufferedByteStream::GetSize() const
{
    const auto size = mStream->GetSize();
    return mDirtyBegin == mDirtyEnd ? size
                                    : std::max(size, mBufferPosition + static_cast<std::int64_t>(mDirtyEnd));
}

void OBufferedByteStream::SetSize(std::int64_t inSize)
{
    const auto position = GetPosition();
    WriteBack();
    DropBuffer(position);
    mStream->SetSize(inSize);
}

void OBufferedByteStream::Flush()
{
    WriteBack();
    mStream->Flush();
}

void OBufferedByteStream::MoveStreamTo(std::int64_t inPosition)
{
    // Asked first, so that a stream without positions can be read from end to end.
    if (mStream->GetPosition() != inPosition) {
        mStream->Seek(inPosition, SeekOrigin::kBegin);
    }
}

void OBufferedByteStream::WriteBack()
{
    if (mDirtyBegin == mDirtyEnd) {
        return;
    }
    // Forgotten before the attempt, so that a failure is reported once and not again by the destructor.
    const auto begin = std::exchange(mDirtyBegin, 0);
    const auto end = std::exchange(mDirtyEnd, 0);
    MoveStreamTo(mBufferPosition + static_cast<std::int64_t>(begin));
    mStream->Write(mBuffer.data() + begin, end - begin);
}

void OBufferedByteStream::DropBuffer(std::int64_t inPosition) noexcept
{
    mBufferPosition = inPosition;
    mFilled = 0;
    mCursor = 0;
}

} // namespace ombrel::filesupport
