#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include <ombrel/Export.h>

namespace ombrel::filesupport {

/// What becomes of a file when nobody refers to it any more.
enum class StorageType
{
    kPermanent, ///< it stays
    kTemporary  ///< it is deleted with the last `File`, copies and open streams included
};

/// The name of a file, which may or may not exist. Copies refer to the same name. Reading its state is safe
/// from any thread; what other processes do in between is not guarded against.
class OMBREL_EXPORT File
{
public:
    explicit File(std::filesystem::path inPath, StorageType inStorageType = StorageType::kPermanent);

    [[nodiscard]] const std::filesystem::path& GetPath() const noexcept;
    [[nodiscard]] StorageType GetStorageType() const noexcept;

    /// True when something that can be opened as a file bears the name; a folder does not count.
    [[nodiscard]] bool Exists() const noexcept;

    /// Bytes in the file. Throws `ombrel_exception` when it does not exist.
    [[nodiscard]] std::uint64_t Size() const;

    /// Makes an empty file. One that exists is emptied when `inReplaceExisting` is true, and left alone
    /// otherwise. Returns whether the file is now a new, empty one. Throws `ombrel_exception` when it cannot
    /// be made.
    bool Create(bool inReplaceExisting);

    /// Removes the file from its folder. Returns whether there was one. Throws `ombrel_exception` when it
    /// stays.
    bool Delete();

private:
    struct State;

    std::shared_ptr<const State> mState;
};

} // namespace ombrel::filesupport
