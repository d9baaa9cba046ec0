#include <tessaro/waveform/WaveformData.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include <brisken/utility/Arithmetic.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Interleave.h>

#include <tessaro/waveform/WaveformScaleFactor.h>

#include "waveform/LongRows.h"

namespace tessaro::waveform {

namespace {

constexpr std::size_t kFloatsPerPeak = 2;

std::size_t FloatsPerSlot(WaveformDataType inType)
{
    switch (inType) {
    case WaveformDataType::kSamples:
        return 1;
    case WaveformDataType::kPeaks:
        return kFloatsPerPeak;
    case WaveformDataType::kNone:
        break;
    }
    return 0;
}

/// The greatest number where the product has no room, so that it lies behind the end of any buffer.
std::size_t MultiplySaturated(std::size_t inA, std::size_t inB)
{
    constexpr auto kHighest = std::numeric_limits<std::size_t>::max();
    return inB != 0 && inA > kHighest / inB ? kHighest : inA * inB;
}

/// Number of floats that properties ask for. A vector refuses the greatest number.
std::size_t TotalSize(WaveformDataType inType, std::size_t inDataSlots, std::size_t inChannelCount)
{
    return MultiplySaturated(MultiplySaturated(inDataSlots, FloatsPerSlot(inType)), inChannelCount);
}

void ScaleSamples(std::size_t inCount, const float* inScales, float* ioSamples)
{
    ForEachRow(inCount, [&](std::size_t inOffset, unsigned inRow) {
        brisken::utility::Mul_InPlace(inRow, inScales + inOffset, ioSamples + inOffset);
    });
}

/// Multiplies pairs by one factor each.
void ScalePeaks(std::size_t inPairs, const float* inScales, float* ioPeaks)
{
    constexpr std::size_t kChunk = 512;
    float doubled[kChunk * kFloatsPerPeak];
    for (std::size_t done = 0; done < inPairs;) {
        const auto count = static_cast<unsigned>(std::min(inPairs - done, kChunk));
        const float* const rows[kFloatsPerPeak] = {inScales + done, inScales + done};
        brisken::utility::Interleave(count, kFloatsPerPeak, rows, doubled);
        brisken::utility::Mul_InPlace(count * kFloatsPerPeak, doubled, ioPeaks + done * kFloatsPerPeak);
        done += count;
    }
}

void ReversePairs(std::size_t inPairs, float* ioPeaks)
{
    for (std::size_t front = 0, back = inPairs; front + 1 < back; ++front) {
        --back;
        std::swap(ioPeaks[kFloatsPerPeak * front], ioPeaks[kFloatsPerPeak * back]);
        std::swap(ioPeaks[kFloatsPerPeak * front + 1], ioPeaks[kFloatsPerPeak * back + 1]);
    }
}

} // namespace

WaveformData::WaveformData() = default;

WaveformData::WaveformData(const WaveformDataProperties& inProperties)
    : mBuffer(TotalSize(inProperties.mType, inProperties.mDataSlots, inProperties.mChannelCount))
{
    SetProperties(inProperties);
}

WaveformData::WaveformData(Buffer&& ioBuffer, WaveformDataType inType, std::size_t inChannelCount)
    : mBuffer(std::move(ioBuffer)), mType(inType), mChannelCount(inChannelCount)
{
    if (inChannelCount != 0) {
        mDataSlots = mBuffer.size() / inChannelCount;
        if (inType == WaveformDataType::kPeaks) {
            mDataSlots /= kFloatsPerPeak;
        }
    }
}

WaveformData::WaveformData(const WaveformData&) = default;
WaveformData::WaveformData(WaveformData&&) noexcept = default;
WaveformData& WaveformData::operator=(const WaveformData&) = default;
WaveformData& WaveformData::operator=(WaveformData&&) noexcept = default;
WaveformData::~WaveformData() = default;

std::size_t WaveformData::GetFloatsPerSlot() const
{
    return FloatsPerSlot(mType);
}

WaveformDataProperties WaveformData::GetProperties() const
{
    return {mType, mDataSlots, mChannelCount};
}

void WaveformData::SetProperties(const WaveformDataProperties& inProperties)
{
    mType = inProperties.mType;
    mDataSlots = inProperties.mDataSlots;
    mChannelCount = inProperties.mChannelCount;
}

void WaveformData::Clear()
{
    SetProperties({});
}

WaveformData::Buffer& WaveformData::RecycleWaveformBuffer(const WaveformDataProperties& inProperties)
{
    if (inProperties.mChannelCount == 0 || inProperties.mDataSlots == 0) {
        mBuffer.clear();
    }
    const auto size = TotalSize(inProperties.mType, inProperties.mDataSlots, inProperties.mChannelCount);
    if (size > mBuffer.size()) {
        mBuffer.resize(size);
    }
    SetProperties(inProperties);
    return mBuffer;
}

std::size_t WaveformData::FindPlace(std::size_t inChannel, std::size_t inSlot, std::size_t inFloats) const
{
    const std::size_t end = mBuffer.size();
    const std::size_t channel = MultiplySaturated(inChannel, GetSizePerChannel());
    if (channel > end || inSlot >= (end - channel) / inFloats) {
        return end;
    }
    return channel + inSlot * inFloats;
}

WaveformData::Range WaveformData::FindRange(std::size_t inChannel, std::size_t inStart,
                                            std::size_t inEnd) const
{
    const std::size_t floats = GetFloatsPerSlot();
    const std::size_t channel = MultiplySaturated(inChannel, GetSizePerChannel());
    if (inChannel >= mChannelCount || floats == 0 || channel >= mBuffer.size()) {
        return {0, 0};
    }
    const std::size_t slots = std::min<std::size_t>(mDataSlots, (mBuffer.size() - channel) / floats);
    const std::size_t end = std::min(inEnd, slots);
    const std::size_t start = std::min(inStart, end);
    return {channel + start * floats, (end - start) * floats};
}

float WaveformData::GetWaveformSample(std::size_t inChannel, std::size_t inSlot) const
{
    const std::size_t place = FindPlace(inChannel, inSlot, 1);
    return place < mBuffer.size() ? mBuffer[place] : 0.0f;
}

void WaveformData::SetWaveformSample(std::size_t inChannel, std::size_t inSlot, const float& inValue)
{
    const std::size_t place = FindPlace(inChannel, inSlot, 1);
    if (place < mBuffer.size()) {
        mBuffer[place] = inValue;
    }
}

WaveformPeakValue WaveformData::GetWaveformPeakValue(std::size_t inChannel, std::size_t inSlot) const
{
    const std::size_t place = FindPlace(inChannel, inSlot, kFloatsPerPeak);
    if (place == mBuffer.size()) {
        return {};
    }
    return {mBuffer[place + 1], mBuffer[place]};
}

void WaveformData::SetWaveformPeakValue(std::size_t inChannel, std::size_t inSlot,
                                        const WaveformPeakValue& inValue)
{
    const std::size_t place = FindPlace(inChannel, inSlot, kFloatsPerPeak);
    if (place < mBuffer.size()) {
        mBuffer[place] = inValue.mMax;
        mBuffer[place + 1] = inValue.mMin;
    }
}

void WaveformData::Add(const std::shared_ptr<WaveformData>& inOther)
{
    if (inOther == nullptr || inOther->mType != mType || inOther->mDataSlots != mDataSlots ||
        inOther->mChannelCount != mChannelCount) {
        return;
    }
    const float* const source = inOther->mBuffer.data();
    ForEachRow(std::min(mBuffer.size(), inOther->mBuffer.size()), [&](std::size_t inOffset, unsigned inRow) {
        brisken::utility::Add_InPlace(inRow, source + inOffset, mBuffer.data() + inOffset);
    });
}

void WaveformData::CopyChannel(const std::shared_ptr<WaveformData>& inSource, std::size_t inSourceChannel,
                               std::size_t inDestChannel, std::size_t inSourceOffset,
                               std::size_t inDestOffset)
{
    if (inSource == nullptr || inSource->mType != mType) {
        return;
    }
    const Range from = inSource->FindRange(inSourceChannel, inSourceOffset, kToEnd);
    const Range to = FindRange(inDestChannel, inDestOffset, kToEnd);
    MoveLongRow(std::min(from.mCount, to.mCount), inSource->mBuffer.data() + from.mStart,
                mBuffer.data() + to.mStart);
}

void WaveformData::ZeroChannel(std::size_t inChannel, std::size_t inStart, std::size_t inEnd)
{
    const Range range = FindRange(inChannel, inStart, inEnd);
    ForEachRow(range.mCount, [&](std::size_t inOffset, unsigned inRow) {
        brisken::utility::Zero(inRow, mBuffer.data() + range.mStart + inOffset);
    });
}

void WaveformData::ApplyScaling(const WaveformChannelScaleFactor& inFactor, std::size_t inChannel,
                                std::size_t inStart, std::size_t inEnd)
{
    const Range range = FindRange(inChannel, inStart, inEnd);
    float* const row = mBuffer.data() + range.mStart;
    const auto& scales = inFactor.GetWaveformScaleVector();
    switch (inFactor.GetType()) {
    case WaveformScaleFactorType::kNone:
        break;
    case WaveformScaleFactorType::kConstant:
        ForEachRow(range.mCount, [&](std::size_t inOffset, unsigned inRow) {
            brisken::utility::MulConstant_InPlace(inRow, row + inOffset, inFactor.GetConstantScale());
        });
        break;
    case WaveformScaleFactorType::kDynamic:
        if (mType == WaveformDataType::kPeaks) {
            ScalePeaks(std::min(range.mCount / kFloatsPerPeak, scales.size()), scales.data(), row);
        } else {
            ScaleSamples(std::min(range.mCount, scales.size()), scales.data(), row);
        }
        break;
    }
}

void WaveformData::ApplyScaling(const WaveformScaleFactor& inFactor)
{
    for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
        ApplyScaling(inFactor.GetChannelScaleFactor(channel), channel, 0, kToEnd);
    }
}

void WaveformData::Reverse()
{
    switch (mType) {
    case WaveformDataType::kNone:
        break;
    case WaveformDataType::kSamples:
        FlipLongRow(mBuffer.size(), mBuffer.data());
        break;
    case WaveformDataType::kPeaks:
        ReversePairs(mBuffer.size() / kFloatsPerPeak, mBuffer.data());
        break;
    }
}

} // namespace tessaro::waveform
