#include <tessaro/filters/EqualizerSections.h>

#include <algorithm>

#include "filters/SectionDesign.h"

namespace tessaro {

namespace {

/// Limits of `fPARA` and `dPARA`, over the sample rate.
constexpr double kLowestRatio = 1e-5;
constexpr double kHighestFrequencyRatio = 0.99999;
constexpr double kHighestBandwidthRatio = 0.49999;
/// Where `dHISHELVE2` puts frequencies from half the sample rate up.
constexpr double kBelowHalf = 0.4999999;

double Ratio(float inFrequency, float inSampleRate)
{
    return static_cast<double>(inFrequency) / static_cast<double>(inSampleRate);
}

double BandwidthRatio(float inFrequency, float inQ, float inSampleRate)
{
    return static_cast<double>(inFrequency) / static_cast<double>(inQ) / static_cast<double>(inSampleRate);
}

SectionCoefficients<double> LimitedPeak(float inSampleRate, float inFrequency, float inGain, float inQ)
{
    const double frequency =
        std::clamp(Ratio(inFrequency, inSampleRate), kLowestRatio, kHighestFrequencyRatio);
    const double bandwidth =
        std::clamp(BandwidthRatio(inFrequency, inQ, inSampleRate), kLowestRatio, kHighestBandwidthRatio);
    return design::Peak(frequency, bandwidth, inGain);
}

SectionCoefficients<double> FreePeak(float inSampleRate, float inFrequency, float inGain, float inQ)
{
    return design::Peak(Ratio(inFrequency, inSampleRate), BandwidthRatio(inFrequency, inQ, inSampleRate),
                        inGain);
}

} // namespace

// The bandwidth stays what it was: parametric sections alone do not store it.
void fPARA::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(LimitedPeak(inSampleRate, inFrequency, inGain, inQ));
}

void dPARA::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(LimitedPeak(inSampleRate, inFrequency, inGain, inQ));
}

void fNotch::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    TakeDesign(FreePeak(inSampleRate, inFrequency, inGain, inQ));
}

void dNotch::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    TakeDesign(FreePeak(inSampleRate, inFrequency, inGain, inQ));
}

void fHISHELVE::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(design::FirstOrderHighShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void dHISHELVE::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(design::FirstOrderHighShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void fLOSHELVE::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(design::FirstOrderLowShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void dLOSHELVE::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float, float, float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    TakeDesign(design::FirstOrderLowShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void fHISHELVE2::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float,
                                   float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    TakeDesign(design::SecondOrderHighShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void dHISHELVE2::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float,
                                   float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    const double frequency = Ratio(inFrequency, inSampleRate);
    TakeDesign(design::SecondOrderHighShelf(frequency >= 0.5 ? kBelowHalf : frequency, inGain));
}

void fLOSHELVE2::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float,
                                   float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    TakeDesign(design::SecondOrderLowShelf(Ratio(inFrequency, inSampleRate), inGain));
}

void dLOSHELVE2::SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float,
                                   float)
{
    StoreParameters(inSampleRate, inFrequency, inGain);
    mBandwidth = inFrequency / inQ;
    TakeDesign(design::SecondOrderLowShelf(Ratio(inFrequency, inSampleRate), inGain));
}

} // namespace tessaro
