#include <tessaro/frame/DataTailT.h>

#include <algorithm>
#include <cstddef>

#include <brisken/utility/Copy.h>

namespace tessaro {

template <typename T>
DataTailT<T>::DataTailT(int inNumChannels, int inMaxBlockSize)
{
    SetTailMode(inNumChannels, 0, inMaxBlockSize, 0, true);
}

template <typename T>
DataTailT<T>::DataTailT(const DataTailT& inOther)
{
    *this = inOther;
}

template <typename T>
DataTailT<T>& DataTailT<T>::operator=(const DataTailT& inOther)
{
    if (this != &inOther) {
        SetTailMode(inOther.mNumChannels, inOther.mSamplingRate, static_cast<int>(inOther.mMaxBlockSize),
                    static_cast<int>(inOther.mTailSize), true);
        mTotal = 0;
        Append(inOther, inOther.GetTotalSize(), 0);
        mTotal = inOther.mTotal;
    }
    return *this;
}

template <typename T>
DataTailT<T>::~DataTailT() = default;

template <typename T>
void DataTailT<T>::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    SetTailMode(inNumChannels, inSamplingRate, inMaxBlockSize, 0, true);
}

template <typename T>
void DataTailT<T>::SetTailMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize, int inTailSize,
                               bool inClear)
{
    mNumChannels = std::max(inNumChannels, 0);
    mSamplingRate = inSamplingRate;
    mMaxBlockSize = static_cast<unsigned>(std::max(inMaxBlockSize, 0));
    mTailSize = static_cast<unsigned>(std::max(inTailSize, 0));
    mRows.resize(std::max(mRows.size(), static_cast<std::size_t>(mNumChannels)));
    for (auto& row : mRows) {
        row.resize(GetTotalSize());
    }
    RenewPointers();
    if (inClear) {
        Reset();
    }
}

template <typename T>
void DataTailT<T>::ReserveMemory(int inNumChannels, int inNumSamples)
{
    mRows.resize(std::max(mRows.size(), static_cast<std::size_t>(std::max(inNumChannels, 0))));
    for (auto& row : mRows) {
        row.reserve(static_cast<std::size_t>(std::max(inNumSamples, 0)));
        row.resize(std::max<std::size_t>(row.size(), 1));
    }
    RenewPointers();
}

template <typename T>
void DataTailT<T>::RenewPointers()
{
    mPointers.resize(mRows.size());
    mOffsetPointers.resize(mRows.size());
    for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
        mPointers[channel] = mRows[channel].empty() ? nullptr : mRows[channel].data();
    }
}

template <typename T>
void DataTailT<T>::ChangeBufferSize(int inMaxBlockSize)
{
    const int tailSize = static_cast<int>(mTailSize);
    const int blockSize = inMaxBlockSize < 1 - tailSize ? 1 : inMaxBlockSize;
    const Rows tail = SaveRows(mTailSize);
    SetTailMode(mNumChannels, mSamplingRate, blockSize, tailSize, true);
    mTotal = 0;
    AppendRows(tail, 0, mTailSize);
}

template <typename T>
void DataTailT<T>::ChangeTailSize(int inTailSize)
{
    const unsigned oldTail = mTailSize;
    const unsigned count = std::min(mTotal, GetTotalSize());
    const Rows saved = SaveRows(count);
    SetTailMode(mNumChannels, mSamplingRate, static_cast<int>(mMaxBlockSize), inTailSize, true);
    if (mTailSize > oldTail) {
        mTotal = mTailSize - oldTail;
        AppendRows(saved, 0, count);
    } else {
        const unsigned lost = std::min(count, oldTail - mTailSize);
        mTotal = 0;
        AppendRows(saved, lost, count - lost);
    }
}

template <typename T>
typename DataTailT<T>::Rows DataTailT<T>::SaveRows(unsigned inCount) const
{
    Rows saved;
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(mNumChannels); ++channel) {
        saved.emplace_back(mRows[channel].begin(), mRows[channel].begin() + inCount);
    }
    return saved;
}

