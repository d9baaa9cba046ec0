#include <tessaro/filters/FIR.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

#include <brisken/Utility.h>
#include <brisken/transform/FFT.h>
#include <tessaro/filters/AnalogDesign.h>
#include <tessaro/filters/FilterResponse.h>
#include <tessaro/frame/AudioProcessor.h>
#include <tessaro/utility/PhaseUnwrap.h>

#include "filters/NodeResponse.h"

namespace tessaro {

namespace {

namespace kernels = brisken::utility;
namespace transform = brisken::transform;
using ombrel::utility::checked_value;

constexpr int kWindowAsItIs = 2;
constexpr int kSectionOrder = 2;
constexpr unsigned kSectionValues = 6;
constexpr double kSmallestMagnitude = 1e-20;
/// Keeps angles and delays of silent bins off 0/0
constexpr float kSilence = 1e-6f;

bool IsTransformSize(unsigned inSize)
{
    return inSize >= 2 && std::has_single_bit(inSize);
}

/// A transform of one size with its work memory
template <typename State>
class Transform
{
public:
    explicit Transform(unsigned inSize)
    {
        if (!IsTransformSize(inSize)) {
            return;
        }
        State* made = nullptr;
        transform::FFTInit(&made, static_cast<unsigned>(std::bit_width(inSize)) - 1);
        mState.reset(made);
        unsigned bytes = 0;
        transform::FFTGetBufSize(made, &bytes);
        mWork.resize(bytes);
    }

    [[nodiscard]] bool IsReady() const { return mState != nullptr; }
    [[nodiscard]] const State* Get() const { return mState.get(); }
    [[nodiscard]] unsigned char* GetWork() { return mWork.data(); }

private:
    struct Free
    {
        void operator()(State* inState) const { transform::FFTFree(inState); }
    };

