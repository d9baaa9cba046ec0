#pragma once

#include <cstddef>

namespace tessaro::testing {

/// Counts what the calling thread takes from and gives back to the heap while the object lives; counters
/// nest. Counts `malloc` and its kin, and through them `operator new`; in sanitizer builds, which have a heap
/// of their own, `operator new` and `operator delete` only.
class AllocationCounter
{
public:
    AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    [[nodiscard]] std::size_t GetAllocations() const;
    [[nodiscard]] std::size_t GetFrees() const;

private:
    std::size_t mAllocationsBefore;
    std::size_t mFreesBefore;
};

/// Fails the test if the calling thread allocates or frees while the object lives:
///
///     {
///         AllocationGuard guard;
///         processor.Process(rows, rows, count);
///     }
class AllocationGuard
{
public:
    AllocationGuard() = default;
    AllocationGuard(const AllocationGuard&) = delete;
    AllocationGuard& operator=(const AllocationGuard&) = delete;
    ~AllocationGuard();

private:
    AllocationCounter mCounter;
};

} // namespace tessaro::testing
