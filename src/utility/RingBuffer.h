#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include <brisken/Utility.h>

namespace tessaro {

/// A ring of several channels between two threads: one writes, one reads, and neither waits.
///
/// Equal positions mean that the ring is empty, so one slot is never used: a ring that is to hold n samples
/// has size n + 1. Nothing checks a write against the room: the writer keeps to `GetNumWritable` or knows by
/// other means that the reader keeps up.
///
/// Construction allocates [control]; all else is `[real-time]`, from the writing and the reading thread at
/// once. Held by `std::shared_ptr`, never copied. Samples are floats.
template <typename T>
class RingBuffer
{
    static_assert(std::is_same_v<T, float>, "rows come from Malloc_Float");

public:
    /// Room for `inSize - 1` samples a channel. Throws `std::bad_alloc`.
    RingBuffer(int inNumChannels, int inSize) : mNumChannels(inNumChannels), mSize(std::max(inSize, 1))
    {
        for (int channel = 0; channel < mNumChannels; ++channel) {
            mChannels.emplace_back(brisken::utility::Malloc_Float(static_cast<unsigned>(mSize)));
            if (mChannels.back() == nullptr) {
                throw std::bad_alloc();
            }
        }
    }
    RingBuffer(const RingBuffer&) = delete;
    RingBuffer& operator=(const RingBuffer&) = delete;

    [[nodiscard]] int GetNumChannels() const { return mNumChannels; }
    [[nodiscard]] int GetSize() const { return mSize; }

    /// Writing thread: how many samples fit.
    [[nodiscard]] int GetNumWritable() const
    {
        return mSize - 1 - Distance(mRead.load(std::memory_order_acquire), mWrite.load(kOwn));
    }

    /// Reading thread: how many samples are there.
    [[nodiscard]] int GetNumReadable() const
    {
        return Distance(mRead.load(kOwn), mWrite.load(std::memory_order_acquire));
    }

    /// Writing thread: appends `inCount` samples a channel from `inSource[c] + inOffset`.
    void Write(const T* const* inSource, int inCount, int inOffset = 0)
    {
        const Runs runs(mWrite.load(kOwn), inCount, mSize);
        for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
            const T* source = inSource[channel] + inOffset;
            T* row = mChannels[channel].get();
            brisken::utility::Copy(runs.mFirst, source, row + runs.mPosition);
            brisken::utility::Copy(runs.mSecond, source + runs.mFirst, row);
        }
        // The samples are in place before the reader sees the position.
        mWrite.exchange(runs.mEnd, std::memory_order_acq_rel);
    }

    /// Reading thread: takes `inCount` samples a channel to `outDest[c] + inOffset`, and returns `inCount`.
    /// If there are fewer, it takes none and returns how many there are.
    int Read(T* const* outDest, int inCount, int inOffset = 0)
    {
        const int available = GetNumReadable();
        if (inCount > available) {
            return available;
        }
        const Runs runs(mRead.load(kOwn), inCount, mSize);
        for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
            T* dest = outDest[channel] + inOffset;
            const T* row = mChannels[channel].get();
            brisken::utility::Copy(runs.mFirst, row + runs.mPosition, dest);
            brisken::utility::Copy(runs.mSecond, row, dest + runs.mFirst);
        }
        mRead.exchange(runs.mEnd, std::memory_order_acq_rel);
        return inCount;
    }

private:
    /// A cache line: each position has one to itself, or each write would take the reader's from it.
    static constexpr std::size_t kCacheLine = 64;
    /// A thread's own position is changed by no one else.
    static constexpr auto kOwn = std::memory_order_relaxed;

    struct FreeRow
    {
        void operator()(T* inRow) const { brisken::utility::Free(inRow); }
    };

    /// How a stretch of the ring lies in memory.
    struct Runs
    {
        Runs(std::uint64_t inPosition, int inCount, int inSize)
            : mPosition(inPosition),
              mFirst(static_cast<unsigned>(std::min<std::uint64_t>(
                  static_cast<std::uint64_t>(inCount), static_cast<std::uint64_t>(inSize) - inPosition))),
              mSecond(static_cast<unsigned>(inCount) - mFirst),
              mEnd(inPosition + static_cast<std::uint64_t>(inCount))
        {
            if (mEnd >= static_cast<std::uint64_t>(inSize)) {
                mEnd -= static_cast<std::uint64_t>(inSize);
            }
        }

        std::uint64_t mPosition;
        unsigned mFirst;    ///< samples up to the end of the ring
        unsigned mSecond;   ///< samples from its start
        std::uint64_t mEnd; ///< the position behind them
    };

    [[nodiscard]] int Distance(std::uint64_t inRead, std::uint64_t inWrite) const
    {
        const auto size = static_cast<std::uint64_t>(mSize);
        return static_cast<int>(inWrite >= inRead ? inWrite - inRead : size - inRead + inWrite);
    }

    std::vector<std::unique_ptr<T, FreeRow>> mChannels;
    int mNumChannels;
    int mSize;
    alignas(kCacheLine) std::atomic<std::uint64_t> mWrite{0};
    alignas(kCacheLine) std::atomic<std::uint64_t> mRead{0};
};

} // namespace tessaro