    std::unique_ptr<State, Free> mState;
    std::vector<unsigned char> mWork;
};

using RealTransform = Transform<brisken::FFTState_Float>;
using ComplexTransform = Transform<brisken::FFTState_Complex_Double_Deinterleaved>;

template <typename Transforms>
checked_value<unsigned int> FindSize(const std::vector<unsigned int>& inSizes, const Transforms& inTransforms,
                                     unsigned inSize)
{
    const auto found = std::find(inSizes.begin(), inSizes.end(), inSize);
    const auto index = static_cast<std::size_t>(found - inSizes.begin());
    if (found == inSizes.end() || !inTransforms[index].IsReady()) {
        return {};
    }
    return static_cast<unsigned int>(index);
}

/// Bins of `value(bin)`, written or multiplied into what is there
template <typename Function>
void FillBins(float* outMagnitude, unsigned inN, bool inAccumulate, Function inValue)
{
    for (unsigned bin = 0; bin <= inN / 2; ++bin) {
        const auto value = static_cast<float>(inValue(bin));
        outMagnitude[bin] = inAccumulate ? outMagnitude[bin] * value : value;
    }
}

/// The delay that a phase over `inBins` bins stands for, in samples: the difference of its neighbours at each
/// bin, one-sided at both ends.
void DelayOfPhase(const float* inPhase, unsigned inBins, unsigned inN, float* outDelay)
{
    const auto samplesPerRadian = static_cast<float>(inN / (2.0 * std::numbers::pi));
    for (unsigned bin = 0; bin < inBins; ++bin) {
        const unsigned before = bin > 0 ? bin - 1 : 0;
        const unsigned behind = std::min(bin + 1, inBins - 1);
        const auto distance = static_cast<float>(std::max(behind - before, 1u));
        outDelay[bin] = (inPhase[before] - inPhase[behind]) / distance * samplesPerRadian;
    }
}

} // namespace

struct FIR::Transforms
{
    std::vector<RealTransform> mReal;
    std::vector<ComplexTransform> mComplex;
};

FIR::FIR(std::vector<unsigned int>& inFFTSizes, std::vector<unsigned int>& inMinPhaseSizes)
    : mFFTSizes(inFFTSizes), mMinPhaseSizes(inMinPhaseSizes), mTransforms(std::make_unique<Transforms>())
{
    for (const unsigned size : mFFTSizes) {
        mTransforms->mReal.emplace_back(size);
    }
    for (const unsigned size : mMinPhaseSizes) {
        mTransforms->mComplex.emplace_back(size);
    }
}

FIR::~FIR() = default;

checked_value<unsigned int> FIR::getFFTStateIndex(unsigned inSize) const
{
    return FindSize(mFFTSizes, mTransforms->mReal, inSize);
}

checked_value<unsigned int> FIR::getDHTStateIndex(unsigned inSize) const
{
    return FindSize(mMinPhaseSizes, mTransforms->mComplex, inSize);
}

void FIR::BuildFreqResp(const NodeFR* inNodes, unsigned inCount, float* outMagnitude, unsigned inN,
                        float inSampleRate, bool inDecibels)
{
    const unsigned bins = inN / 2 + 1;
    kernels::Zero(bins, outMagnitude);
    for (unsigned node = 0; node < inCount; ++node) {
        AddNode(inNodes[node], outMagnitude, inN, inSampleRate);
    }
    if (!inDecibels) {
        std::transform(outMagnitude, outMagnitude + bins, outMagnitude, &AudioProcessor::DB2Amp);
    }
}

void FIR::BuildAnalogFreqResp(const double* inCoefficients, unsigned inSections, float* outMagnitude,
                              unsigned inN, float inSampleRate, bool inAccumulate)
{
    FillBins(outMagnitude, inN, inAccumulate, [=](unsigned inBin) {
        const double frequency = static_cast<double>(inBin) * inSampleRate / inN;
        double product = 1.0;
        for (unsigned section = 0; section < inSections; ++section) {
            product *= EvaluateAnalogMagnitudeResponse(inCoefficients + section * kSectionValues, frequency);
        }
        return product;
    });
}

void FIR::BuildDigitalIIRFreqResp(const double* inCoefficients, unsigned inSections, float* outMagnitude,
                                  unsigned inN, float, bool inAccumulate)
{
    FillBins(outMagnitude, inN, inAccumulate, [=](unsigned inBin) {
        const double radians = 2.0 * std::numbers::pi * inBin / inN;
        return GetMagnitudeResponse(radians, inCoefficients, kSectionOrder, static_cast<int>(inSections));
    });
}

void FIR::DesignFIR(const float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                    const float* inPhase, unsigned inTaps)
{
    const auto index = getFFTStateIndex(inN);
    if (!index) {
        RunDesignFIR(inMagnitude, inN, inKaiserParameter, outTaps, inPhase, inTaps);
        return;
    }
    mSpectrum.resize(inN + 2);
    mTime.resize(inN);
    for (unsigned bin = 0; bin <= inN / 2; ++bin) {
        mSpectrum[2 * bin] = inPhase ? inMagnitude[bin] * std::cos(inPhase[bin]) : inMagnitude[bin];
        mSpectrum[2 * bin + 1] = inPhase ? inMagnitude[bin] * std::sin(inPhase[bin]) : 0.0f;
    }
    auto& real = mTransforms->mReal[index.GetValue()];
    transform::FFTInv(mSpectrum.data(), mTime.data(), real.Get(), real.GetWork());
    const unsigned count = inTaps != 0 ? inTaps : inN - 1;
    const unsigned before = inTaps != 0 ? inTaps / 2 : inN / 2 - 1;
    // Time runs in a circle of N: what comes before 0 is at its end.
    for (unsigned i = 0; i < count; ++i) {
        outTaps[i] = mTime[(inN - before % inN + i) % inN];
    }
    if (inTaps == 0) {
        outTaps[inN - 1] = 0.0f;
    }
    AudioProcessor::ApplyKaiserWindow(outTaps, static_cast<int>(count), inKaiserParameter, kWindowAsItIs);
}

void FIR::DesignFIRMinPhase(float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                            unsigned inMinPhaseSize)
{
    if (IsTransformSize(inN) && getDHTStateIndex(inMinPhaseSize)) {
        DesignFIR(inMagnitude, inN, inKaiserParameter, outTaps, nullptr, 0);
        ConvertToMinPhase(outTaps, inN - 1, inMinPhaseSize);
    }
}

void FIR::DesignFIRMixedPhase(const float* inMinimum, const float* inLinear, const float* inMaximum,
                              unsigned inN, float inKaiserParameter, float* outTaps)
{
    RealTransform product(2 * inN);
    if (!product.IsReady() || !IsTransformSize(inN)) {
        return;
    }
    std::vector<float> linear(2 * inN);
    std::vector<float> minimum(2 * inN);
    std::vector<float> maximum(2 * inN);
    DesignFIR(inLinear, inN, inKaiserParameter, linear.data(), nullptr, 0);
    DesignFIR(inMinimum, inN, inKaiserParameter, minimum.data(), nullptr, 0);
    DesignFIR(inMaximum, inN, inKaiserParameter, maximum.data(), nullptr, 0);
    ConvertToMinPhase(minimum.data(), inN - 1, 4 * inN);
    ConvertToMinPhase(maximum.data(), inN - 1, 4 * inN);
    kernels::Flip_InPlace(inN - 1, maximum.data());

    const auto transformRow = [&](const std::vector<float>& inRow) {
        std::vector<std::complex<float>> spectrum(inN + 1);
        transform::FFTFwd(inRow.data(), reinterpret_cast<float*>(spectrum.data()), product.Get(),
                          product.GetWork());
        return spectrum;
    };
    auto spectrum = transformRow(linear);
    kernels::Mul_InPlace(inN + 1, transformRow(minimum).data(), spectrum.data());
    kernels::Mul_InPlace(inN + 1, transformRow(maximum).data(), spectrum.data());
    transform::FFTInv(reinterpret_cast<const float*>(spectrum.data()), linear.data(), product.Get(),
                      product.GetWork());
    // The three in a row reach over 3 N; what is beyond 2 N comes round to the start, on purpose.
    std::copy_n(linear.begin() + (inN - 2), inN - 1, outTaps);
    outTaps[inN - 1] = 0.0f;
    AudioProcessor::ApplyKaiserWindow(outTaps, static_cast<int>(inN) - 1, inKaiserParameter, kWindowAsItIs);
}

void FIR::DesignFIRMixedPhase(const NodeFR* inNodes, unsigned inCount, unsigned inN, float inSampleRate,
                              float inKaiserParameter, float* outTaps)
{
    const auto build = [&](auto inShareOf) {
        std::vector<NodeFR> nodes(inNodes, inNodes + inCount);
        for (auto& node : nodes) {
            node.mScale *= inShareOf(node.mPhaseMix);
        }
        std::vector<float> magnitude(inN / 2 + 1);
        BuildFreqResp(nodes.data(), inCount, magnitude.data(), inN, inSampleRate, false);
        return magnitude;
    };
    const auto linear = build([](float inMix) { return 1.0f - std::fabs(inMix); });
    const auto minimum = build([](float inMix) { return std::max(-inMix, 0.0f); });
    const auto maximum = build([](float inMix) { return std::max(inMix, 0.0f); });
    DesignFIRMixedPhase(minimum.data(), linear.data(), maximum.data(), inN, inKaiserParameter, outTaps);
}

void FIR::ConvertToMinPhase(float* ioTaps, unsigned inCount, unsigned inSize)
{
    std::vector<double> taps(ioTaps, ioTaps + inCount);
    ConvertToMinPhase(taps.data(), inCount, inSize);
    std::transform(taps.begin(), taps.end(), ioTaps, [](double inTap) { return static_cast<float>(inTap); });
}

void FIR::ConvertToMinPhase(double* ioTaps, unsigned inCount, unsigned inSize)
{
    const auto index = getDHTStateIndex(inSize);
    if (!index) {
        return;
    }
    auto& complex = mTransforms->mComplex[index.GetValue()];
    const unsigned count = std::min(inCount, inSize);
    mDoubles.assign(std::size_t{inSize} * 3, 0.0);
    double* const re = mDoubles.data();
    double* const im = re + inSize;
    double* const magnitude = im + inSize;
    std::copy_n(ioTaps, count, re);
    transform::FFTFwd(re, im, re, im, complex.Get(), complex.GetWork());
    kernels::Magnitude(inSize, re, im, magnitude);
    kernels::Threshold_LT_InPlace(inSize, magnitude, kSmallestMagnitude);

    // The cepstrum, of which the half that stands for negative times is turned over: its transform is the
    // phase.
    kernels::Ln(inSize, magnitude, re);
    kernels::Zero(inSize, im);
    transform::FFTInv(re, im, re, im, complex.Get(), complex.GetWork());
    kernels::MulConstant_InPlace(inSize - inSize / 2, re + inSize / 2, -1.0);
    transform::FFTFwd(re, im, re, im, complex.Get(), complex.GetWork());
    for (unsigned bin = 0; bin < inSize; ++bin) {
        const double phase = im[bin];
        re[bin] = magnitude[bin] * std::cos(phase);
        im[bin] = magnitude[bin] * std::sin(phase);
    }
    transform::FFTInv(re, im, re, im, complex.Get(), complex.GetWork());
    std::copy_n(re, count, ioTaps);
}

/// The spectrum of the taps, or of each times its index, padded to N. False if N is not in the list.
bool FIR::TransformTaps(const float* inTaps, unsigned inCount, unsigned inN, std::vector<float>& outSpectrum,
                        bool inTimesIndex)
{
    const auto index = getFFTStateIndex(inN);
    if (!index) {
        return false;
    }
    mTime.assign(inN, 0.0f);
    std::copy_n(inTaps, std::min(inCount, inN), mTime.begin());
    for (unsigned i = 0; i < inN && inTimesIndex; ++i) {
        mTime[i] *= static_cast<float>(i);
    }
    outSpectrum.resize(inN + 2);
    auto& real = mTransforms->mReal[index.GetValue()];
    transform::FFTFwd(mTime.data(), outSpectrum.data(), real.Get(), real.GetWork());
    return true;
}

void FIR::GetFreqResp(const float* inTaps, unsigned inCount, unsigned inN, float* outMagnitude,
                      float* outPhase, bool inUnwrap, float* outGroupDelay)
{
    if (!TransformTaps(inTaps, inCount, inN, mSpectrum, false)) {
        return;
    }
    const unsigned bins = inN / 2 + 1;
    if (outMagnitude != nullptr) {
        kernels::Magnitude(bins, reinterpret_cast<const std::complex<float>*>(mSpectrum.data()),
                           outMagnitude);
    }
    if (outPhase == nullptr && outGroupDelay == nullptr) {
        return;
    }
    std::vector<float> phase(bins);
    for (unsigned bin = 0; bin < bins; ++bin) {
        phase[bin] = std::atan2(mSpectrum[2 * bin + 1], mSpectrum[2 * bin]);
    }
    if (outPhase != nullptr && !inUnwrap) {
        std::copy(phase.begin(), phase.end(), outPhase);
    }
    utils::UnwrapPhase(bins, phase.data());
    if (outPhase != nullptr && inUnwrap) {
        std::copy(phase.begin(), phase.end(), outPhase);
    }
    if (outGroupDelay != nullptr) {
        DelayOfPhase(phase.data(), bins, inN, outGroupDelay);
    }
}

void FIR::GetPhaseResponse(const float* inTaps, unsigned inCount, unsigned inN, float* outPhase,
                           bool inUnwrap)
{
    if (!TransformTaps(inTaps, inCount, inN, mSpectrum, false)) {
        return;
    }
    const unsigned bins = inN / 2 + 1;
    for (unsigned bin = 0; bin < bins; ++bin) {
        outPhase[bin] = std::atan2(mSpectrum[2 * bin + 1], mSpectrum[2 * bin] + kSilence);
    }
    if (inUnwrap) {
        utils::UnwrapPhase(bins, outPhase);
    }
}

void FIR::GetGroupDelay(const float* inTaps, unsigned inCount, unsigned inN, float* outGroupDelay,
                        float inSilentValue)
{
    if (!TransformTaps(inTaps, inCount, inN, mSpectrum, false) ||
        !TransformTaps(inTaps, inCount, inN, mSecondSpectrum, true)) {
        return;
    }
    for (unsigned bin = 0; bin <= inN / 2; ++bin) {
        const float re = mSpectrum[2 * bin];
        const float im = mSpectrum[2 * bin + 1];
        const float product = re * mSecondSpectrum[2 * bin] + im * mSecondSpectrum[2 * bin + 1];
        outGroupDelay[bin] = (product + kSilence * inSilentValue) / (re * re + im * im + kSilence);
    }
}

void FIR::RunBuildFreqResp(const NodeFR* inNodes, unsigned inCount, float* outMagnitude, unsigned inN,
                           float inSampleRate, bool inDecibels)
{
    std::vector<unsigned> none;
    FIR(none, none).BuildFreqResp(inNodes, inCount, outMagnitude, inN, inSampleRate, inDecibels);
}

void FIR::RunDesignFIR(const float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                       const float* inPhase, unsigned inTaps)
{
    if (!IsTransformSize(inN)) {
        return;
    }
    std::vector<unsigned> sizes{inN};
    std::vector<unsigned> none;
    FIR(sizes, none).DesignFIR(inMagnitude, inN, inKaiserParameter, outTaps, inPhase, inTaps);
}

void FIR::RunDesignFIRMinPhase(float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                               unsigned inMinPhaseSize)
{
    std::vector<unsigned> sizes{inN};
    std::vector<unsigned> minPhaseSizes{inMinPhaseSize};
    FIR(sizes, minPhaseSizes).DesignFIRMinPhase(inMagnitude, inN, inKaiserParameter, outTaps, inMinPhaseSize);
}

void FIR::RunGetFreqResp(const float* inTaps, unsigned inCount, unsigned inN, float* outMagnitude,
                         float* outPhase, bool inUnwrap, float* outGroupDelay)
{
    std::vector<unsigned> sizes{inN};
    std::vector<unsigned> none;
    FIR(sizes, none).GetFreqResp(inTaps, inCount, inN, outMagnitude, outPhase, inUnwrap, outGroupDelay);
}

} // namespace tessaro
