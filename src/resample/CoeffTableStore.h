#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <brisken/filter/RowBank.h>

namespace tessaro {

/// More rows no table has; with so many, outputs are interpolated between two of them.
inline constexpr int kMostTableRows = 1000;

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

    /// Computes all rows. `inCutoffDivisor` is the Nyquist frequency of the source over the filter's cutoff,
    /// `inStep` the rows from one output to the next. Throws `std::bad_alloc`.
    CoeffTableStore(const Key& inKey, double inStep, double inCutoffDivisor);
    CoeffTableStore(const CoeffTableStore&) = delete;
    CoeffTableStore& operator=(const CoeffTableStore&) = delete;

    [[nodiscard]] const Key& GetKey() const { return mKey; }

    /// How rows lie in memory. Where the outputs go through all rows in a fixed order again and again, that
    /// order is their cycle: four rows that follow each other in it are a bank, to be summed side by side
    /// from the same input sample on. A bank's rows begin with as many zeros as their own input lies further
    /// on. Short cycles are taken several times to fill a bank, and the last bank may be short of rows. All
    /// is empty if outputs are interpolated, or far apart: then rows are plain.
    struct Cycle
    {
        /// Which output of the cycle has a row
        [[nodiscard]] std::int64_t GetIndex(int inRow) const { return inRow * mInverseStep % mNumRows; }
        /// Input samples from the window of output 0 to that of another, also of a later round
        [[nodiscard]] std::int64_t GetOffset(std::int64_t inIndex) const
        {
            return inIndex * mStep / mNumRows;
        }
        [[nodiscard]] int GetNumBanks() const { return static_cast<int>(mBankOffsets.size()); }

        std::int64_t mNumRows = 0;
        std::int64_t mStep = 0;
        std::int64_t mInverseStep = 0;
        int mLength = 0;    ///< outputs a round
        int mAdvance = 0;   ///< input samples a round
        int mRowLength = 0; ///< elements of a row in a bank
        int mMostZeros = 0;
        std::vector<int> mBankOffsets; ///< from the window of the round's output 0 to where the bank begins
    };

    [[nodiscard]] const Cycle& GetCycle() const { return mCycle; }
    [[nodiscard]] bool IsPlain() const { return mCycle.mBankOffsets.empty(); }

    /// A plain row
    [[nodiscard]] const double* GetRow(int inRow) const
    {
        return mTable.get() + static_cast<std::ptrdiff_t>(inRow) * mKey.mRowStride;
    }

    [[nodiscard]] const double* GetBank(int inBank) const { return mTable.get() + GetBankStart(inBank); }

    /// Zeros before the row of the cycle's output `inIndex`
    [[nodiscard]] unsigned GetNumZeros(int inIndex) const;

    /// The cycle's output `inIndex` by the taps of its row alone, without the zeros beside them; slow.
    [[nodiscard]] double SumTaps(int inIndex, const double* inWindow) const;

private:
    struct FreeTable
    {
        void operator()(double* inTable) const;
    };

    [[nodiscard]] std::ptrdiff_t GetBankStart(int inBank) const
    {
        return static_cast<std::ptrdiff_t>(inBank) * mCycle.mRowLength * brisken::filter::kRowBankRows;
    }
    void LayOut(double inStep);
    void Allocate(std::uint64_t inSize);
    void FillPlain(double inCutoffDivisor);
    void FillBanks(double inCutoffDivisor);

    Key mKey;
    Cycle mCycle;
    std::unique_ptr<double[], FreeTable> mTable;
};

/// The table made for a key like this among the last 64, or null. Takes the cache's lock.
[[nodiscard]] std::shared_ptr<const CoeffTableStore> FindInCache(const CoeffTableStore::Key& inKey);

/// Keeps a table in the place of the one that was added longest ago, in use or not. Takes the cache's lock.
void AddToCache(std::shared_ptr<const CoeffTableStore> inStore);

} // namespace tessaro
