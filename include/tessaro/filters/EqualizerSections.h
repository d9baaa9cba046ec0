#pragma once

#include <tessaro/filters/FilterSection.h>

/// The running equalizer sections, each in single (`f`) and double (`d`) precision. Their designs are
/// computed in double precision; the `f` sections round the coefficients.
///
/// Peaks and first-order shelves take their width where the gain has come to half of its dB, and from 6 dB up
/// or down where it is 3 dB short of the whole. At exactly 0 dB they are a straight wire. The peak is that of
/// S. Orfanidis, "Introduction to Signal Processing", 1996, with a given gain at the edges of the band.
/// Frequencies and gains that are not checked may make a section unstable: keep them below half the sample
/// rate.
namespace tessaro {

/// A peak or dip of the given gain. Frequency over sample rate is limited to 1e-5 .. 0.99999, bandwidth over
/// sample rate to 1e-5 .. 0.49999.
class TESSARO_EXPORT fPARA : public fFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fPARA`, in double precision.
class TESSARO_EXPORT dPARA : public dFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// The design of `fPARA` without its limits; a negative gain notches.
class TESSARO_EXPORT fNotch : public fFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fNotch`, in double precision.
class TESSARO_EXPORT dNotch : public dFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// High shelf of first order. Reads no Q.
class TESSARO_EXPORT fHISHELVE : public fFilterSection
{
public:
    fHISHELVE() { setFirstOrder(true); }
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fHISHELVE`, in double precision.
class TESSARO_EXPORT dHISHELVE : public dFilterSection
{
public:
    dHISHELVE() { setFirstOrder(true); }
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// Low shelf of first order. Reads no Q.
class TESSARO_EXPORT fLOSHELVE : public fFilterSection
{
public:
    fLOSHELVE() { setFirstOrder(true); }
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fLOSHELVE`, in double precision.
class TESSARO_EXPORT dLOSHELVE : public dFilterSection
{
public:
    dLOSHELVE() { setFirstOrder(true); }
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// High shelf of second order with a Butterworth slope: Q is stored as a bandwidth but does not change the
/// shape. From 6 dB up or down the corner lies 3 dB from the whole gain, below at half of its dB. The low
/// shelf mirrored around a quarter of the sample rate; the frequency is not limited.
class TESSARO_EXPORT fHISHELVE2 : public fFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fHISHELVE2`, in double precision, with frequencies from half the sample rate up brought just below it.
class TESSARO_EXPORT dHISHELVE2 : public dFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// Low shelf of second order, as `fHISHELVE2` otherwise.
class TESSARO_EXPORT fLOSHELVE2 : public fFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

/// As `fLOSHELVE2`, in double precision.
class TESSARO_EXPORT dLOSHELVE2 : public dFilterSection
{
public:
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2) override;
};

} // namespace tessaro
