#include <tessaro/restoration/prediction/RunningAutocorr.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessaro {

namespace {

/// Of products to integers
constexpr float kScale = 1073741824.0f;
constexpr float kLargest = std::numeric_limits<float>::max();

float Product(float inA, float inB)
{
    return std::clamp(inA * inB, -1.0f, 1.0f);
}

} // namespace

void RunningAutocorr::SetMode(unsigned inFirstLag, unsigned inNumLags, unsigned inWindow)
{
    mFirstLag = inFirstLag;
    mNumLags = inNumLags;
    mWindow = inWindow;
    mInverseScale = 1.0 / (double{kScale} * std::max(inWindow, 1u));
    mPast.assign(2 * (std::size_t{inFirstLag} + std::max(inNumLags, 1u)), 0.0f);
    mPastIndex = 0;
    mProducts.assign(std::size_t{inNumLags} * inWindow, 0);
    mWindowIndex = 0;
    mSums.assign(inNumLags, 0);
}

void RunningAutocorr::RunAutocorr(float inSample, float* outCorrelation)
{
    // Finite, so that no product is infinity times 0
    const float sample = std::isnan(inSample) ? 0.0f : std::clamp(inSample, -kLargest, kLargest);
    const std::size_t length = mPast.size() / 2;
    mPastIndex = (mPastIndex == 0 ? length : mPastIndex) - 1;
    mPast[mPastIndex] = sample;
    mPast[mPastIndex + length] = sample;
    const float* const past = mPast.data() + mPastIndex + mFirstLag;
    if (mWindow > 0) {
        AddProducts(sample, past, outCorrelation);
        return;
    }
    for (unsigned lag = 0; lag < mNumLags; ++lag) {
        outCorrelation[lag] = Product(sample, past[lag]);
    }
}

void RunningAutocorr::AddProducts(float inSample, const float* inPast, float* outCorrelation)
{
    std::int32_t* const products = mProducts.data() + mWindowIndex * mNumLags;
    for (unsigned lag = 0; lag < mNumLags; ++lag) {
        const auto product = static_cast<std::int32_t>(std::lrint(kScale * Product(inSample, inPast[lag])));
        mSums[lag] += std::int64_t{product} - products[lag]; // from -1 to 1 is more than 32 bits hold
        products[lag] = product;
        outCorrelation[lag] = static_cast<float>(static_cast<double>(mSums[lag]) * mInverseScale);
    }
    mWindowIndex = mWindowIndex + 1 == mWindow ? 0 : mWindowIndex + 1;
}

} // namespace tessaro
