#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <ombrel/Export.h>

namespace ombrel::utility {

/// A globally unique identifier of 128 bits, as RFC 4122 defines it. A plain value; the default is the nil
/// identifier of all zeros.
class OMBREL_EXPORT Guid
{
public:
    static constexpr std::size_t kByteCount = 16;
    using Bytes = std::array<std::uint8_t, kByteCount>;

    constexpr Guid() = default;
    explicit constexpr Guid(const Bytes& inBytes) : mBytes(inBytes) {}

    /// A random identifier (version 4, from the system's random source), different from any other. [any
    /// thread]
    static Guid CreateUnique();

    /// Reads the text form, upper or lower case, with or without braces around it. Returns false, and leaves
    /// `outGuid` as it is, for any other text.
    static bool FromString(std::string_view inText, Guid& outGuid);

    /// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" in lower case.
    std::string ToString() const;

    constexpr const Bytes& GetBytes() const { return mBytes; }
    constexpr bool IsNil() const { return *this == Guid(); }

    /// The order of the bytes, first byte first, which is that of the text.
    friend constexpr auto operator<=>(const Guid&, const Guid&) = default;

private:
    Bytes mBytes{};
};

} // namespace ombrel::utility

template <>
struct std::hash<ombrel::utility::Guid>
{
    std::size_t operator()(const ombrel::utility::Guid& inGuid) const noexcept
    {
        std::size_t value = 14695981039346656037ull; // FNV-1a
        for (auto byte : inGuid.GetBytes()) {
            value = (value ^ byte) * 1099511628211ull;
        }
        return value;
    }
};
