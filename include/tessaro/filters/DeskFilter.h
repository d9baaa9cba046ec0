#pragma once

#include <memory>

#include <tessaro/Export.h>
#include <tessaro/filters/FilterSection.h>

namespace tessaro {

/// A section that can become one of another kind, order or precision while it runs.
///
/// It holds one `FilterSection`, a parametric one of single precision at first, and hands every operation on
/// to it; `FilterSection` describes them. `ShiftGears`, and `setType` and `setDoublePrecision` through it,
/// put a new section in its place, on the heap and without past: `[configured]`, not `[real-time]`. So do
/// copies. Everything else is `[real-time]`. One thread at a time.
class TESSARO_EXPORT fDeskFilter
{
public:
    enum eFilterKindType : int
    {
        kNotch = 0,
        kHighShelf = 1,
        kLowShelf = 2,
        kParametric = 3,
    };

    fDeskFilter();
    fDeskFilter(const fDeskFilter& inOther);
    fDeskFilter(fDeskFilter&& inOther) noexcept = default;
    fDeskFilter& operator=(const fDeskFilter& inOther);
    fDeskFilter& operator=(fDeskFilter&& inOther) noexcept = default;
    ~fDeskFilter() = default;

    [[nodiscard]] eFilterKindType getType() const { return mKind; }

    /// `ShiftGears` in the present precision; a shelf becomes one of first order.
    void setType(eFilterKindType inKind);

    /// `ShiftGears` with the present kind; a shelf becomes one of first order.
    void setDoublePrecision(bool inDoublePrecision);

    /// Puts a section of this kind, precision and order in the place of the present one, unless all three are
    /// its own. The order counts for shelves; `inFirstOrder` on another kind always makes a new section,
    /// since that is never of first order.
    ///
    /// The new section takes over smoothing time, state variable flag and parameters, and starts with
    /// `FilterSection::Setup`: a ramp from a straight wire, switched on unless the gain is 0 dB. The ramp has
    /// as many samples as the smoothing time has at 44100 Hz. Q is frequency over stored bandwidth: infinite
    /// after a section that stores none.
    ///
    /// A kind outside the enumeration leaves no section at all; then only destruction, copies and assignment
    /// are allowed.
    void ShiftGears(eFilterKindType inKind, bool inDoublePrecision, bool inFirstOrder);

    void ClearState() { mSection->ClearState(); }
    void enable() { mSection->enable(); }
    void disable() { mSection->disable(); }
    void setEnable(bool inEnabled) { mSection->setEnable(inEnabled); }
    [[nodiscard]] bool isEnabled() const { return mSection->isEnabled(); }
    float processOneSample(float inSample) { return mSection->processOneSample(inSample); }
    double dprocessOneSample(double inSample) { return mSection->dprocessOneSample(inSample); }
    void processInplace(float* ioSamples, int inCount) { mSection->processInplace(ioSamples, inCount); }
    void dprocessInplace(double* ioSamples, int inCount) { mSection->dprocessInplace(ioSamples, inCount); }
    [[nodiscard]] float computeResponse(float inFrequency, float inValue) const
    {
        return mSection->computeResponse(inFrequency, inValue);
    }
    void Setup(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1, float inSpare2)
    {
        mSection->Setup(inSampleRate, inFrequency, inGain, inQ, inSpare1, inSpare2);
    }
    void SetupCoefficients(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                           float inSpare2)
    {
        mSection->SetupCoefficients(inSampleRate, inFrequency, inGain, inQ, inSpare1, inSpare2);
    }
    void ConvertCoefficientsToStateVariableForm() { mSection->ConvertCoefficientsToStateVariableForm(); }
    void CopyCoefficients(FilterSection& inOther) { mSection->CopyCoefficients(inOther); }
    void CopyCoefficients(fDeskFilter& inOther) { mSection->CopyCoefficients(*inOther.mSection); }
    void setSmoothingTime(float inSeconds) { mSection->setSmoothingTime(inSeconds); }
    [[nodiscard]] float getSmoothingTime() const { return mSection->getSmoothingTime(); }
    void setStateVariable(bool inStateVariable) { mSection->setStateVariable(inStateVariable); }
    [[nodiscard]] bool isStateVariable() const { return mSection->isStateVariable(); }
    void SetupRamp() { mSection->SetupRamp(); }
    void TerminateRamp() { mSection->TerminateRamp(); }
    void ClearCoefficients() { mSection->ClearCoefficients(); }
    [[nodiscard]] bool isFirstOrder() const { return mSection->isFirstOrder(); }
    void setFirstOrder(bool inFirstOrder) { mSection->setFirstOrder(inFirstOrder); }
    [[nodiscard]] bool isDoublePrecision() const { return mSection->isDoublePrecision(); }

private:
    using CopySection = std::unique_ptr<FilterSection> (*)(const FilterSection&);

    template <typename Section>
    void MakeSection();
    void MakeSection(eFilterKindType inKind, bool inDoublePrecision, bool inFirstOrder);

    std::unique_ptr<FilterSection> mSection;
    /// Copies a section of the class that is held.
    CopySection mCopySection = nullptr;
    eFilterKindType mKind = kParametric;
};

} // namespace tessaro
