#pragma once

#include <type_traits>
#include <utility>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ombrel/Export.h>
#include <ombrel/utility/RefCounted.h>

namespace ombrel::utility {

namespace details {

OMBREL_EXPORT void AddWatcher(LifeCounts* ioLife) noexcept;
OMBREL_EXPORT void ReleaseWatcher(LifeCounts* ioLife) noexcept;
/// Adds an owner unless the object has none and no user; returns whether it did.
OMBREL_EXPORT bool AddRefCountIfAlive(LifeCounts* ioLife) noexcept;
OMBREL_EXPORT bool IsAlive(const LifeCounts* inLife) noexcept;

} // namespace details

/// Looks at an object of a class that derives from `RefCountedObjectWithWeakPtr` without keeping it alive.
/// Different weak pointers to one object may be used on different threads at once; one of them on one at a
/// time.
template <typename T>
class WeakPtr
{
public:
    WeakPtr() noexcept = default;
    /// `inObject` may be null. An object that is being made or taken down may be given, too.
    explicit WeakPtr(T* inObject) noexcept
        : mObject(inObject), mLife(inObject ? inObject->GetLifeCounts() : nullptr)
    {
        Watch();
    }
    WeakPtr(const boost::intrusive_ptr<T>& inObject) noexcept : WeakPtr(inObject.get()) {}
    WeakPtr(const WeakPtr& inOther) noexcept : mObject(inOther.mObject), mLife(inOther.mLife) { Watch(); }
    WeakPtr(WeakPtr&& ioOther) noexcept
        : mObject(std::exchange(ioOther.mObject, nullptr)), mLife(std::exchange(ioOther.mLife, nullptr))
    {
    }
    WeakPtr& operator=(WeakPtr inOther) noexcept
    {
        std::swap(mObject, inOther.mObject);
        std::swap(mLife, inOther.mLife);
        return *this;
    }
    ~WeakPtr()
    {
        if (mLife != nullptr) {
            details::ReleaseWatcher(mLife);
        }
    }

    /// An owner of the object, or null when it is gone or has no owner yet. [any thread]
    [[nodiscard]] boost::intrusive_ptr<T> Lock() const noexcept
    {
        constexpr bool kAddOwner = false;
        return mLife != nullptr && details::AddRefCountIfAlive(mLife)
                   ? boost::intrusive_ptr<T>(mObject, kAddOwner)
                   : boost::intrusive_ptr<T>();
    }

    /// True when `Lock` would give null at this moment. [any thread]
    [[nodiscard]] bool IsExpired() const noexcept { return mLife == nullptr || !details::IsAlive(mLife); }

private:
    void Watch() noexcept
    {
        if (mLife != nullptr) {
            details::AddWatcher(mLife);
        }
    }

    T* mObject = nullptr;
    details::LifeCounts* mLife = nullptr;
};

} // namespace ombrel::utility
