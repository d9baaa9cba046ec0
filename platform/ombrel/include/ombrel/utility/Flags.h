#pragma once

#include <compare>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace ombrel::utility {

/// A set of numbered flags in the bits of an unsigned integer: the carrier of silence flags and channel
/// masks.
///
/// `Flags<uint64>` on a processing call means: bit n set, channel n is silent. A word has no flag for the
/// channels from its width upward, and there are two habits for these, so there are two tests: `GetBit` takes
/// the number as it is and answers false above the width (buffers: such a channel is never silent);
/// `GetBitModulo` wraps the number (processing calls: channel 64 shares bit 0). Setters take the number as it
/// is and do nothing above the width.
///
/// A plain value: no operation throws, all are constexpr.
template <typename T>
class Flags
{
    static_assert(std::is_unsigned_v<T> && !std::is_same_v<T, bool>, "flags live in an unsigned integer");

public:
    using value_type = T;

    /// Number of flags.
    static constexpr std::size_t kBitCount = static_cast<std::size_t>(std::numeric_limits<T>::digits);

    constexpr Flags() noexcept = default;
    /// Takes the word as it is. Implicit, so that a mask can be written where flags are wanted.
    constexpr Flags(T inValue) noexcept : mValue(inValue) {}

    /// All flags set.
    [[nodiscard]] static constexpr Flags All() noexcept { return Flags(std::numeric_limits<T>::max()); }
    /// Only flag `inBit` set; none for a number above the width.
    [[nodiscard]] static constexpr Flags Bit(std::size_t inBit) noexcept
    {
        return inBit < kBitCount ? Flags(static_cast<T>(T{1} << inBit)) : Flags();
    }
    /// The flags below number `inCount` set; all for a count at or above the width.
    [[nodiscard]] static constexpr Flags Below(std::size_t inCount) noexcept
    {
        return inCount < kBitCount ? Flags(static_cast<T>((T{1} << inCount) - 1)) : All();
    }

    [[nodiscard]] constexpr T GetValue() const noexcept { return mValue; }
    constexpr void SetValue(T inValue) noexcept { mValue = inValue; }

    /// Flag `inBit`, false for a number above the width.
    [[nodiscard]] constexpr bool GetBit(std::size_t inBit) const noexcept
    {
        return inBit < kBitCount && ((mValue >> inBit) & T{1}) != 0;
    }
    /// Flag `inBit` modulo the width.
    [[nodiscard]] constexpr bool GetBitModulo(std::size_t inBit) const noexcept
    {
        return ((mValue >> (inBit % kBitCount)) & T{1}) != 0;
    }
    constexpr void SetBit(std::size_t inBit, bool inOn = true) noexcept
    {
        inOn ? Set(Bit(inBit)) : Clear(Bit(inBit));
    }
    constexpr void ClearBit(std::size_t inBit) noexcept { Clear(Bit(inBit)); }

    /// Sets, clears every flag that is set in `inFlags`.
    constexpr void Set(Flags inFlags) noexcept { mValue = static_cast<T>(mValue | inFlags.mValue); }
    constexpr void Clear(Flags inFlags) noexcept { mValue = static_cast<T>(mValue & ~inFlags.mValue); }
    constexpr void Clear() noexcept { mValue = 0; }

    [[nodiscard]] constexpr bool IsAnySet() const noexcept { return mValue != 0; }
    [[nodiscard]] constexpr bool IsAnySet(Flags inFlags) const noexcept
    {
        return (mValue & inFlags.mValue) != 0;
    }
    /// True when all flags of `inFlags` are set, so for an empty `inFlags` too.
    [[nodiscard]] constexpr bool AreAllSet(Flags inFlags) const noexcept
    {
        return (mValue & inFlags.mValue) == inFlags.mValue;
    }

    constexpr explicit operator bool() const noexcept { return mValue != 0; }
    constexpr explicit operator T() const noexcept { return mValue; }

    constexpr Flags& operator|=(Flags inOther) noexcept { return *this = *this | inOther; }
    constexpr Flags& operator&=(Flags inOther) noexcept { return *this = *this & inOther; }
    constexpr Flags& operator^=(Flags inOther) noexcept { return *this = *this ^ inOther; }
    /// Shifts by the width or more leave no flag set.
    constexpr Flags& operator<<=(std::size_t inCount) noexcept { return *this = *this << inCount; }
    constexpr Flags& operator>>=(std::size_t inCount) noexcept { return *this = *this >> inCount; }

    friend constexpr Flags operator|(Flags inA, Flags inB) noexcept
    {
        return static_cast<T>(inA.mValue | inB.mValue);
    }
    friend constexpr Flags operator&(Flags inA, Flags inB) noexcept
    {
        return static_cast<T>(inA.mValue & inB.mValue);
    }
    friend constexpr Flags operator^(Flags inA, Flags inB) noexcept
    {
        return static_cast<T>(inA.mValue ^ inB.mValue);
    }
    friend constexpr Flags operator~(Flags inA) noexcept { return static_cast<T>(~inA.mValue); }
    friend constexpr Flags operator<<(Flags inA, std::size_t inCount) noexcept
    {
        return inCount < kBitCount ? static_cast<T>(inA.mValue << inCount) : T{0};
    }
    friend constexpr Flags operator>>(Flags inA, std::size_t inCount) noexcept
    {
        return inCount < kBitCount ? static_cast<T>(inA.mValue >> inCount) : T{0};
    }
    friend constexpr bool operator==(Flags inA, Flags inB) noexcept = default;
    friend constexpr auto operator<=>(Flags inA, Flags inB) noexcept = default;

private:
    T mValue = 0;
};

} // namespace ombrel::utility
