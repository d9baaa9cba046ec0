#pragma once

#include <cstddef>
#include <limits>

namespace tessaro {

/// How the one block of an audio buffer is divided: the table of row pointers, then the rows at a fixed
/// stride.
///
/// The stride follows the capacity, not the size that was asked for last, so that rows stay apart however the
/// buffer is shrunk and grown within its block.
class BlockLayout
{
public:
    /// Rows start at multiples of `inAlignment` floats; below 1 it counts as 1, none.
    BlockLayout(std::size_t inChannels, int inAlignment);

    /// Bytes of a block with rows of `inSize` samples; the largest value, which no allocator grants, if that
    /// many cannot be counted.
    [[nodiscard]] std::size_t GetBytes(unsigned inSize) const;

    /// Samples a row that a block of `inBytes` has room for. At least one channel.
    [[nodiscard]] unsigned GetCapacity(std::size_t inBytes) const;

    /// Fills the table at the block's start for rows of `inCapacity` samples.
    void FillTable(float** outTable, unsigned inCapacity) const;

    /// Bytes of a table alone; the largest value, as above, if that many cannot be counted.
    [[nodiscard]] static std::size_t GetTableBytes(std::size_t inChannels)
    {
        constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
        return inChannels > most / sizeof(float*) ? most : inChannels * sizeof(float*);
    }

private:
    /// Floats behind each row that are never another row's, besides those lost to alignment.
    static constexpr std::size_t kSlack = 4;

    [[nodiscard]] std::size_t GetStride(unsigned inSize) const { return inSize + mAlignment + kSlack; }

    std::size_t mChannels;
    std::size_t mAlignment;
};

} // namespace tessaro
