#pragma once

#include <array>
#include <cstddef>
#include <memory>

/// The factorisation of a transform and its tables: everything that is known once the length is. None of it
/// depends on the instruction set, so one plan serves every target.
///
/// A complex transform of length n = rows x columns sees its input as a row-major matrix. It transforms the
/// columns, rotates each element by its twiddle factor, and transforms the rows; the result stands in natural
/// order when the matrix is read by columns. Both steps run on vectors whose lanes are neighbouring
/// transforms (columns in the first step, rows in the second), so that no lane ever meets another; only
/// between the steps tiles of lanes x lanes elements are transposed.
namespace brisken::transform::details {

/// Longest transform: 2^26 elements, so that a work buffer's size fits its 32-bit count.
inline constexpr unsigned kMaxOrder = 26;

/// Complex transforms up to this length are single straight-line codelets without tables or work buffer.
inline constexpr std::size_t kMaxCodelet = 4;

/// Work memory and tables start at addresses that are multiples of this.
inline constexpr std::size_t kAlignment = 64;

struct AlignedDelete
{
    void operator()(void* inBlock) const noexcept;
};

template <class T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete>;

/// Throws std::bad_alloc.
template <class T>
AlignedArray<T> AllocateAligned(std::size_t inCount);

/// The passes of one Stockham transform along the rows or the columns: radices in order of execution.
template <class T>
struct Passes
{
    static constexpr std::size_t kMaxCount = 4;

    std::size_t size = 1;
    std::size_t count = 0;
    std::array<std::size_t, kMaxCount> radix{};
    /// For each pass but the last and each of its `size / (stride * radix)` groups: radix - 1 factors (re,
    /// im).
    std::array<const T*, kMaxCount> twiddles{};
};

template <class T>
struct Plan
{
    explicit Plan(std::size_t inSize);

    std::size_t size;
    /// Widest vector that the kernels may use: rows and columns are multiples of it. 1 for codelets.
    std::size_t lanes = 1;
    Passes<T> rows;    ///< transforms along a row, `rows.size` columns long
    Passes<T> columns; ///< transforms along a column
    /// Twiddle factors between the steps, in blocks of `lanes` columns: for each block and each row, `lanes`
    /// real and then `lanes` imaginary parts. Where columns take several passes, only the first block is
    /// there, and `blockRotation` has what turns it into each of the others, (re, im) for each block and each
    /// row: the full table would be as large as the data and compete with it for the caches.
    const T* rotation = nullptr;
    const T* blockRotation = nullptr;
    /// Elements (of T) of aligned work memory: the transposed matrix and two lines of vectors.
    std::size_t gridElements = 0;
    std::size_t lineElements = 0;

    std::size_t GetWorkElements() const { return gridElements + 2 * lineElements; }

private:
    void FillRotation(T* outTable) const;
    void FillBlockRotation(T* outTable) const;

    AlignedArray<T> mTables;
};

/// A real transform of length 2n: the complex one of length n over pairs of samples, and the factors that
/// separate the spectra of the even and the odd samples.
template <class T>
struct RealPlan
{
    explicit RealPlan(unsigned inOrder);

    std::size_t size;
    Plan<T> half;
    const T* cosine = nullptr; ///< cos(2 pi k / size) for k in [0, size / 4]
    const T* sine = nullptr;   ///< sin of the same

    /// From the real to the imaginary parts of the half transform: some cache lines more than its length, so
    /// that the two do not compete for the same places in the cache.
    std::size_t GetPartStride() const { return half.size + 4 * kAlignment / sizeof(T); }

    /// Those of the half transform, and its result in separate parts.
    std::size_t GetWorkElements() const;

private:
    AlignedArray<T> mTables;
};

} // namespace brisken::transform::details
