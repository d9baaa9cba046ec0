#pragma once

#include <tessaro/filters/SectionCoefficients.h>

/// Direct forms of the running sections. Frequencies and bandwidths are given over the sample rate, gains in
/// dB.
namespace tessaro::design {

SectionCoefficients<double> FirstOrderHighShelf(double inFrequency, double inGain);
SectionCoefficients<double> FirstOrderLowShelf(double inFrequency, double inGain);
SectionCoefficients<double> Peak(double inFrequency, double inBandwidth, double inGain);
SectionCoefficients<double> SecondOrderHighShelf(double inFrequency, double inGain);
SectionCoefficients<double> SecondOrderLowShelf(double inFrequency, double inGain);

} // namespace tessaro::design
