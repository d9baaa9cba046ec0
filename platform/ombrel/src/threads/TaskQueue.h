#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include <ombrel/threads/Task.h>

namespace ombrel::threads {

/// A first-in first-out queue in a ring that grows as needed, so that in steady use nothing is allocated. Not
/// synchronised.
class TaskQueue
{
public:
    bool IsEmpty() const noexcept { return mCount == 0; }
    std::size_t GetSize() const noexcept { return mCount; }

    /// If it throws, nothing has changed.
    void Push(Task&& ioTask)
    {
        if (mCount == mSlots.size()) {
            Grow();
        }
        mSlots[(mHead + mCount) & (mSlots.size() - 1)] = std::move(ioTask);
        ++mCount;
    }

    /// Undoes the last `Push`.
    Task TakeLast() noexcept
    {
        --mCount;
        return std::move(mSlots[(mHead + mCount) & (mSlots.size() - 1)]);
    }

    Task Pop() noexcept
    {
        Task task = std::move(mSlots[mHead]);
        mHead = (mHead + 1) & (mSlots.size() - 1);
        --mCount;
        return task;
    }

    void Swap(TaskQueue& ioOther) noexcept
    {
        mSlots.swap(ioOther.mSlots);
        std::swap(mHead, ioOther.mHead);
        std::swap(mCount, ioOther.mCount);
    }

    /// Gives back the memory of an empty queue that a rush of work has made large.
    void Trim() noexcept
    {
        if (mSlots.size() > kMostKept) {
            std::vector<Task>().swap(mSlots);
            mHead = 0;
        }
    }

private:
    static constexpr std::size_t kFirstSize = 16; // sizes are powers of two
    static constexpr std::size_t kMostKept = 4096;

    void Grow()
    {
        std::vector<Task> larger(mSlots.empty() ? kFirstSize : 2 * mSlots.size());
        for (std::size_t i = 0; i < mCount; ++i) {
            larger[i] = std::move(mSlots[(mHead + i) & (mSlots.size() - 1)]);
        }
        mSlots.swap(larger);
        mHead = 0;
    }

    std::vector<Task> mSlots;
    std::size_t mHead = 0;
    std::size_t mCount = 0;
};

} // namespace ombrel::threads
