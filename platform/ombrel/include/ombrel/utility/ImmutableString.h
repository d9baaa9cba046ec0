#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <ombrel/Export.h>

namespace ombrel::utility {

/// UTF-8 text that never changes and is shared by its copies: copying costs a count and never throws. Copies
/// may be used on different threads at once.
class OMBREL_EXPORT ImmutableString
{
public:
    /// Empty; allocates nothing.
    ImmutableString() noexcept = default;
    ImmutableString(std::string inText);
    ImmutableString(std::string_view inText) : ImmutableString(std::string(inText)) {}
    ImmutableString(const char* inText) : ImmutableString(std::string(inText)) {}

    [[nodiscard]] const std::string& GetString() const noexcept;
    [[nodiscard]] const char* c_str() const noexcept { return GetString().c_str(); }
    [[nodiscard]] std::size_t GetLength() const noexcept { return GetString().size(); }
    [[nodiscard]] bool IsEmpty() const noexcept { return mText == nullptr; }
    operator std::string_view() const noexcept { return GetString(); }

    /// By bytes, which is the order of the code points.
    friend bool operator==(const ImmutableString& inA, const ImmutableString& inB) noexcept
    {
        return inA.mText == inB.mText || inA.GetString() == inB.GetString();
    }
    friend std::strong_ordering operator<=>(const ImmutableString& inA, const ImmutableString& inB) noexcept
    {
        return inA.GetString() <=> inB.GetString();
    }

private:
    std::shared_ptr<const std::string> mText; ///< null for the empty text
};

} // namespace ombrel::utility

template <>
struct std::hash<ombrel::utility::ImmutableString>
{
    std::size_t operator()(const ombrel::utility::ImmutableString& inText) const noexcept
    {
        return std::hash<std::string_view>()(inText);
    }
};
