#include <tessaro/waveform/WaveformChannelScaleFactor.h>

#include <algorithm>
#include <utility>

#include <brisken/utility/Arithmetic.h>
#include <ombrel/config/OmbrelException.h>

#include "waveform/LongRows.h"

namespace tessaro::waveform {

namespace {

using ScaleVector = WaveformChannelScaleFactor::ScaleVector;

void MulDivRow(ScaleVector& ioScales, const ScaleVector& inOther, OperatorType inOperator)
{
    ForEachRow(std::min(ioScales.size(), inOther.size()), [&](std::size_t inOffset, unsigned inRow) {
        const float* const other = inOther.data() + inOffset;
        float* const scales = ioScales.data() + inOffset;
        if (inOperator == OperatorType::kMultiply) {
            brisken::utility::Mul_InPlace(inRow, other, scales);
        } else {
            brisken::utility::Div_InPlace(inRow, other, scales);
        }
    });
}

void MulDivRow(ScaleVector& ioScales, float inConstant, OperatorType inOperator)
{
    ForEachRow(ioScales.size(), [&](std::size_t inOffset, unsigned inRow) {
        float* const scales = ioScales.data() + inOffset;
        if (inOperator == OperatorType::kMultiply) {
            brisken::utility::MulConstant_InPlace(inRow, scales, inConstant);
        } else {
            brisken::utility::DivConstant_InPlace(inRow, scales, inConstant);
        }
    });
}

} // namespace

WaveformChannelScaleFactor::WaveformChannelScaleFactor(float inScale)
    : mType(inScale == 1.0f ? WaveformScaleFactorType::kNone : WaveformScaleFactorType::kConstant),
      mConstantScale(inScale)
{
}

WaveformChannelScaleFactor::WaveformChannelScaleFactor(ScaleVector&& ioScales)
    : mType(WaveformScaleFactorType::kDynamic), mConstantScale(1.0f), mScaleVector(std::move(ioScales))
{
}

WaveformChannelScaleFactor::WaveformChannelScaleFactor(WaveformChannelScaleFactor&&) noexcept = default;
WaveformChannelScaleFactor&
WaveformChannelScaleFactor::operator=(WaveformChannelScaleFactor&&) noexcept = default;
WaveformChannelScaleFactor::~WaveformChannelScaleFactor() = default;

bool WaveformChannelScaleFactor::operator==(const WaveformChannelScaleFactor& inOther) const
{
    if (mType != inOther.mType) {
        return false;
    }
    switch (mType) {
    case WaveformScaleFactorType::kNone:
        return true;
    case WaveformScaleFactorType::kConstant:
        return mConstantScale == inOther.mConstantScale;
    case WaveformScaleFactorType::kDynamic:
        return mScaleVector == inOther.mScaleVector;
    }
    throw ombrel::ombrel_exception("Unknown type of waveform scale factor.",
                                   ombrel::config::kResultInvalidValue);
}

WaveformChannelScaleFactor& WaveformChannelScaleFactor::operator*=(WaveformChannelScaleFactor&& ioOther)
{
    MulDiv(std::move(ioOther), OperatorType::kMultiply);
    return *this;
}

WaveformChannelScaleFactor& WaveformChannelScaleFactor::operator/=(WaveformChannelScaleFactor&& ioOther)
{
    MulDiv(std::move(ioOther), OperatorType::kDivide);
    return *this;
}

void WaveformChannelScaleFactor::MulDiv(WaveformChannelScaleFactor&& ioOther, OperatorType inOperator)
{
    switch (ioOther.mType) {
    case WaveformScaleFactorType::kNone:
        break;
    case WaveformScaleFactorType::kConstant:
        MulDivByConstant(ioOther.mConstantScale, inOperator);
        break;
    case WaveformScaleFactorType::kDynamic:
        MulDivByDynamic(std::move(ioOther), inOperator);
        break;
    }
}

void WaveformChannelScaleFactor::MulDivByConstant(float inConstant, OperatorType inOperator)
{
    switch (mType) {
    case WaveformScaleFactorType::kNone:
        mType = WaveformScaleFactorType::kConstant;
        mConstantScale = inOperator == OperatorType::kMultiply ? inConstant : mConstantScale / inConstant;
        break;
    case WaveformScaleFactorType::kConstant:
        // Both operators multiply constants. That is no slip: callers rely on it, so it stays.
        mConstantScale *= inConstant;
        break;
    case WaveformScaleFactorType::kDynamic:
        if (inConstant != 1.0f) {
            MulDivRow(mScaleVector, inConstant, inOperator);
        }
        break;
    }
}

void WaveformChannelScaleFactor::MulDivByDynamic(WaveformChannelScaleFactor&& ioOther,
                                                 OperatorType inOperator)
{
    if (mType == WaveformScaleFactorType::kDynamic) {
        MulDivRow(mScaleVector, ioOther.mScaleVector, inOperator);
        return;
    }
    if (inOperator == OperatorType::kDivide) {
        ScaleVector quotient(ioOther.mScaleVector.size(), mConstantScale);
        MulDivRow(quotient, ioOther.mScaleVector, inOperator);
        mScaleVector = std::move(quotient);
    } else {
        mScaleVector = std::move(ioOther.mScaleVector);
        if (mType == WaveformScaleFactorType::kConstant) {
            MulDivRow(mScaleVector, mConstantScale, inOperator);
        }
    }
    mConstantScale = 1.0f;
    mType = WaveformScaleFactorType::kDynamic;
}

} // namespace tessaro::waveform
