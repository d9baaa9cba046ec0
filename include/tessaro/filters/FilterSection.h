#pragma once

#include <cstdint>

#include <tessaro/Export.h>
#include <tessaro/filters/SectionCoefficients.h>

namespace tessaro {

/// A running first- or second-order equalizer section whose changes glide.
///
/// Every change of coefficients becomes a linear ramp over a fixed number of samples, 30 ms at 44100 Hz.
/// Drive it so:
/// - `Setup` for a hard start: new target, no past, and switched on unless the gain is exactly 0 dB;
/// - `SetupCoefficients` for a parameter move while it runs: new target and a ramp to it from wherever the
///   coefficients have got to, nothing else;
/// - `enable` to fade in from a straight wire, `disable` to switch off at once, without a ramp;
/// - then one sample or one row at a time, of either precision. A section that is switched off passes its
///   input on and costs nothing. A new section is switched off and passes everything.
///
/// The ramp lands on the target exactly. Rows during a ramp go sample by sample through the virtual path;
/// rows without one run a loop with coefficients and state in registers. Single samples and rows differ in
/// rounding: a single output sample is always rounded to single precision, *before* it enters the recursion,
/// also in the double branch, whereas a row keeps the recursion in the precision of the branch.
///
/// A section runs as direct form I or, with the state variable flag, as a coupled form on two states, which
/// stands fast changes of coefficients better. Sections of first order always run as direct form.
///
/// Frequencies and sample rates are in Hz, gains in dB, Q is centre over bandwidth. No parameter is checked
/// unless the concrete class says so; with NaN parameters the section keeps ramping towards NaN. A NaN or
/// infinite sample stays in the recursion until `ClearState`.
///
/// Latency 0; the tail is that of the recursion. One thread at a time. Nothing allocates or throws:
/// `[real-time]` throughout. Copyable, by its concrete classes.
class TESSARO_EXPORT FilterSection
{
public:
    virtual ~FilterSection() = default;

    /// Forgets the signal; coefficients and ramp stay.
    virtual void ClearState() = 0;

    /// If switched off: jumps to a straight wire, starts a ramp from it to the target, and switches on. If
    /// switched on, nothing.
    virtual void enable() = 0;
    /// Switches off at once. The ramp stands still meanwhile.
    virtual void disable();
    /// Writes the flag and nothing else: no fade.
    virtual void setEnable(bool inEnabled);
    [[nodiscard]] virtual bool isEnabled() const;

    /// One sample through the section, then one step of the ramp. The output is rounded to single precision;
    /// switched off, the input comes back as it is.
    virtual float processOneSample(float inSample) = 0;
    virtual double dprocessOneSample(double inSample) = 0;

    /// `inCount` samples in place; nothing if that is not above 0. The float branch computes in single
    /// precision on rows of double, too; the double branch rounds only what it stores in rows of float.
    virtual void processInplace(float* ioSamples, int inCount) = 0;
    virtual void dprocessInplace(double* ioSamples, int inCount) = 0;

    /// `inValue` times the linear magnitude of the *target* at `inFrequency`, so that a chain of sections is
    /// drawn by handing on the result. Switched off, `inValue`.
    [[nodiscard]] virtual float computeResponse(float inFrequency, float inValue) const = 0;

    /// A hard start: `SetupCoefficients`, `ClearState`, and switched on unless the gain is exactly 0.
    virtual void Setup(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                       float inSpare2);

    /// Computes the target and starts a ramp to it; past and flags stay. The last two arguments are read by
    /// no design.
    virtual void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ,
                                   float inSpare1, float inSpare2) = 0;

    /// Computes the target's coupled form from its direct form. `SetupRamp` calls it where needed.
    virtual void ConvertCoefficientsToStateVariableForm() = 0;

    /// Takes over the coefficients, the ramp as it stands and whether the section is switched on, and clears
    /// the past. Does nothing if the other section is of the other precision.
    virtual void CopyCoefficients(FilterSection& inOther) = 0;

