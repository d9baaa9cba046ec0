#include <tessaro/utility/FFTPool.h>

#include <memory>

namespace tessaro {

namespace {

struct StateFree
{
    void operator()(brisken::FFTState_Float* inState) const { brisken::transform::FFTFree(inState); }
};

} // namespace

FFTPool::FFTPool(const std::string& inName) : mName(inName) {}

FFTPool::~FFTPool()
{
    FreeStatesExcept({});
}

FFTPool::FFTPool(const FFTPool& inOther)
    : mName(inOther.mName), mStates(inOther.mStates), mWork(inOther.mWork), mBuffer(inOther.mBuffer)
{
}

FFTPool& FFTPool::operator=(const FFTPool& inOther)
{
    if (this != &inOther) {
        auto name = inOther.mName;
        mWork = inOther.mWork;
        mName.swap(name);
        FreeStatesExcept(inOther.mStates);
        mStates = inOther.mStates;
        mBuffer = inOther.mBuffer;
    }
    return *this;
}

void FFTPool::AddOrder(unsigned inOrder)
{
    if (inOrder >= kNumOrders || mStates[inOrder]) {
        return;
    }
    brisken::FFTState_Float* made = nullptr;
    brisken::transform::FFTInit(&made, inOrder);
    std::unique_ptr<brisken::FFTState_Float, StateFree> state(made);
    unsigned bytes = 0;
    brisken::transform::FFTGetBufSize(made, &bytes);
    if (mWork.size() < bytes) {
        mWork.resize(bytes);
    }
    mBuffer = mWork.empty() ? nullptr : mWork.data();
    mStates[inOrder] = state.release();
    mOwned |= std::uint32_t{1} << inOrder;
}

/// States that stand in `inKept` too stay, and stay owned: a pool may be assigned from its own copy.
void FFTPool::FreeStatesExcept(const std::array<brisken::FFTState_Float*, kNumOrders>& inKept)
{
    for (unsigned order = 0; order < kNumOrders; ++order) {
        const auto bit = std::uint32_t{1} << order;
        if ((mOwned & bit) != 0 && mStates[order] != inKept[order]) {
            brisken::transform::FFTFree(mStates[order]);
            mOwned &= ~bit;
        }
    }
}

} // namespace tessaro
