#pragma once

#include <algorithm>

namespace ombrel::utility {

/// A start and an end: the values from the start up to, but not including, the end. A range whose end is not
/// above its start is empty; such ranges are kept as they were given and may differ from each other.
template <typename T>
class value_range
{
public:
    using value_type = T;

    constexpr value_range() noexcept = default;
    constexpr value_range(T inStart, T inEnd) noexcept : mStart(inStart), mEnd(inEnd) {}

    [[nodiscard]] constexpr T GetStart() const noexcept { return mStart; }
    [[nodiscard]] constexpr T GetEnd() const noexcept { return mEnd; }
    constexpr void SetStart(T inStart) noexcept { mStart = inStart; }
    constexpr void SetEnd(T inEnd) noexcept { mEnd = inEnd; }

    [[nodiscard]] constexpr bool IsEmpty() const noexcept { return !(mStart < mEnd); }
    /// End less start, 0 for an empty range.
    [[nodiscard]] constexpr T GetLength() const noexcept
    {
        return IsEmpty() ? T{} : static_cast<T>(mEnd - mStart);
    }
    [[nodiscard]] constexpr bool Contains(T inValue) const noexcept
    {
        return !(inValue < mStart) && inValue < mEnd;
    }

    /// What lies in both; an empty range at the later start when they do not meet.
    [[nodiscard]] constexpr value_range Intersect(const value_range& inOther) const noexcept
    {
        const T start = std::max(mStart, inOther.mStart);
        return value_range(start, std::max(start, std::min(mEnd, inOther.mEnd)));
    }

    friend constexpr bool operator==(const value_range&, const value_range&) noexcept = default;

private:
    T mStart{};
    T mEnd{};
};

} // namespace ombrel::utility

namespace ombrel {

using utility::value_range;

} // namespace ombrel
