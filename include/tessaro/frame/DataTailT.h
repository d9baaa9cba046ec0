#pragma once

#include <vector>

#include <tessaro/Export.h>

namespace tessaro {

/// History and block in one row: keeps the end of the previous blocks in front of the current one, so that a
/// filter or detector reads across the edge without caring for it. Rows of `T`, which is float or double.
///
/// A row is `tail size + block size` samples. The valid ones are counted from its start by the total, the
/// tail (the history) included. One round:
///
///     tail.Append(input, count, 0);              // behind the history
///     ... read tail.GetPointer()[channel] + anything below tail.GetTotal() ...
///     tail.Shift(tail.GetTotal() - tailSize);    // the last samples become the history
///
/// All sizes are in samples. Counts are the caller's to keep within the block size: nothing checks them.
/// Calls that set sizes allocate [control]; all others do not, and do not throw [real-time]. One thread at a
/// time. A copy has storage of its own and the same contents.
template <typename T>
class DataTailT
{
public:
    /// `ExtractCircular` of all channels
    static constexpr unsigned kAllChannels = 0xFFFFFFFF;

    /// No channels, all sizes 0
    DataTailT() = default;
    /// No tail
    DataTailT(int inNumChannels, int inMaxBlockSize);
    DataTailT(const DataTailT& inOther);
    DataTailT& operator=(const DataTailT& inOther);
    virtual ~DataTailT();

    /// Sets channels, rate in Hz and block size, without tail, and clears. [control]
    void SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize);
    /// Sets all four; negative figures count as 0. With `inClear` the rows are zeros and the total is the
    /// tail: the history is valid silence. Without, contents and total stay. Rows once made are kept.
    /// [control]
    void SetTailMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize, int inTailSize, bool inClear);
    /// Makes room, so that later modes up to this size do not allocate. The mode stays. [control]
    void ReserveMemory(int inNumChannels, int inNumSamples);
    /// Changes the block size. One that would leave a row no sample counts as 1, a negative one beside a
    /// longer tail as 0. The tail is kept, data behind it is dropped. [control]
    void ChangeBufferSize(int inMaxBlockSize);
    /// Changes the tail and keeps the most recent data: a longer tail has zeros in front, a shorter one loses
    /// the oldest. [control]
    void ChangeTailSize(int inTailSize);

    /// Fills the rows with 0; the total becomes the tail.
    void Reset();
    /// The same with another value
    void ResetToVal(T inValue);
    /// The total becomes 0; the data stays.
    void ResetTotal() { mTotal = 0; }
    void SetTotal(unsigned inTotal) { mTotal = inTotal; }
    void AddTotal(unsigned inCount) { mTotal += inCount; }
    [[nodiscard]] unsigned GetTotal() const { return mTotal; }

    /// Copies `inCount` samples of each channel from `inSource[c] + inSourceOffset` behind the valid ones.
    /// Source rows may overlap the rows of this object.
    void Append(const T* const* inSource, unsigned inCount, int inSourceOffset);
    /// At the end of a block: moves the data `inCount` samples down and keeps a tail's worth of it, or what
    /// is there behind `inCount` if that is less. The total becomes what was kept. Nothing for 0 or less.
    void Shift(int inCount);
    /// Discards the oldest `inCount` samples, at most all, and keeps everything else.
    void ShiftAll(unsigned inCount);

    /// The row as a ring of its full length: appends, and goes on at the start of the row when the end is
    /// reached; the total is then where the next write goes. Of more than a ring's length only the last is
    /// taken.
    void AppendCircular(const T* const* inSource, unsigned inCount, int inSourceOffset);
    /// Copies `inCount` samples, up to a ring's length, from `inPosition`, which wraps at any sign, to
    /// `outDest[c] + inDestOffset`: of all channels, or of `inChannel` alone (to the row
    /// `outDest[inChannel]`). The total does not move.
    void ExtractCircular(T* const* outDest, unsigned inCount, int inPosition, int inDestOffset,
                         unsigned inChannel = kAllChannels) const;

    /// Pointers to the rows, `inOffset` samples in; valid until the next call.
    [[nodiscard]] T* const* MakeOffsetPointer(unsigned inOffset);

    /// Pointers to the rows, null for rows of length 0; valid until the mode changes.
    [[nodiscard]] T* const* GetPointer() { return mPointers.data(); }
    [[nodiscard]] const T* const* GetPointer() const { return mPointers.data(); }
    operator T* const*() { return mPointers.data(); }
    operator const T* const*() const { return mPointers.data(); }

    [[nodiscard]] int GetNumChannels() const { return mNumChannels; }
    /// Hz
    [[nodiscard]] int GetSamplingRate() const { return mSamplingRate; }
    [[nodiscard]] unsigned GetMaxBlockSize() const { return mMaxBlockSize; }
    [[nodiscard]] unsigned GetTailSize() const { return mTailSize; }
    /// Length of a row: tail and block
    [[nodiscard]] unsigned GetTotalSize() const { return mTailSize + mMaxBlockSize; }

private:
    using Rows = std::vector<std::vector<T>>;

    void RenewPointers();
    [[nodiscard]] Rows SaveRows(unsigned inCount) const;
    void AppendRows(const Rows& inRows, unsigned inOffset, unsigned inCount);

    std::vector<T*> mPointers;
    Rows mRows;
    std::vector<T*> mOffsetPointers;
    unsigned mTailSize = 0;
    unsigned mTotal = 0;
    unsigned mMaxBlockSize = 0;
    int mNumChannels = 0;
    int mSamplingRate = 0;
};

extern template class TESSARO_EXPORT DataTailT<float>;
extern template class TESSARO_EXPORT DataTailT<double>;

} // namespace tessaro
