#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include <ombrel/Export.h>

namespace ombrel::utility {

/// An object that counts its owners and destroys itself when the last one lets go. Held by
/// `boost::intrusive_ptr`, which finds the two functions below. Every class that is reached through an
/// interface has it as virtual base.
class OMBREL_EXPORT RefCountedInterface
{
public:
    /// Adds an owner. [any thread]
    virtual void AddRefCount() const noexcept = 0;
    /// Takes an owner away, and destroys the object when it was the last. [any thread]
    virtual void ReleaseRefCount() const noexcept = 0;

protected:
    RefCountedInterface() noexcept = default;
    RefCountedInterface(const RefCountedInterface&) noexcept = default;
    RefCountedInterface& operator=(const RefCountedInterface&) noexcept = default;
    virtual ~RefCountedInterface();
};

inline void intrusive_ptr_add_ref(const RefCountedInterface* inObject) noexcept
{
    inObject->AddRefCount();
}
inline void intrusive_ptr_release(const RefCountedInterface* inObject) noexcept
{
    inObject->ReleaseRefCount();
}

/// The counting itself. The count starts at 0: the first `intrusive_ptr` makes it 1. An object that no
/// pointer ever held may live on the stack. A copy is a new object with a count of its own.
///
/// The count is atomic. `GetRefCount` reads it with acquire order, so that whoever finds a count of 1 also
/// sees all that the owners before it wrote, and may dispose of the object. Counting takes no lock; the last
/// release runs the destructor and frees memory, which is not for a real-time thread.
class OMBREL_EXPORT RefCountedObject : public virtual RefCountedInterface
{
public:
    RefCountedObject() noexcept = default;
    RefCountedObject(const RefCountedObject& inOther) noexcept : RefCountedInterface(inOther) {}
    RefCountedObject& operator=(const RefCountedObject&) noexcept { return *this; }
    ~RefCountedObject() override;

    void AddRefCount() const noexcept override;
    void ReleaseRefCount() const noexcept override;

    /// Number of owners at this moment. [any thread]
    [[nodiscard]] std::int32_t GetRefCount() const noexcept
    {
        return mRefCount.load(std::memory_order_acquire);
    }

private:
    mutable std::atomic<std::int32_t> mRefCount{0};
};

namespace details {

class LifeCounts;

} // namespace details

/// A counted object that weak pointers (`WeakPtr`) can watch and that tells owners from users: owners hold it
/// (`AddRefCount`), users are busy with it (`AddUseCount`). It dies when neither is left, so an object whose
/// last owner lets go in the middle of a use lives until that use ends.
///
/// Owners and users share one atomic word, which stands apart from the object and outlives it as long as a
/// weak pointer looks at it. Counts start at 0. A weak pointer made before the first owner came cannot be
/// locked until then.
class OMBREL_EXPORT RefCountedObjectWithWeakPtr : public virtual RefCountedInterface
{
public:
    RefCountedObjectWithWeakPtr();
    RefCountedObjectWithWeakPtr(const RefCountedObjectWithWeakPtr& inOther);
    RefCountedObjectWithWeakPtr& operator=(const RefCountedObjectWithWeakPtr&) noexcept { return *this; }
    ~RefCountedObjectWithWeakPtr() override;

    void AddRefCount() const noexcept override;
    void ReleaseRefCount() const noexcept override;

    /// Marks the beginning and the end of a use. [any thread]
    void AddUseCount() const noexcept;
    void ReleaseUseCount() const noexcept;

    /// Owners, users at this moment. [any thread]
    [[nodiscard]] std::int32_t GetRefCount() const noexcept;
    [[nodiscard]] std::int32_t GetUseCount() const noexcept;

    /// Whether the destructor may run on the main thread only; false unless overridden. Asked when the last
    /// owner and user are gone. If true, the deletion is handed to the host (`SetMainThreadDestruction`);
    /// without a host's function, and when that function throws, it happens at once.
    [[nodiscard]] virtual bool DestructOnMainThread() const noexcept { return false; }

    /// The word that weak pointers watch; for `WeakPtr`.
    [[nodiscard]] details::LifeCounts* GetLifeCounts() const noexcept { return mLife; }

private:
    void Dispose() const noexcept;

    details::LifeCounts* mLife;
};

/// Installs the host's way to run a function on its main thread, for the objects that want to end there. The
/// function may run its argument later. An empty function takes it away. [control]
OMBREL_EXPORT void SetMainThreadDestruction(std::function<void(std::function<void()>)> inRunOnMainThread);

} // namespace ombrel::utility
