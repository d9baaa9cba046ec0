#pragma once

namespace ombrel::utility {

/// Private base of a class that must not be copied or moved.
class noncopyable
{
public:
    noncopyable(const noncopyable&) = delete;
    noncopyable& operator=(const noncopyable&) = delete;

protected:
    constexpr noncopyable() noexcept = default;
    ~noncopyable() = default;
};

} // namespace ombrel::utility
