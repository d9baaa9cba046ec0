#include "Plan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>
#include <numbers>
#include <utility>

namespace brisken::transform::details {

namespace {

struct Factor
{
    double re;
    double im;
};

/// exp(-2 pi i inIndex / inSize). The angle is folded into the first octant, so that the result is symmetric
/// and as exact as sine and cosine are near zero.
Factor UnitRoot(std::size_t inIndex, std::size_t inSize)
{
    const auto eighths = 8 * (inIndex % inSize);
    const auto octant = eighths / inSize;
    auto rest = static_cast<double>(eighths % inSize);
    if (octant % 2 == 1) {
        rest = static_cast<double>(inSize) - rest;
    }
    const auto angle = std::numbers::pi / 4.0 * rest / static_cast<double>(inSize);
    auto cosine = std::cos(angle);
    auto sine = std::sin(angle);
    if (octant % 4 == 1 || octant % 4 == 2) {
        std::swap(cosine, sine);
    }
    if (octant >= 2 && octant < 6) {
        cosine = -cosine;
    }
    return {cosine, octant < 4 ? -sine : sine};
}

std::size_t RoundUpToAlignment(std::size_t inElements, std::size_t inElementSize)
{
    const auto step = kAlignment / inElementSize;
    return (inElements + step - 1) / step * step;
}

/// Radices 4, 8 and 16: as few passes as possible, the smaller radices first.
template <class T>
void ChooseRadices(Passes<T>& ioPasses, std::size_t inSize)
{
    ioPasses.size = inSize;
    auto bits = static_cast<std::size_t>(std::countr_zero(inSize));
    ioPasses.count = (bits + 3) / 4;
    for (std::size_t pass = 0; pass < ioPasses.count; ++pass) {
        const auto share = bits / (ioPasses.count - pass);
        ioPasses.radix[pass] = std::size_t{1} << share;
        bits -= share;
    }
}

template <class T>
std::size_t CountTwiddles(const Passes<T>& inPasses)
{
    std::size_t elements = 0;
    auto remaining = inPasses.size;
    for (std::size_t pass = 0; pass + 1 < inPasses.count; ++pass) {
        const auto radix = inPasses.radix[pass];
        elements += remaining / radix * (radix - 1) * 2;
        remaining /= radix;
    }
    return elements;
}

template <class T>
void FillTwiddles(Passes<T>& ioPasses, T* outTable)
{
    auto remaining = ioPasses.size;
    for (std::size_t pass = 0; pass + 1 < ioPasses.count; ++pass) {
        const auto radix = ioPasses.radix[pass];
        ioPasses.twiddles[pass] = outTable;
        for (std::size_t group = 0; group < remaining / radix; ++group) {
            for (std::size_t leg = 1; leg < radix; ++leg) {
                const auto factor = UnitRoot(group * leg, remaining);
                *outTable++ = static_cast<T>(factor.re);
                *outTable++ = static_cast<T>(factor.im);
            }
        }
        remaining /= radix;
    }
}

/// From this size on (in bytes), columns are longer than one codelet: the long rows that short columns leave
/// would no longer stay in the near caches while they are transformed.
constexpr std::size_t kSquareFromBytes = 128 * 1024;

template <class T>
std::size_t ChooseLanes(std::size_t inSize)
{
    std::size_t lanes = kAlignment / sizeof(T);
    while (lanes * lanes > inSize) {
        lanes /= 2;
    }
    return lanes;
}

} // namespace

void AlignedDelete::operator()(void* inBlock) const noexcept
{
    ::operator delete (inBlock, std::align_val_t{kAlignment});
}

template <class T>
AlignedArray<T> AllocateAligned(std::size_t inCount)
{
    return AlignedArray<T>(
        static_cast<T*>(::operator new (inCount * sizeof(T), std::align_val_t{kAlignment})));
}

template <class T>
Plan<T>::Plan(std::size_t inSize) : size(inSize)
{
    if (size <= kMaxCodelet) {
        return;
    }
    lanes = ChooseLanes<T>(size);
    const auto columnSize =
        2 * size * sizeof(T) < kSquareFromBytes ? lanes : std::size_t{1} << (std::countr_zero(size) / 2);
    ChooseRadices(columns, columnSize);
    ChooseRadices(rows, size / columnSize);

    const auto isShort = columns.size == lanes;
    const auto rotationElements = isShort ? 2 * size : 2 * columnSize * lanes;
    const auto blockElements = isShort ? 0 : RoundUpToAlignment(2 * size / lanes, sizeof(T));
    const auto rowTwiddles = RoundUpToAlignment(CountTwiddles(rows), sizeof(T));
    const auto columnTwiddles = RoundUpToAlignment(CountTwiddles(columns), sizeof(T));
    mTables = AllocateAligned<T>(rotationElements + blockElements + rowTwiddles + columnTwiddles);
    T* table = mTables.get();
    FillRotation(table);
    rotation = table;
    table += rotationElements;
    if (!isShort) {
        FillBlockRotation(table);
        blockRotation = table;
        table += blockElements;
    }
    FillTwiddles(rows, table);
    FillTwiddles(columns, table + rowTwiddles);

    gridElements = 2 * size;
    lineElements = 2 * lanes * std::max(rows.size, columns.size);
}

template <class T>
void Plan<T>::FillRotation(T* outTable) const
{
    const auto columnCount = columns.size == lanes ? rows.size : lanes;
    for (std::size_t block = 0; block < columnCount; block += lanes) {
        for (std::size_t row = 0; row < columns.size; ++row, outTable += 2 * lanes) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const auto factor = UnitRoot(row * (block + lane), size);
                outTable[lane] = static_cast<T>(factor.re);
                outTable[lanes + lane] = static_cast<T>(factor.im);
            }
        }
    }
}

template <class T>
void Plan<T>::FillBlockRotation(T* outTable) const
{
    for (std::size_t block = 0; block < rows.size; block += lanes) {
        for (std::size_t row = 0; row < columns.size; ++row) {
            const auto factor = UnitRoot(row * block, size);
            *outTable++ = static_cast<T>(factor.re);
            *outTable++ = static_cast<T>(factor.im);
        }
    }
}

template <class T>
RealPlan<T>::RealPlan(unsigned inOrder)
    : size(std::size_t{1} << inOrder), half(std::max<std::size_t>(size / 2, 1))
{
    const auto count = size / 4 + 1;
    const auto stride = RoundUpToAlignment(count, sizeof(T));
    mTables = AllocateAligned<T>(2 * stride);
    for (std::size_t index = 0; index < count; ++index) {
        const auto factor = UnitRoot(index, size);
        mTables[index] = static_cast<T>(factor.re);
        mTables[stride + index] = static_cast<T>(-factor.im);
    }
    cosine = mTables.get();
    sine = mTables.get() + stride;
}

template <class T>
std::size_t RealPlan<T>::GetWorkElements() const
{
    const auto elements = half.GetWorkElements();
    return elements == 0 ? 0 : elements + GetPartStride() + half.size;
}

template struct Plan<float>;
template struct Plan<double>;
template struct RealPlan<float>;
template struct RealPlan<double>;

} // namespace brisken::transform::details
