#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessaro {

/// The coefficient rows of one conversion. Never changes once it is in the cache, and is shared from there.
class CoeffTableStore
{
public:
    /// By what the cache knows a table. The step between outputs is no part of it: rates that agree in their
    /// whole hertz get the same table.
    struct Key
    {
        /// The noise floor and the shift count as equal within 1e-5.
        [[nodiscard]] bool Matches(const Key& inOther) const;

        std::int32_t mSourceRate;
        std::int32_t mDestRate;
        std::int32_t mTableCount;
        std::int32_t mRowStride;
        std::int32_t mOrder;
        double mNyquistShift;
        double mNoiseFloor;
    };

    /// Computes all rows. `inCutoffDivisor` is the Nyquist frequency of the source over the filter's cutoff.
    /// Throws `std::bad_alloc`.
    CoeffTableStore(const Key& inKey, double inCutoffDivisor);
    CoeffTableStore(const CoeffTableStore&) = delete;
    CoeffTableStore& operator=(const CoeffTableStore&) = delete;

    [[nodiscard]] const Key& GetKey() const { return mKey; }
    [[nodiscard]] const double* GetRow(int inRow) const
    {
        return mTable.get() + static_cast<std::ptrdiff_t>(inRow) * mKey.mRowStride;
    }

private:
    struct FreeTable
    {
        void operator()(double* inTable) const;
    };

    Key mKey;
    std::unique_ptr<double[], FreeTable> mTable;
};

/// The table made for a key like this among the last 64, or null. Takes the cache's lock.
[[nodiscard]] std::shared_ptr<const CoeffTableStore> FindInCache(const CoeffTableStore::Key& inKey);

/// Keeps a table in the place of the one that was added longest ago, in use or not. Takes the cache's lock.
void AddToCache(std::shared_ptr<const CoeffTableStore> inStore);

} // namespace tessaro
