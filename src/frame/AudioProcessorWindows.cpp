#include <tessaro/frame/AudioProcessor.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

#include <brisken/utility/Arithmetic.h>

namespace tessaro {

namespace {

/// What a window is scaled by in the end, as callers ask for it; a window that vanished stays as it is.
double NormalizationFor(int inNormalize, double inMean, double inMeanSquare)
{
    constexpr int kUnitMeanSquare = 0;
    constexpr int kUnitMean = 1;
    if (inNormalize == kUnitMeanSquare && inMeanSquare > 0.0) {
        return 1.0 / std::sqrt(inMeanSquare);
    }
    if (inNormalize == kUnitMean && inMean != 0.0) {
        return 1.0 / inMean;
    }
    return 1.0;
}

template <typename T>
void Scale(T* ioData, int inLength, double inFactor)
{
    if (inFactor != 1.0) {
        brisken::utility::MulConstant_InPlace(static_cast<unsigned>(inLength), ioData,
                                              static_cast<T>(inFactor));
    }
}

/// `inBessel` is the modified Bessel function of order 0 that shapes the window.
template <typename T, typename Bessel>
void ApplyKaiser(T* ioData, int inLength, double inBeta, int inNormalize, Bessel inBessel)
{
    const double center = (inLength - 1) * 0.5;
    const double peak = inBessel(inBeta);
    double sum = 0.0;
    double squareSum = 0.0;
    const auto weigh = [&](int inIndex, double inWeight) {
        ioData[inIndex] = static_cast<T>(ioData[inIndex] * inWeight);
        sum += inWeight;
        squareSum += inWeight * inWeight;
    };
    for (int i = 0; i < inLength - i; ++i) {
        const double x = center > 0.0 ? (i - center) / center : 0.0;
        const double weight = inBessel(inBeta * std::sqrt(std::max(0.0, 1.0 - x * x))) / peak;
        weigh(i, weight);
        if (i < inLength / 2) {
            weigh(inLength - 1 - i, weight);
        }
    }
    if (inLength > 0) {
        Scale(ioData, inLength, NormalizationFor(inNormalize, sum / inLength, squareSum / inLength));
    }
}

} // namespace

void AudioProcessor::HanningWindow(float* outWindow, int inLength, int inNormalize, float inPower)
{
    constexpr float kTurn = 2.0f * 3.1415927f;
    if (inLength <= 0) {
        return;
    }
    double sum = 0.0;
    double squareSum = 0.0;
    for (int i = 0; i < inLength - i; ++i) {
        const float angle = kTurn * (static_cast<float>(i) + 0.5f) / static_cast<float>(inLength);
        const float cosine = (1.0f - std::cos(angle)) * 0.5f;
        const float value = inPower == 1.0f ? cosine : std::pow(cosine, inPower);
        outWindow[i] = outWindow[inLength - 1 - i] = value;
        const double count = i < inLength / 2 ? 2.0 : 1.0;
        sum += count * value;
        squareSum += count * value * value;
    }
    Scale(outWindow, inLength, NormalizationFor(inNormalize, sum / inLength, squareSum / inLength));
}

void AudioProcessor::ApplyKaiserWindow(float* ioData, int inLength, double inBeta, int inNormalize)
{
    ApplyKaiser(ioData, inLength, inBeta, inNormalize, [](double inX) { return BesselI0(inX); });
}

void AudioProcessor::ApplyKaiserWindow(double* ioData, int inLength, double inBeta, int inNormalize)
{
    ApplyKaiser(ioData, inLength, inBeta, inNormalize, [](double inX) { return I0(inX); });
}

void AudioProcessor::KBDWindow(float* outWindow, int inLength, float inAlpha)
{
    const int half = inLength / 2;
    const auto kaiser = [&](int inIndex) {
        const double x = 4.0 * inIndex / inLength - 1.0;
        return BesselI0(std::sqrt(1.0 - x * x) * inAlpha * std::numbers::pi);
    };
    double sum = 0.0;
    for (int i = 0; i < half; ++i) {
        sum += kaiser(i);
        outWindow[i] = static_cast<float>(sum);
    }
    if (inLength > half) {
        sum += kaiser(half);
    }
    for (int i = 0; i < half; ++i) {
        outWindow[i] = outWindow[inLength - 1 - i] = static_cast<float>(std::sqrt(outWindow[i] / sum));
    }
    if (inLength > half + half) {
        outWindow[half] = 1.0f; // the value between the halves of an odd length, where all has been summed
    }
}

/// A quotient of two polynomials in the square, fitted to a relative error below 1e-12 for arguments up
/// to 15. Windows that were designed with it depend on its values beyond that as well.
double AudioProcessor::BesselI0(double inX)
{
    // From the highest power down.
    constexpr double kNumerator[] = {2.10580722890567e-23, 3.80715242345326e-20, 4.794402575483e-17,
                                     4.35125971262668e-14, 3.0093112711296e-11,  1.60224679395361e-8,
                                     6.54858370096785e-6,  0.00202591084143397,  0.463076284721,
                                     75.4337328948189,     8307.92541809429,     571661.130563785,
                                     21641557.2361227,     356644482.244025,     1440482982.27235};
    if (inX == 0.0) {
        return 1.0;
    }
    const double square = inX * inX;
    double numerator = kNumerator[0];
    for (const double* term = kNumerator + 1; term != std::end(kNumerator); ++term) {
        numerator = numerator * square + *term;
    }
    const double denominator =
        ((square - 3076.46912682801) * square + 3476263.32405882) * square - 1440482982.27235;
    return -numerator / denominator;
}

/// The power series, up to a term below 1e-10 of the sum.
double AudioProcessor::I0(double inX)
{
    constexpr int kLastTerm = 49;
    constexpr double kTolerance = 1e-10;
    double term = 1.0;
    double sum = 1.0;
    for (int k = 1; k <= kLastTerm; ++k) {
        term *= inX * 0.5 / k;
        const double square = term * term;
        sum += square;
        if (square < sum * kTolerance) {
            break;
        }
    }
    return sum;
}

} // namespace tessaro