template <typename T>
void DataTailT<T>::AppendRows(const Rows& inRows, unsigned inOffset, unsigned inCount)
{
    for (std::size_t channel = 0; channel < inRows.size(); ++channel) {
        std::copy_n(inRows[channel].begin() + inOffset, inCount, mPointers[channel] + mTotal);
    }
    mTotal += inCount;
}

template <typename T>
void DataTailT<T>::Reset()
{
    ResetToVal(0);
}

template <typename T>
void DataTailT<T>::ResetToVal(T inValue)
{
    mTotal = mTailSize;
    for (auto& row : mRows) {
        std::fill(row.begin(), row.end(), inValue);
    }
}

template <typename T>
void DataTailT<T>::Append(const T* const* inSource, unsigned inCount, int inSourceOffset)
{
    if (inCount == 0) {
        return;
    }
    for (int channel = 0; channel < mNumChannels; ++channel) {
        brisken::utility::Move(inCount, inSource[channel] + inSourceOffset, mPointers[channel] + mTotal);
    }
    mTotal += inCount;
}

template <typename T>
void DataTailT<T>::Shift(int inCount)
{
    if (inCount <= 0) {
        return;
    }
    const auto count = static_cast<unsigned>(inCount);
    unsigned keep = mTailSize;
    if (keep + count > mTotal) {
        keep = mTotal - std::min(mTotal, count);
    }
    if (keep + count > GetTotalSize()) {
        keep = GetTotalSize() - std::min(GetTotalSize(), count);
    }
    for (int channel = 0; channel < mNumChannels && keep > 0; ++channel) {
        brisken::utility::Move(keep, mPointers[channel] + count, mPointers[channel]);
    }
    mTotal = keep;
}

template <typename T>
void DataTailT<T>::ShiftAll(unsigned inCount)
{
    const unsigned count = std::min(inCount, mTotal);
    if (count == 0) {
        return;
    }
    mTotal -= count;
    for (int channel = 0; channel < mNumChannels; ++channel) {
        brisken::utility::Move(mTotal, mPointers[channel] + count, mPointers[channel]);
    }
}

template <typename T>
void DataTailT<T>::AppendCircular(const T* const* inSource, unsigned inCount, int inSourceOffset)
{
    const unsigned ring = GetTotalSize();
    const unsigned count = std::min(inCount, ring);
    const int offset = inSourceOffset + static_cast<int>(inCount - count);
    const unsigned untilEnd = ring - std::min(ring, mTotal);
    if (count <= untilEnd) {
        Append(inSource, count, offset);
        return;
    }
    Append(inSource, untilEnd, offset);
    mTotal = 0;
    Append(inSource, count - untilEnd, offset + static_cast<int>(untilEnd));
}

template <typename T>
void DataTailT<T>::ExtractCircular(T* const* outDest, unsigned inCount, int inPosition, int inDestOffset,
                                   unsigned inChannel) const
{
    const auto ring = static_cast<std::ptrdiff_t>(GetTotalSize());
    if (ring == 0) {
        return;
    }
    const auto start = static_cast<unsigned>((inPosition % ring + ring) % ring);
    const unsigned untilEnd = std::min(inCount, GetTotalSize() - start);
    for (unsigned channel = 0; channel < static_cast<unsigned>(mNumChannels); ++channel) {
        if (inChannel == kAllChannels || inChannel == channel) {
            T* const dest = outDest[channel] + inDestOffset;
            brisken::utility::Copy(untilEnd, mPointers[channel] + start, dest);
            brisken::utility::Copy(inCount - untilEnd, mPointers[channel], dest + untilEnd);
        }
    }
}

template <typename T>
T* const* DataTailT<T>::MakeOffsetPointer(unsigned inOffset)
{
    for (std::size_t channel = 0; channel < mPointers.size(); ++channel) {
        mOffsetPointers[channel] = mPointers[channel] + inOffset;
    }
    return mOffsetPointers.data();
}

template class DataTailT<float>;
template class DataTailT<double>;

} // namespace tessaro
