#include <tessaro/filters/FilterSection.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "filters/SectionKernels.h"
#include "filters/StateVariableForm.h"

namespace tessaro {

namespace {

constexpr double kTwoPi = 6.283185307179586;
/// Denominator energy below which a response is taken from the derivatives.
constexpr double kVanishingEnergy = 9.999999682655225e-21;

std::uint32_t TruncateToCount(float inSamples)
{
    constexpr float kLimit = 4294967296.0f;
    if (!(inSamples > 0.0f)) {
        return 0;
    }
    return inSamples < kLimit ? static_cast<std::uint32_t>(inSamples)
                              : std::numeric_limits<std::uint32_t>::max();
}

/// Copies some fields of a block into one of another precision, rounding them to it.
template <typename From, typename To, std::size_t Count>
void AssignFields(const SectionCoefficients<From>& inFrom,
                  const std::array<From SectionCoefficients<From>::*, Count>& inFromFields,
                  SectionCoefficients<To>& outTo,
                  const std::array<To SectionCoefficients<To>::*, Count>& inToFields)
{
    for (std::size_t i = 0; i < Count; ++i) {
        outTo.*inToFields[i] = static_cast<To>(inFrom.*inFromFields[i]);
    }
}

/// One sample of direct form I. The output is rounded to single precision before it enters the recursion.
template <typename T>
float StepDirect(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, bool inFirstOrder, T inX)
{
    if (inFirstOrder) {
        const auto y = static_cast<float>(inSection.b0 * inX + inSection.b1 * ioState.mInput1 -
                                          inSection.a1 * ioState.mOutput1);
        ioState.mInput1 = inX;
        ioState.mOutput1 = y;
        return y;
    }
    const auto y = static_cast<float>(inSection.b0 * inX + inSection.b1 * ioState.mInput1 +
                                      inSection.b2 * ioState.mInput2 -
                                      (inSection.a1 * ioState.mOutput1 + inSection.a2 * ioState.mOutput2));
    ioState.mInput2 = ioState.mInput1;
    ioState.mInput1 = inX;
    ioState.mOutput2 = ioState.mOutput1;
    ioState.mOutput1 = y;
    return y;
}

/// A row without a ramp.
template <typename T, typename Sample>
void RunRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, bool inFirstOrder,
            bool inStateVariable, Sample* ioRow, int inCount)
{
    if (inFirstOrder) {
        kernels::FirstOrderRow(inSection, ioState, ioRow, inCount);
    } else if (!inStateVariable) {
        kernels::DirectRow(inSection, ioState, ioRow, inCount);
    } else {
        kernels::CoupledRow(inSection, ioState, ioRow, inCount);
    }
}

} // namespace

void FilterSection::disable()
{
    mEnabled = false;
}

void FilterSection::setEnable(bool inEnabled)
{
    mEnabled = inEnabled;
}

bool FilterSection::isEnabled() const
{
    return mEnabled;
}

void FilterSection::Setup(float inSampleRate, float inFrequency, float inGain, float inQ, float inSpare1,
                          float inSpare2)
{
    SetupCoefficients(inSampleRate, inFrequency, inGain, inQ, inSpare1, inSpare2);
    ClearState();
    mEnabled = mGain != 0.0f;
}

void FilterSection::setSmoothingTime(float inSeconds)
{
    mSmoothingTime = inSeconds;
    mRampLength = TruncateToCount(mSmoothingTime * mSampleRate);
}

float FilterSection::getSmoothingTime() const
{
    return mSmoothingTime;
}

void FilterSection::setStateVariable(bool inStateVariable)
{
    if (inStateVariable == mStateVariable) {
        return;
    }
    ClearState();
    mStateVariable = inStateVariable;
    if (inStateVariable) {
        SetupRamp();
    }
}

bool FilterSection::isStateVariable() const
{
    return mStateVariable;
}

template <typename T>
PrecisionFilterSection<T>::PrecisionFilterSection()
{
    mDoublePrecision = std::is_same_v<T, double>;
}

template <typename T>
void PrecisionFilterSection<T>::ClearState()
{
    mState.Clear();
}

template <typename T>
void PrecisionFilterSection<T>::enable()
{
    if (mEnabled) {
        return;
    }
    mCurrent = {};
    SetupRamp();
    mEnabled = true;
}

template <typename T>
double PrecisionFilterSection<T>::dprocessOneSample(double inSample)
{
    if (!mEnabled) {
        return inSample;
    }
    const auto x = static_cast<T>(inSample);
    float y = 0.0f;
    if (mFirstOrder || !mStateVariable) {
        y = StepDirect(mCurrent, mState, mFirstOrder, x);
    } else {
        auto sample = x;
        kernels::CoupledRow(mCurrent, mState, &sample, 1);
        y = static_cast<float>(sample);
    }
    if (mRampCount != 0) {
        SmoothCoefficients();
    }
    return y;
}

