#include <ombrel/utility/RefCounted.h>

#include <memory>
#include <mutex>
#include <utility>

#include <ombrel/utility/WeakPtr.h>

namespace ombrel::utility {

namespace {

constexpr std::uint64_t kOneOwner = 1;
constexpr std::uint64_t kOneUser = std::uint64_t{1} << 32;

using RunOnMainThread = std::function<void(std::function<void()>)>;

struct MainThreadDestruction
{
    std::mutex mMutex;
    std::shared_ptr<const RunOnMainThread> mFunction;
};

/// Never destroyed: objects may end later than any static of this library.
MainThreadDestruction& GetMainThreadDestruction()
{
    static auto& instance = *new MainThreadDestruction;
    return instance;
}

/// Returns false when there is nobody to hand the object to. Copies of the posted function share one holder,
/// so that the object ends exactly once: where the function is run, or where the last copy is dropped unrun.
bool HandToMainThread(const RefCountedObjectWithWeakPtr* inObject) noexcept
{
    using Holder = std::unique_ptr<const RefCountedObjectWithWeakPtr>;
    auto& destruction = GetMainThreadDestruction();
    std::unique_lock lock(destruction.mMutex);
    const auto run = destruction.mFunction;
    lock.unlock();
    if (run == nullptr) {
        return false;
    }
    bool isHeld = false;
    try {
        auto holder = std::make_shared<Holder>();
        holder->reset(inObject);
        isHeld = true;
        (*run)([holder = std::move(holder)] { holder->reset(); });
    } catch (...) {
        return isHeld;
    }
    return true;
}

} // namespace

namespace details {

/// Owners in the low half of one word and users in the high half, so that the change that leaves none of both
/// is one atomic step. The watchers are the object itself and its weak pointers.
class LifeCounts
{
public:
    std::atomic<std::uint64_t> mOwnersAndUsers{0};
    std::atomic<std::int32_t> mWatchers{1};
};

void AddWatcher(LifeCounts* ioLife) noexcept
{
    ioLife->mWatchers.fetch_add(1, std::memory_order_relaxed);
}

void ReleaseWatcher(LifeCounts* ioLife) noexcept
{
    if (ioLife->mWatchers.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete ioLife;
    }
}

bool AddRefCountIfAlive(LifeCounts* ioLife) noexcept
{
    auto counts = ioLife->mOwnersAndUsers.load(std::memory_order_relaxed);
    while (counts != 0) {
        if (ioLife->mOwnersAndUsers.compare_exchange_weak(
                counts, counts + kOneOwner, std::memory_order_acquire, std::memory_order_relaxed)) {
            return true;
        }
    }
    return false;
}

bool IsAlive(const LifeCounts* inLife) noexcept
{
    return inLife->mOwnersAndUsers.load(std::memory_order_acquire) != 0;
}

} // namespace details

RefCountedInterface::~RefCountedInterface() = default;

RefCountedObject::~RefCountedObject() = default;

void RefCountedObject::AddRefCount() const noexcept
{
    mRefCount.fetch_add(1, std::memory_order_relaxed);
}

void RefCountedObject::ReleaseRefCount() const noexcept
{
    if (mRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

RefCountedObjectWithWeakPtr::RefCountedObjectWithWeakPtr() : mLife(new details::LifeCounts) {}

RefCountedObjectWithWeakPtr::RefCountedObjectWithWeakPtr(const RefCountedObjectWithWeakPtr& inOther)
    : RefCountedInterface(inOther), mLife(new details::LifeCounts)
{
}

RefCountedObjectWithWeakPtr::~RefCountedObjectWithWeakPtr()
{
    details::ReleaseWatcher(mLife);
}

void RefCountedObjectWithWeakPtr::AddRefCount() const noexcept
{
    mLife->mOwnersAndUsers.fetch_add(kOneOwner, std::memory_order_relaxed);
}

void RefCountedObjectWithWeakPtr::ReleaseRefCount() const noexcept
{
    if (mLife->mOwnersAndUsers.fetch_sub(kOneOwner, std::memory_order_acq_rel) == kOneOwner) {
        Dispose();
    }
}

void RefCountedObjectWithWeakPtr::AddUseCount() const noexcept
{
    mLife->mOwnersAndUsers.fetch_add(kOneUser, std::memory_order_relaxed);
}

void RefCountedObjectWithWeakPtr::ReleaseUseCount() const noexcept
{
    if (mLife->mOwnersAndUsers.fetch_sub(kOneUser, std::memory_order_acq_rel) == kOneUser) {
        Dispose();
    }
}

std::int32_t RefCountedObjectWithWeakPtr::GetRefCount() const noexcept
{
    return static_cast<std::int32_t>(mLife->mOwnersAndUsers.load(std::memory_order_acquire) & (kOneUser - 1));
}

std::int32_t RefCountedObjectWithWeakPtr::GetUseCount() const noexcept
{
    return static_cast<std::int32_t>(mLife->mOwnersAndUsers.load(std::memory_order_acquire) / kOneUser);
}

void RefCountedObjectWithWeakPtr::Dispose() const noexcept
{
    if (!DestructOnMainThread() || !HandToMainThread(this)) {
        delete this;
    }
}

void SetMainThreadDestruction(std::function<void(std::function<void()>)> inRunOnMainThread)
{
    auto& destruction = GetMainThreadDestruction();
    auto function =
        inRunOnMainThread ? std::make_shared<const RunOnMainThread>(std::move(inRunOnMainThread)) : nullptr;
    const std::lock_guard lock(destruction.mMutex);
    destruction.mFunction.swap(function);
}

} // namespace ombrel::utility
