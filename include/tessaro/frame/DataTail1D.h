#pragma once

#include <tessaro/Export.h>
#include <tessaro/frame/DataTailT.h>

namespace tessaro {

/// History and block of a single row; see `DataTailT` for what each operation does. Converts to the pointer
/// to its row, which is null while the row is empty and valid until the mode changes.
class TESSARO_EXPORT DataTail1D
{
public:
    /// All sizes 0
    DataTail1D() : DataTail1D(0) {}
    /// No tail
    explicit DataTail1D(int inMaxBlockSize) : mTail(1, inMaxBlockSize) {}
    DataTail1D(const DataTail1D&) = default;
    DataTail1D& operator=(const DataTail1D&) = default;
    virtual ~DataTail1D();

    void SetMode(int inMaxBlockSize) { SetTailMode(inMaxBlockSize, 0, true); }
    void SetTailMode(int inMaxBlockSize, int inTailSize, bool inClear)
    {
        mTail.SetTailMode(1, 0, inMaxBlockSize, inTailSize, inClear);
    }
    void ReserveMemory(int inNumSamples) { mTail.ReserveMemory(1, inNumSamples); }
    virtual void ChangeBufferSize(int inMaxBlockSize);
    void ChangeTailSize(int inTailSize) { mTail.ChangeTailSize(inTailSize); }

    void Reset() { mTail.Reset(); }
    void ResetToVal(float inValue) { mTail.ResetToVal(inValue); }
    void ResetTotal() { mTail.ResetTotal(); }
    void SetTotal(unsigned inTotal) { mTail.SetTotal(inTotal); }
    void AddTotal(unsigned inCount) { mTail.AddTotal(inCount); }
    [[nodiscard]] unsigned GetTotal() const { return mTail.GetTotal(); }

    /// A negative count does nothing.
    void Append(const float* inSource, int inCount, int inSourceOffset)
    {
        mTail.Append(&inSource, inCount > 0 ? static_cast<unsigned>(inCount) : 0, inSourceOffset);
    }
    void Shift(int inCount) { mTail.Shift(inCount); }
    void ShiftAll(unsigned inCount) { mTail.ShiftAll(inCount); }
    void AppendCircular(const float* inSource, unsigned inCount, int inSourceOffset)
    {
        mTail.AppendCircular(&inSource, inCount, inSourceOffset);
    }
    void ExtractCircular(float* outDest, unsigned inCount, int inPosition, int inDestOffset) const
    {
        mTail.ExtractCircular(&outDest, inCount, inPosition, inDestOffset);
    }

    /// The row, `inOffset` samples in
    [[nodiscard]] float* MakeOffsetPointer(unsigned inOffset) { return GetPointer() + inOffset; }
    [[nodiscard]] float* GetPointer() { return mTail.GetPointer()[0]; }
    [[nodiscard]] const float* GetPointer() const { return mTail.GetPointer()[0]; }
    operator float*() { return GetPointer(); }
    operator const float*() const { return GetPointer(); }

    /// Always 0: a single row has no rate.
    [[nodiscard]] int GetSamplingRate() const { return mTail.GetSamplingRate(); }
    [[nodiscard]] unsigned GetMaxBlockSize() const { return mTail.GetMaxBlockSize(); }
    [[nodiscard]] unsigned GetTailSize() const { return mTail.GetTailSize(); }
    [[nodiscard]] unsigned GetTotalSize() const { return mTail.GetTotalSize(); }

private:
    DataTailT<float> mTail;
};

} // namespace tessaro