template <typename T>
float PrecisionFilterSection<T>::processOneSample(float inSample)
{
    return static_cast<float>(PrecisionFilterSection::dprocessOneSample(inSample));
}

template <typename T>
void PrecisionFilterSection<T>::processInplace(float* ioSamples, int inCount)
{
    if (!mEnabled) {
        return;
    }
    if (mRampCount != 0) {
        std::transform(ioSamples, ioSamples + std::max(inCount, 0), ioSamples,
                       [this](float inSample) { return processOneSample(inSample); });
        return;
    }
    RunRow(mCurrent, mState, mFirstOrder, mStateVariable, ioSamples, inCount);
}

template <typename T>
void PrecisionFilterSection<T>::dprocessInplace(double* ioSamples, int inCount)
{
    if (!mEnabled) {
        return;
    }
    if (mRampCount != 0) {
        std::transform(ioSamples, ioSamples + std::max(inCount, 0), ioSamples,
                       [this](double inSample) { return dprocessOneSample(inSample); });
        return;
    }
    RunRow(mCurrent, mState, mFirstOrder, mStateVariable, ioSamples, inCount);
}

template <typename T>
float PrecisionFilterSection<T>::computeResponse(float inFrequency, float inValue) const
{
    if (!mEnabled) {
        return inValue;
    }
    const double b0 = mTarget.b0, b1 = mTarget.b1, b2 = mTarget.b2, a1 = mTarget.a1, a2 = mTarget.a2;
    const double w = kTwoPi * inFrequency / mSampleRate;
    double denominator =
        a1 * a1 + 1.0 + a2 * a2 + 2.0 * a1 * (a2 + 1.0) * std::cos(w) + 2.0 * a2 * std::cos(2.0 * w);
    double numerator =
        b1 * b1 + b0 * b0 + b2 * b2 + 2.0 * b1 * (b0 + b2) * std::cos(w) + 2.0 * b0 * b2 * std::cos(2.0 * w);
    if (std::fabs(denominator) < kVanishingEnergy) {
        numerator = -2.0 * b1 * (b0 + b2) * std::sin(w) - 4.0 * b0 * b2 * std::sin(2.0 * w);
        denominator = -2.0 * a1 * (a2 + 1.0) * std::sin(w) - 4.0 * a2 * std::sin(2.0 * w);
    }
    return static_cast<float>(inValue * std::sqrt(std::fabs(numerator / denominator)));
}

template <typename T>
void PrecisionFilterSection<T>::ConvertCoefficientsToStateVariableForm()
{
    SectionCoefficients<double> wide;
    AssignFields(mTarget, mTarget.DirectFields(), wide, wide.DirectFields());
    ConvertToStateVariableForm(wide);
    AssignFields(wide, wide.CoupledFields(), mTarget, mTarget.CoupledFields());
}

template <typename T>
void PrecisionFilterSection<T>::CopyCoefficients(FilterSection& inOther)
{
    const auto* other = dynamic_cast<const PrecisionFilterSection*>(&inOther);
    if (other == nullptr) {
        return;
    }
    mCurrent = other->mCurrent;
    mIncrement = other->mIncrement;
    mTarget = other->mTarget;
    mRampLength = other->mRampLength;
    mRampCount = other->mRampCount;
    mEnabled = other->mEnabled;
    ClearState();
}

template <typename T>
void PrecisionFilterSection<T>::SetupRamp()
{
    if (mStateVariable) {
        ConvertCoefficientsToStateVariableForm();
    }
    mIncrement = (mTarget - mCurrent) / static_cast<T>(mRampLength);
    // A NaN counts as a change.
    const auto changes = [this](auto inField) { return !(mIncrement.*inField == T(0)); };
    const auto direct = SectionCoefficients<T>::DirectFields();
    const auto coupled = SectionCoefficients<T>::CoupledFields();
    const bool anyChanges = mStateVariable ? std::any_of(coupled.begin(), coupled.end(), changes)
                                           : std::any_of(direct.begin(), direct.end(), changes);
    mRampCount = anyChanges ? mRampLength : 0;
}

template <typename T>
void PrecisionFilterSection<T>::SmoothCoefficients()
{
    if (mRampCount == 1) {
        TerminateRamp();
    } else {
        --mRampCount;
        mCurrent += mIncrement;
    }
}

template <typename T>
void PrecisionFilterSection<T>::TerminateRamp()
{
    mRampCount = 0;
    mCurrent = mTarget;
}

template <typename T>
void PrecisionFilterSection<T>::ClearCoefficients()
{
    mCurrent = {};
    mTarget = {};
    mRampCount = 0;
}

template <typename T>
void PrecisionFilterSection<T>::TakeDesign(const SectionCoefficients<double>& inDesign)
{
    AssignFields(inDesign, inDesign.DirectFields(), mTarget, mTarget.DirectFields());
    SetupRamp();
}

template class PrecisionFilterSection<float>;
template class PrecisionFilterSection<double>;

} // namespace tessaro
