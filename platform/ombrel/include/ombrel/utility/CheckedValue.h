#pragma once

#include <utility>

#include <ombrel/Export.h>

namespace ombrel::utility {

namespace details {

/// Throws the `ombrel_exception` of a read from an invalid `checked_value`.
[[noreturn]] OMBREL_EXPORT void ThrowInvalidValue();

} // namespace details

/// A value that is marked valid or invalid: an optional argument, or the answer of a search.
template <typename T>
class checked_value
{
public:
    using value_type = T;

    /// Invalid.
    constexpr checked_value() = default;
    /// Valid. Implicit, so that a plain value can be passed.
    constexpr checked_value(T inValue) : mValue(std::move(inValue)), mIsValid(true) {}

    [[nodiscard]] constexpr bool IsValid() const noexcept { return mIsValid; }
    constexpr explicit operator bool() const noexcept { return mIsValid; }

    /// The value. Throws `ombrel_exception` with `kResultInvalidValue` when it is invalid.
    [[nodiscard]] constexpr const T& GetValue() const
    {
        if (!mIsValid) {
            details::ThrowInvalidValue();
        }
        return mValue;
    }
    [[nodiscard]] constexpr T GetValueOr(T inDefault) const
    {
        return mIsValid ? mValue : std::move(inDefault);
    }

    constexpr void SetValue(T inValue)
    {
        mValue = std::move(inValue);
        mIsValid = true;
    }
    constexpr void Invalidate()
    {
        mValue = T{};
        mIsValid = false;
    }

    /// Equal when both are invalid, or both valid with equal values.
    friend constexpr bool operator==(const checked_value& inA, const checked_value& inB)
    {
        return inA.mIsValid == inB.mIsValid && (!inA.mIsValid || inA.mValue == inB.mValue);
    }

private:
    T mValue{};
    bool mIsValid = false;
};

} // namespace ombrel::utility

namespace ombrel {

using utility::checked_value;

} // namespace ombrel