    /// Seconds that the ramps of later changes take. Counted at the sample rate of the last design, and
    /// only here: a section that changes its sample rate keeps its number of samples until this is called
    /// again. With less than one sample no ramp runs, and the coefficients stay until `TerminateRamp`.
    virtual void setSmoothingTime(float inSeconds);
    [[nodiscard]] virtual float getSmoothingTime() const;

    /// Chooses the coupled form, or the direct form. A change clears the past, and a change to the coupled
    /// form starts a ramp.
    virtual void setStateVariable(bool inStateVariable);
    [[nodiscard]] virtual bool isStateVariable() const;

    /// Starts a ramp from the coefficients of now to the target; none if the form in use has nothing to
    /// change.
    virtual void SetupRamp() = 0;
    /// Ends the ramp at once, on the target.
    virtual void TerminateRamp() = 0;
    /// Makes coefficients and target pass everything, and ends the ramp.
    virtual void ClearCoefficients() = 0;

    [[nodiscard]] bool isFirstOrder() const { return mFirstOrder; }
    void setFirstOrder(bool inFirstOrder) { mFirstOrder = inFirstOrder; }
    [[nodiscard]] bool isDoublePrecision() const { return mDoublePrecision; }
    /// Writes the flag; the precision is that of the class.
    void setDoublePrecision(bool inDoublePrecision) { mDoublePrecision = inDoublePrecision; }

protected:
    friend class fDeskFilter;

    FilterSection() = default;
    FilterSection(const FilterSection&) = default;
    FilterSection& operator=(const FilterSection&) = default;

    void StoreParameters(float inSampleRate, float inFrequency, float inGain)
    {
        mSampleRate = inSampleRate;
        mFrequency = inFrequency;
        mGain = inGain;
    }

    bool mFirstOrder = false;
    bool mStateVariable = false;
    bool mDoublePrecision = false;
    bool mEnabled = false;
    float mSampleRate = 44100.0f;
    float mFrequency = 0.0f;
    float mGain = 0.0f;
    /// Frequency over Q, where the design stores it.
    float mBandwidth = 0.0f;
    float mSpare1 = 0.0f;
    float mSpare2 = 0.0f;
    float mSmoothingTime = 0.03f;
    /// Samples of the ramp that are left; 0 without a ramp.
    std::uint32_t mRampCount = 0;
    std::uint32_t mRampLength = 1323;
};

/// What the branches of either precision share: `T` is the type of coefficients and state.
template <typename T>
class TESSARO_EXPORT PrecisionFilterSection : public FilterSection
{
public:
    void ClearState() override;
    void enable() override;
    float processOneSample(float inSample) override;
    double dprocessOneSample(double inSample) override;
    void processInplace(float* ioSamples, int inCount) override;
    void dprocessInplace(double* ioSamples, int inCount) override;
    [[nodiscard]] float computeResponse(float inFrequency, float inValue) const override;
    void ConvertCoefficientsToStateVariableForm() override;
    void CopyCoefficients(FilterSection& inOther) override;
    void SetupRamp() override;
    void TerminateRamp() override;
    void ClearCoefficients() override;

protected:
    PrecisionFilterSection();

    /// Puts a design into the target, rounded to `T`, and starts the ramp to it.
    void TakeDesign(const SectionCoefficients<double>& inDesign);

    /// One step of the ramp.
    void SmoothCoefficients();

    SectionCoefficients<T> mCurrent;
    SectionCoefficients<T> mIncrement;
    SectionCoefficients<T> mTarget;
    FilterState<T> mState;
};

extern template class PrecisionFilterSection<float>;
extern template class PrecisionFilterSection<double>;

/// Sections that compute in single precision.
class TESSARO_EXPORT fFilterSection : public PrecisionFilterSection<float>
{
};

/// Sections that compute in double precision.
class TESSARO_EXPORT dFilterSection : public PrecisionFilterSection<double>
{
};

} // namespace tessaro
