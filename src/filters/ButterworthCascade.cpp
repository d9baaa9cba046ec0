#include <tessaro/filters/ButterworthCascade.h>

#include <algorithm>

#include <brisken/filter/SectionCascade.h>

namespace tessaro {

namespace {

/// Values that the coefficients of one polynomial may take up in all sections together
constexpr int kTermLimit = 40;
/// The highest order is this over the number of terms.
constexpr int kOrderLimit = 80;

bool IsBand(int inType)
{
    return inType == ButterworthCascade::kBandpass || inType == ButterworthCascade::kBandstop;
}

/// Calls `inCombine` for each pair of coefficients of two sections.
template <typename Combine>
void ForEachTerm(ButterworthCascade::Section& ioFirst, const ButterworthCascade::Section& inSecond,
                 Combine inCombine)
{
    for (std::size_t i = 0; i < ioFirst.mFeed.size(); ++i) {
        inCombine(ioFirst.mFeed[i], inSecond.mFeed[i]);
    }
    for (std::size_t i = 0; i < ioFirst.mBack.size(); ++i) {
        inCombine(ioFirst.mBack[i], inSecond.mBack[i]);
    }
}

} // namespace

ButterworthCascade::ButterworthCascade() = default;

void ButterworthCascade::Configure(int inOrder, int inType)
{
    const int type = inType < kLowpass || inType > kBandstop ? kLowpass : inType;
    const int terms = IsBand(type) ? 5 : 3;
    const int order = (inOrder / 2) * terms + 1 >= kTermLimit ? kOrderLimit / terms : inOrder;
    if (order == mOrder && type == mType) {
        return;
    }
    mOrder = order;
    mType = type;
    mNumSections = static_cast<std::size_t>(std::max((order + 1) / 2, 1));
    mSections = {};
    mTarget = {};
    Reset();
}

ButterworthCascade::DesignError ButterworthCascade::Retune(double inCutoff, double inUpperCutoff,
                                                           int inSmoothing)
{
    const auto error = Design(mOrder, mType, inCutoff, inUpperCutoff, mTarget.data());
    if (error != kNoError) {
        return error;
    }
    mSmoothingLeft = std::max(inSmoothing, 0);
    if (mSmoothingLeft == 0) {
        mSections = mTarget;
        return kNoError;
    }
    const double perSample = 1.0 / mSmoothingLeft;
    mStep = mTarget;
    for (std::size_t i = 0; i < mNumSections; ++i) {
        ForEachTerm(mStep[i], mSections[i],
                    [=](double& ioStep, double inFrom) { ioStep = (ioStep - inFrom) * perSample; });
    }
    return kNoError;
}

void ButterworthCascade::AdvanceSmoothing(int inCount)
{
    const int count = std::min(inCount, mSmoothingLeft);
    mSmoothingLeft -= count;
    if (mSmoothingLeft == 0) {
        mSections = mTarget;
        return;
    }
    for (std::size_t i = 0; i < mNumSections; ++i) {
        ForEachTerm(mSections[i], mStep[i], [=](double& ioTerm, double inStep) { ioTerm += inStep * count; });
    }
}

void ButterworthCascade::Process(float* ioSamples, int inCount, int inStride)
{
    if (inCount <= 0) {
        return;
    }
    if (mSmoothingLeft != 0) {
        AdvanceSmoothing(inCount);
    }
    if (!IsBand(mType)) {
        ProcessTwoPole(ioSamples, static_cast<unsigned>(inCount), static_cast<unsigned>(inStride));
        return;
    }
    for (std::size_t i = 0; i < mNumSections; ++i) {
        ProcessFourPole(ioSamples, inCount, inStride, mSections[i], mPasts[i]);
    }
}

void ButterworthCascade::ProcessTwoPole(float* ioSamples, unsigned inCount, unsigned inStride)
{
    std::array<brisken::filter::SectionTaps, kMostSections> taps;
    std::array<brisken::filter::SectionMemory, kMostSections> memories;
    for (std::size_t i = 0; i < mNumSections; ++i) {
        const auto& [feed, back] = mSections[i];
        taps[i] = {back[0], back[1], feed[0], feed[1], feed[2]};
        const auto& [input, output] = mPasts[i];
        memories[i] = {input[0], input[1], output[0], output[1]};
    }
    brisken::filter::RunRoundedSectionCascade(
        inCount, ioSamples, inStride, static_cast<unsigned>(mNumSections), taps.data(), memories.data());
    for (std::size_t i = 0; i < mNumSections; ++i) {
        mPasts[i] = {{memories[i].x1, memories[i].x2}, {memories[i].y1, memories[i].y2}};
    }
}

void ButterworthCascade::ProcessFourPole(float* ioSamples, int inCount, int inStride,
                                         const Section& inSection, Past& ioPast)
{
    const auto [b, a] = inSection;
    auto [x, y] = ioPast;
    for (int i = 0; i < inCount; ++i, ioSamples += inStride) {
        const double input = *ioSamples;
        const double output = (b[0] * input + b[1] * x[0] + b[2] * x[1] + b[3] * x[2] + b[4] * x[3]) -
                              (a[3] * y[3] + a[2] * y[2] + a[1] * y[1] + a[0] * y[0]);
        x = {input, x[0], x[1], x[2]};
        y = {output, y[0], y[1], y[2]};
        *ioSamples = static_cast<float>(output);
    }
    ioPast = {x, y};
}

void ButterworthCascade::Reset()
{
    mPasts = {};
    mSections = mTarget;
    mSmoothingLeft = 0;
}

} // namespace tessaro
