#pragma once

#include <memory>

namespace ombrel::utility {

/// Base of a class whose objects live in `std::shared_ptr`s and hand out further pointers to themselves.
///
/// The class names itself: `class Reporter : public SharedFromThis<Reporter>`. The pointers are there once a
/// `std::shared_ptr` owns the object, so not yet in its constructor and no longer in its destructor.
template <typename T>
class SharedFromThis : public std::enable_shared_from_this<T>
{
public:
    virtual ~SharedFromThis() = default;

    /// An owner of this object. Throws `std::bad_weak_ptr` when no `std::shared_ptr` owns it.
    [[nodiscard]] std::shared_ptr<T> GetSharedPtr() { return this->shared_from_this(); }
    [[nodiscard]] std::shared_ptr<const T> GetSharedPtr() const { return this->shared_from_this(); }

    /// Looks at this object without owning it; expired when no `std::shared_ptr` owns it.
    [[nodiscard]] std::weak_ptr<T> GetWeakPtr() noexcept { return this->weak_from_this(); }
    [[nodiscard]] std::weak_ptr<const T> GetWeakPtr() const noexcept { return this->weak_from_this(); }

protected:
    SharedFromThis() noexcept = default;
    SharedFromThis(const SharedFromThis&) noexcept = default;
    SharedFromThis& operator=(const SharedFromThis&) noexcept = default;
};

} // namespace ombrel::utility
