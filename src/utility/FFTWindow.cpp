#include <tessaro/utility/FFTWindow.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <numbers>
#include <utility>

namespace tessaro {

namespace {

/// Kaiser's shape parameter for side lobes `inAttenuation` dB below the main lobe.
double KaiserShapeFor(double inAttenuation)
{
    if (inAttenuation >= 50.0) {
        return 0.1102 * (inAttenuation - 8.7);
    }
    if (inAttenuation > 21.0) {
        return 0.5842 * std::pow(inAttenuation - 21.0, 0.4) + 0.07886 * (inAttenuation - 21.0);
    }
    return 0.0;
}

/// The modified Bessel function of order 0 at the square root of `inSquare`, by its series: the terms are the
/// squares of (x / 2)^k / k!.
double BesselI0OfRoot(double inSquare)
{
    constexpr int kLastTerm = 19;
    double term = 1.0;
    double sum = 1.0;
    for (int k = 1; k <= kLastTerm; ++k) {
        term *= inSquare / (4.0 * k * k);
        sum += term;
    }
    return sum;
}

/// inA0 - inA1 cos(pi x) + inA2 cos(2 pi x) - inA3 cos(3 pi x), by the one cosine.
double CosineSum(double inX, double inA0, double inA1, double inA2 = 0.0, double inA3 = 0.0)
{
    const double cosine = std::cos(inX * std::numbers::pi);
    const double doubled = 2.0 * cosine * cosine - 1.0;
    const double tripled = cosine * (2.0 * doubled - 1.0);
    return inA0 - inA1 * cosine + inA2 * doubled - inA3 * tripled;
}

/// The rising half of a window: value 0 at step 0, the peak at step `inHalf`.
class Rise
{
public:
    Rise(unsigned inType, std::int64_t inHalf, double inAttenuation)
        : mType(inType), mHalf(static_cast<double>(inHalf))
    {
        const double shape = KaiserShapeFor(inType == fftwindow::kKaiser140   ? 140.0
                                            : inType == fftwindow::kKaiser180 ? 180.0
                                                                              : inAttenuation);
        mKaiserSquare = shape * shape;
        mKaiserPeak = BesselI0OfRoot(mKaiserSquare);
    }

    double operator()(std::int64_t inStep) const
    {
        if (inStep == 0) {
            return 0.0;
        }
        switch (mType) {
        case fftwindow::kHamming:
        case fftwindow::kBlackmanHarris:
        case fftwindow::kKaiser140:
        case fftwindow::kKaiser180:
        case fftwindow::kKaiser:
            return FromPedestal(mHalf > 1.0 ? static_cast<double>(inStep - 1) / (mHalf - 1.0) : 1.0);
        default:
            return FromZero(static_cast<double>(inStep) / mHalf);
        }
    }

private:
    /// The types whose edge is not 0. It stands at step 1.
    double FromPedestal(double inX) const
    {
        switch (mType) {
        case fftwindow::kHamming:
            return CosineSum(inX, 0.54, 0.46);
        case fftwindow::kBlackmanHarris:
            return CosineSum(inX, 0.35875, 0.48829, 0.14128, 0.01168);
        default:
            return BesselI0OfRoot(mKaiserSquare * (1.0 - (1.0 - inX) * (1.0 - inX))) / mKaiserPeak;
        }
    }

    double FromZero(double inX) const
    {
        switch (mType) {
        case fftwindow::kTriangular:
            return inX;
        case fftwindow::kHann:
            return CosineSum(inX, 0.5, 0.5);
        case fftwindow::kBlackman:
            return CosineSum(inX, 0.42, 0.5, 0.08);
        case fftwindow::kWelch:
            return 1.0 - (1.0 - inX) * (1.0 - inX);
        default:
            return 0.0;
        }
    }

    unsigned mType;
    double mHalf;
    double mKaiserSquare;
    double mKaiserPeak;
};

/// Half the even number of values that a window takes of `inExtent`, 0 for a width that makes no sense.
/// Limited so that a window far wider than its place remains a number of steps.
std::int64_t HalfFor(std::int64_t inExtent, double inWidth)
{
    constexpr double kMostSteps = 1e15;
    const double half = std::trunc(static_cast<double>(inExtent) * inWidth * 0.5);
    return half >= 1.0 ? static_cast<std::int64_t>(std::min(half, kMostSteps)) : 0;
}

/// Fills `outWindow`, zeros so far, up to the peak at `inPeak`; what would begin before the array is left
/// out.
void FillRise(double* outWindow, int inPeak, double inWidth, const Rise& inRise, std::int64_t inHalf)
{
    const double scale = static_cast<float>(1.0 / inWidth);
    for (int i = static_cast<int>(std::max<std::int64_t>(0, inPeak - inHalf)); i <= inPeak; ++i) {
        outWindow[i] = inRise(inHalf - inPeak + i) * scale;
    }
}

void MakeSymmetric(double* ioWindow, int inLength, unsigned inFlags)
{
    const int middle = inLength / 2;
    if (inFlags & fftwindow::kFalling) {
        for (int i = 0; i <= middle && i < inLength - i; ++i) {
            std::swap(ioWindow[i], ioWindow[inLength - i]);
        }
    } else if (inFlags & fftwindow::kFull) {
        for (int i = 1; i <= middle; ++i) {
            ioWindow[middle + i] = ioWindow[middle - i];
        }
    }
}

template <typename T>
void Store(const double* inWindow, int inLength, unsigned inFlags, T* ioOutput)
{
    for (int i = 0; i < inLength; ++i) {
        const double factor = (inFlags & fftwindow::kMultiply) ? static_cast<double>(ioOutput[i]) : 1.0;
        ioOutput[i] = static_cast<T>(factor * inWindow[i]);
    }
    if (inFlags & fftwindow::kReciprocal) {
        for (int i = 0; i < inLength; ++i) {
            ioOutput[i] = ioOutput[i] == T{0} ? T{0} : T{1} / ioOutput[i];
        }
    }
}

} // namespace

bool GetFFTWindow(void* outWindow, int inLength, double inWidth, unsigned inFlags, double inAttenuation)
{
    using namespace fftwindow;
    if (inLength <= 0) {
        return true;
    }
    // Two more than the length: the peak of a half window lies behind its end.
    const std::unique_ptr<double[]> window(
        new (std::nothrow) double[static_cast<std::size_t>(inLength) + 2]());
    if (!window) {
        return false;
    }
    const bool isHalf = (inFlags & (kFalling | kRising)) != 0;
    const auto half = HalfFor(isHalf ? std::int64_t{2} * inLength : inLength, inWidth);
    if (half > 0 && (isHalf || (inFlags & kFull))) {
        FillRise(window.get(), isHalf ? inLength : inLength / 2, inWidth,
                 Rise(inFlags & kTypeMask, half, inAttenuation), half);
    }
    MakeSymmetric(window.get(), inLength, inFlags);
    if (!outWindow) {
        return true;
    }
    if (inFlags & kDoubles) {
        Store(window.get(), inLength, inFlags, static_cast<double*>(outWindow));
    } else {
        Store(window.get(), inLength, inFlags, static_cast<float*>(outWindow));
    }
    return true;
}

} // namespace tessaro
