#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ombrel::threads {

/// A piece of work to be run once: any callable without arguments and result, held by value. Unlike
/// `std::function` it can hold what only moves, such as a promise, and it holds callables of up to
/// `kInlineSize` bytes without allocating.
///
/// Moving never throws. Dropping a task without running it destroys what it holds. Not synchronised.
class Task
{
public:
    static constexpr std::size_t kInlineSize = 48;

    Task() noexcept = default;

    template <class Function>
    requires(!std::same_as<std::remove_cvref_t<Function>, Task> &&
             std::invocable<std::remove_cvref_t<Function>&>) Task(Function&& inFunction)
    {
        using Held = std::remove_cvref_t<Function>;
        if constexpr (kFitsInline<Held>) {
            ::new (static_cast<void*>(mStorage)) Held(std::forward<Function>(inFunction));
        } else {
            ::new (static_cast<void*>(mStorage)) Held*(new Held(std::forward<Function>(inFunction)));
        }
        mOperations = &kOperationsOf<Held>;
    }

    Task(Task&& ioOther) noexcept { TakeFrom(ioOther); }

    Task& operator=(Task&& ioOther) noexcept
    {
        if (this != &ioOther) {
            Reset();
            TakeFrom(ioOther);
        }
        return *this;
    }

    ~Task() { Reset(); }

    /// Runs the work. The task must not be empty; exceptions of the work pass through.
    void operator()() { mOperations->mRun(mStorage); }

    explicit operator bool() const noexcept { return mOperations != nullptr; }

private:
    struct Operations
    {
        void (*mRun)(void*);
        void (*mMove)(void* inFrom, void* outTo) noexcept;
        void (*mDestroy)(void*) noexcept;
    };

    template <class Held>
    static constexpr bool
        kFitsInline = sizeof(Held) <= kInlineSize &&
                      alignof(Held) <= alignof(void*) && std::is_nothrow_move_constructible_v<Held>;

    template <class Held>
    static Held& Access(void* inStorage) noexcept
    {
        if constexpr (kFitsInline<Held>) {
            return *std::launder(static_cast<Held*>(inStorage));
        } else {
            return **std::launder(static_cast<Held**>(inStorage));
        }
    }

    template <class Held>
    static void Move(void* inFrom, void* outTo) noexcept
    {
        if constexpr (kFitsInline<Held>) {
            Held& from = Access<Held>(inFrom);
            ::new (outTo) Held(std::move(from));
            std::destroy_at(&from);
        } else {
            ::new (outTo) Held*(&Access<Held>(inFrom));
        }
    }

    template <class Held>
    static void Destroy(void* inStorage) noexcept
    {
        if constexpr (kFitsInline<Held>) {
            std::destroy_at(&Access<Held>(inStorage));
        } else {
            delete &Access<Held>(inStorage);
        }
    }

    template <class Held>
    static constexpr Operations kOperationsOf = {[](void* inStorage) { Access<Held>(inStorage)(); },
                                                 &Move<Held>, &Destroy<Held>};

    void TakeFrom(Task& ioOther) noexcept
    {
        mOperations = std::exchange(ioOther.mOperations, nullptr);
        if (mOperations) {
            mOperations->mMove(ioOther.mStorage, mStorage);
        }
    }

    void Reset() noexcept
    {
        if (const Operations* operations = std::exchange(mOperations, nullptr)) {
            operations->mDestroy(mStorage);
        }
    }

    const Operations* mOperations = nullptr;
    alignas(void*) std::byte mStorage[kInlineSize];
};

} // namespace ombrel::threads
