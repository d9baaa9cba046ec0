#include <tessaro/filters/IZFIRFilter.h>

#include <algorithm>

#include <brisken/utility/Copy.h>

namespace tessaro {

IZFIRFilter::IZFIRFilter(int inBlockSize) : mBlockSize(std::max(inBlockSize, 0))
{
    Allocate(static_cast<unsigned>(mBlockSize));
}

IZFIRFilter::IZFIRFilter(const float* inTaps, unsigned inCount, int inBlockSize) : IZFIRFilter(inBlockSize)
{
    SetCoefficients(inTaps, inCount, false);
}

IZFIRFilter::IZFIRFilter(const IZFIRFilter& inOther) : IZFIRFilter(inOther.mBlockSize)
{
    *this = inOther;
}

IZFIRFilter& IZFIRFilter::operator=(const IZFIRFilter& inOther)
{
    if (this != &inOther) {
        mBlockSize = inOther.mBlockSize;
        mInputLine = inOther.mInputLine;
        mOutputLine = inOther.mOutputLine;
        mTaps.clear();
        mState.reset();
        SetCoefficients(inOther.mTaps.data(), static_cast<unsigned>(inOther.mTaps.size()), false);
    }
    return *this;
}

IZFIRFilter::IZFIRFilter(IZFIRFilter&&) noexcept = default;
IZFIRFilter& IZFIRFilter::operator=(IZFIRFilter&&) noexcept = default;
IZFIRFilter::~IZFIRFilter() = default;

void IZFIRFilter::Allocate(unsigned inCount)
{
    mInputLine.resize(std::max<std::size_t>(mInputLine.size(), inCount));
    mOutputLine.resize(mInputLine.size());
}

void IZFIRFilter::SetCoefficients(const float* inTaps, unsigned inCount, bool inKeepState)
{
    if (inTaps == nullptr || inCount == 0) {
        return;
    }
    if (!mState || inCount != mTaps.size()) {
        brisken::FIRState_Float* made = nullptr;
        brisken::filter::FIRInit(&made, inTaps, inCount, nullptr);
        mState.reset(made);
    } else {
        brisken::filter::FIRSetTaps(mState.get(), inTaps);
    }
    mTaps.assign(inTaps, inTaps + inCount);
    if (!inKeepState) {
        brisken::filter::FIRSetDlyLine(mState.get(), nullptr);
    }
}

void IZFIRFilter::Process(unsigned inCount, const float* inInput, float* outOutput)
{
    if (!mState || inCount == 0) {
        return;
    }
    if (mBlockSize == 0) {
        Allocate(inCount);
    }
    const auto block = static_cast<unsigned>(mInputLine.size());
    for (unsigned done = 0; done < inCount;) {
        const unsigned count = std::min(inCount - done, block);
        brisken::utility::Copy(count, inInput + done, mInputLine.data());
        brisken::filter::FIR(mState.get(), count, mInputLine.data(), mOutputLine.data());
        brisken::utility::Copy(count, mOutputLine.data(), outOutput + done);
        done += count;
    }
}

float IZFIRFilter::ProcessSingle(float inSample)
{
    return mState ? brisken::filter::FIR(mState.get(), inSample) : 0.0f;
}

void IZFIRFilter::Reset()
{
    if (mState) {
        brisken::filter::FIRSetDlyLine(mState.get(), nullptr);
    }
}

} // namespace tessaro
