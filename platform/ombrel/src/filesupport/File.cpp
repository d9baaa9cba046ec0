#include <ombrel/filesupport/File.h>

#include <utility>

#include <ombrel/filesupport/ByteStream.h>

#include "filesupport/FileFailure.h"

namespace ombrel::filesupport {

struct File::State
{
    State(std::filesystem::path inPath, StorageType inStorageType)
        : mPath(std::move(inPath)), mStorageType(inStorageType)
    {
    }
    ~State()
    {
        if (mStorageType == StorageType::kTemporary) {
            std::error_code ignored;
            std::filesystem::remove(mPath, ignored);
        }
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    std::filesystem::path mPath;
    StorageType mStorageType;
};

File::File(std::filesystem::path inPath, StorageType inStorageType)
    : mState(std::make_shared<State>(std::move(inPath), inStorageType))
{
}

const std::filesystem::path& File::GetPath() const noexcept
{
    return mState->mPath;
}

StorageType File::GetStorageType() const noexcept
{
    return mState->mStorageType;
}

bool File::Exists() const noexcept
{
    std::error_code ignored;
    const auto status = std::filesystem::status(mState->mPath, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

std::uint64_t File::Size() const
{
    std::error_code failure;
    const auto size = std::filesystem::file_size(mState->mPath, failure);
    if (failure) {
        throw FileFailure("get the size of", mState->mPath.string(), failure);
    }
    return size;
}

bool File::Create(bool inReplaceExisting)
{
    if (!inReplaceExisting && Exists()) {
        return false;
    }
    OPlatformByteStream(*this, OpenMode::kWrite);
    return true;
}

bool File::Delete()
{
    std::error_code failure;
    const bool removed = std::filesystem::remove(mState->mPath, failure);
    if (failure) {
        throw FileFailure("delete", mState->mPath.string(), failure);
    }
    return removed;
}

} // namespace ombrel::filesupport
