#include <tessaro/filters/AnalogDesign.h>

#include <cmath>
#include <complex>

namespace tessaro {

namespace {

constexpr double kTwoPi = 6.283185307179586;

void Store(double* outCoefficients, double in0, double in1, double in2, double in3, double in4, double in5)
{
    outCoefficients[0] = in0;
    outCoefficients[1] = in1;
    outCoefficients[2] = in2;
    outCoefficients[3] = in3;
    outCoefficients[4] = in4;
    outCoefficients[5] = in5;
}

double ShelfAmplitude(double inGain)
{
    return std::pow(10.0f, static_cast<float>(inGain) / 20.0f);
}

double ShelfDamping(double inAmplitude, double inSlope)
{
    return std::sqrt((1.0 / inAmplitude + inAmplitude) * (1.0 / inSlope - 1.0) + 2.0);
}

} // namespace

void AnalogLowpassCoefficients(double* outCoefficients, double inCutoff, double inQ)
{
    const double w0 = kTwoPi * inCutoff;
    Store(outCoefficients, 1.0, 0.0, 0.0, 1.0, 1.0 / (w0 * inQ), 1.0 / (w0 * w0));
}

void AnalogHighpassCoefficients(double* outCoefficients, double inCutoff, double inQ)
{
    const double w0 = kTwoPi * inCutoff;
    Store(outCoefficients, 0.0, 0.0, 1.0, w0 * w0, w0 / inQ, 1.0);
}

void AnalogPeakingEQCoefficients(double* outCoefficients, double inCenter, double inGain, double inQ)
{
    const double a = std::pow(10.0, inGain / 40.0);
    const double w0 = kTwoPi * inCenter;
    Store(outCoefficients, w0 * w0, a * w0 / inQ, 1.0, w0 * w0, w0 / (a * inQ), 1.0);
}

void AnalogLowShelfCoefficients(double* outCoefficients, double inCorner, double inGain, double inSlope)
{
    const double g = ShelfAmplitude(inGain);
    const double k = ShelfDamping(g, inSlope);
    const double w0 = kTwoPi * inCorner;
    Store(outCoefficients, (w0 * g) * (w0 * g), w0 * std::pow(g, 1.5) * k, g, w0 * w0, w0 * std::sqrt(g) * k,
          g);
}

void AnalogHighShelfCoefficients(double* outCoefficients, double inCorner, double inGain, double inSlope)
{
    const double g = ShelfAmplitude(inGain);
    const double k = ShelfDamping(g, inSlope);
    const double w0 = kTwoPi * inCorner;
    Store(outCoefficients, w0 * w0 * g, w0 * std::pow(g, 1.5) * k, g * g, w0 * w0 * g, w0 * std::sqrt(g) * k,
          1.0);
}

void BilinearTransform(double* outCoefficients, const double* inAnalog, int inOrder, double inSampleRate,
                       double inPrewarp)
{
    if (inOrder != 1 && inOrder != 2) {
        return;
    }
    double k = 2.0 * inSampleRate;
    if (inPrewarp > 0.0) {
        const double p = kTwoPi * inPrewarp;
        k = p / std::tan(p / (2.0 * inSampleRate));
    }
    for (int half = 0; half < 2; ++half) {
        const double* in = inAnalog + half * (inOrder + 1);
        double* out = outCoefficients + half * (inOrder + 1);
        const double constant = in[0];
        const double linear = k * in[1];
        if (inOrder == 1) {
            out[0] = constant + linear;
            out[1] = constant - linear;
        } else {
            const double square = k * k * in[2];
            out[0] = constant + linear + square;
            out[1] = 2.0 * constant - 2.0 * square;
            out[2] = constant - linear + square;
        }
    }
    const double scale = outCoefficients[inOrder + 1];
    for (int i = 0; i < 2 * inOrder + 2; ++i) {
        outCoefficients[i] /= scale;
    }
}

double EvaluateAnalogMagnitudeResponse(const double* inAnalog, double inFrequency)
{
    const std::complex<double> s(0.0, kTwoPi * inFrequency);
    const auto numerator = inAnalog[0] + inAnalog[1] * s + inAnalog[2] * s * s;
    const auto denominator = inAnalog[3] + inAnalog[4] * s + inAnalog[5] * s * s;
    return std::abs(numerator / denominator);
}

} // namespace tessaro
