#include <tessaro/filters/BiquadDesign.h>

#include <algorithm>
#include <cmath>

#include "filters/Identity.h"

namespace tessaro {

namespace {

constexpr double kTwoPi = 6.283185307179586;
/// Pole radius of the DC blocker, and the sample rate to which it belongs.
constexpr double kDCBlockingRadius = 0.995;
constexpr double kDCBlockingSampleRate = 44100.0;

bool IsAboveNyquist(double inSampleRate, double inFrequency)
{
    return inFrequency > inSampleRate / 2.0;
}

void Store(double* outCoefficients, double inB0, double inB1, double inB2, double inA1, double inA2)
{
    outCoefficients[0] = inB0;
    outCoefficients[1] = inB1;
    outCoefficients[2] = inB2;
    outCoefficients[3] = 1.0;
    outCoefficients[4] = inA1;
    outCoefficients[5] = inA2;
}

void StoreFirstOrder(double* outCoefficients, double inB0, double inB1, double inA1)
{
    outCoefficients[0] = inB0;
    outCoefficients[1] = inB1;
    outCoefficients[2] = 1.0;
    outCoefficients[3] = inA1;
}

/// Angle and bandwidth that low-, high- and band-pass share.
struct Resonance
{
    Resonance(double inSampleRate, double inFrequency, double inQ)
        : mCos(std::cos(kTwoPi * inFrequency / inSampleRate)),
          mAlpha(std::sin(kTwoPi * inFrequency / inSampleRate) / (2.0 * inQ))
    {
    }

    void StoreOver(double* outCoefficients, double inB0, double inB1, double inB2) const
    {
        const double a0 = 1.0 + mAlpha;
        Store(outCoefficients, inB0 / a0, inB1 / a0, inB2 / a0, -2.0 * mCos / a0, (1.0 - mAlpha) / a0);
    }

    double mCos;
    double mAlpha;
};

/// What the two shelves share, in the letters of the formula; `mLow` and `mHigh` are `p - m cos w` and
/// `p + m cos w`.
struct Shelf
{
    Shelf(double inSampleRate, double inCorner, double inGain, double inSlope)
        // The whole gain over 20, not half of it: twice the gain in dB, which callers' settings reckon with.
        : mA(std::pow(10.0, inGain / 20.0)), mMinus(mA - 1.0), mPlus(mA + 1.0)
    {
        const double w = kTwoPi * inCorner / inSampleRate;
        mCos = std::cos(w);
        mRoot = std::sin(w) * std::sqrt((mA * mA + 1.0) / inSlope - mMinus * mMinus);
        mLow = mPlus - mMinus * mCos;
        mHigh = mPlus + mMinus * mCos;
    }

    double mA;
    double mMinus;
    double mPlus;
    double mCos;
    double mRoot;
    double mLow;
    double mHigh;
};

/// The bilinear transform's constant over the cutoff, `2 fs / W`.
double FirstOrderRatio(double inSampleRate, double inCutoff, bool inPrewarp)
{
    double w = kTwoPi * inCutoff;
    if (inPrewarp) {
        // Dividing by the sample rate twice leaves the tangent next to its argument, so that this is almost
        // `w`. Stored sounds depend on the cutoffs that come of it.
        w = std::tan(w / inSampleRate / (2.0 * inSampleRate)) * 2.0 * inSampleRate * inSampleRate;
    }
    return 2.0 * inSampleRate / w;
}

} // namespace

void LowpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff, double inQ)
{
    if (IsAboveNyquist(inSampleRate, inCutoff)) {
        IdentityCoefficients(outCoefficients, 2);
        return;
    }
    const Resonance resonance(inSampleRate, inCutoff, inQ);
    const double side = (1.0 - resonance.mCos) / 2.0;
    resonance.StoreOver(outCoefficients, side, 1.0 - resonance.mCos, side);
}

void HighpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff, double inQ)
{
    if (IsAboveNyquist(inSampleRate, inCutoff)) {
        Store(outCoefficients, 0.0, 0.0, 0.0, 0.0, 0.0);
        return;
    }
    const Resonance resonance(inSampleRate, inCutoff, inQ);
    const double side = (1.0 + resonance.mCos) / 2.0;
    resonance.StoreOver(outCoefficients, side, -(1.0 + resonance.mCos), side);
}

void BandpassCoefficients(double* outCoefficients, double inSampleRate, double inCenter, double inQ)
{
    if (IsAboveNyquist(inSampleRate, inCenter)) {
        IdentityCoefficients(outCoefficients, 2);
        return;
    }
    const Resonance resonance(inSampleRate, inCenter, inQ);
    resonance.StoreOver(outCoefficients, resonance.mAlpha, 0.0, -resonance.mAlpha);
}

void LowpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff, bool inPrewarp)
{
    if (2.0 * inCutoff > inSampleRate) {
        StoreFirstOrder(outCoefficients, 1.0, 0.0, 0.0);
    } else if (inCutoff <= 0.0) {
        StoreFirstOrder(outCoefficients, 0.0, 0.0, 0.0);
    } else {
        const double k = FirstOrderRatio(inSampleRate, inCutoff, inPrewarp);
        const double b = 1.0 / (k + 1.0);
        StoreFirstOrder(outCoefficients, b, b, (1.0 - k) / (k + 1.0));
    }
}

void HighpassCoefficients(double* outCoefficients, double inSampleRate, double inCutoff, bool inPrewarp)
{
    if (2.0 * inCutoff > inSampleRate) {
        StoreFirstOrder(outCoefficients, 0.0, 0.0, 0.0);
    } else if (inCutoff <= 0.0) {
        StoreFirstOrder(outCoefficients, 1.0, 0.0, 0.0);
    } else {
        const double k = FirstOrderRatio(inSampleRate, inCutoff, inPrewarp);
        const double b = k / (k + 1.0);
        StoreFirstOrder(outCoefficients, b, -b, (1.0 - k) / (k + 1.0));
    }
}

void PeakingEQCoefficients(double* outCoefficients, double inSampleRate, double inCenter, double inGain,
                           double inQ)
{
    if (IsAboveNyquist(inSampleRate, inCenter)) {
        IdentityCoefficients(outCoefficients, 2);
        return;
    }
    const double a = std::pow(10.0, inGain / 40.0);
    const double w = kTwoPi * inCenter / inSampleRate;
    const double alpha = std::sin(w) / (2.0 * inQ);
    const double d = 1.0 + alpha / a;
    const double middle = -2.0 * std::cos(w) / d;
    Store(outCoefficients, (1.0 + alpha * a) / d, middle, (1.0 - alpha * a) / d, middle,
          (1.0 - alpha / a) / d);
}

void LowShelfCoefficients(double* outCoefficients, double inSampleRate, double inCorner, double inGain,
                          double inSlope)
{
    if (IsAboveNyquist(inSampleRate, inCorner)) {
        IdentityCoefficients(outCoefficients, 2);
        return;
    }
    const Shelf s(inSampleRate, inCorner, inGain, inSlope);
    const double d = s.mHigh + s.mRoot;
    Store(outCoefficients, s.mA * (s.mLow + s.mRoot) / d, 2.0 * s.mA * (s.mMinus - s.mPlus * s.mCos) / d,
          s.mA * (s.mLow - s.mRoot) / d, -2.0 * (s.mMinus + s.mPlus * s.mCos) / d, (s.mHigh - s.mRoot) / d);
}

void HighShelfCoefficients(double* outCoefficients, double inSampleRate, double inCorner, double inGain,
                           double inSlope)
{
    if (IsAboveNyquist(inSampleRate, inCorner)) {
        IdentityCoefficients(outCoefficients, 2);
        return;
    }
    const Shelf s(inSampleRate, inCorner, inGain, inSlope);
    const double d = s.mLow + s.mRoot;
    Store(outCoefficients, s.mA * (s.mHigh + s.mRoot) / d, -2.0 * s.mA * (s.mMinus + s.mPlus * s.mCos) / d,
          s.mA * (s.mHigh - s.mRoot) / d, 2.0 * (s.mMinus - s.mPlus * s.mCos) / d, (s.mLow - s.mRoot) / d);
}

void DCBlockingCoefficients(double* outCoefficients, double inSampleRate)
{
    const double t = inSampleRate * kDCBlockingRadius / kDCBlockingSampleRate;
    Store(outCoefficients, 1.0, -2.0, 1.0, -2.0 * t, t * t);
}

void IdentityCoefficients(double* outCoefficients, int inOrder)
{
    FillIdentity(outCoefficients, inOrder);
}

double MapQToShelfSlope(double inQ, double inGain)
{
    const double a = std::pow(10.0, inGain / 20.0);
    const double q = inQ * inQ;
    return std::clamp((a * a * q + q) / (q + a - 2.0 * a * q + a * a * q), 0.0, 1.0);
}

double MapShelfSlopeToQ(double inSlope, double inGain)
{
    const double a = std::pow(10.0, inGain / 20.0);
    return 1.0 / std::sqrt((1.0 / a + a) * (1.0 / inSlope - 1.0) + 2.0);
}

} // namespace tessaro
