#include <tessaro/waveform/WaveformData.h>

#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include <tessaro/waveform/WaveformScaleFactor.h>

namespace tessaro::waveform {

namespace {

using Buffer = WaveformData::Buffer;
using enum WaveformDataType;

constexpr std::size_t kFar = std::numeric_limits<std::size_t>::max();

/// 1, 2, 3, ...
Buffer Counting(std::size_t inSize)
{
    Buffer buffer(inSize);
    std::iota(buffer.begin(), buffer.end(), 1.0f);
    return buffer;
}

std::shared_ptr<WaveformData> CountingData(WaveformDataType inType, std::size_t inSize,
                                           std::size_t inChannels = 2)
{
    return std::make_shared<WaveformData>(Counting(inSize), inType, inChannels);
}

/// The counting buffer with some elements, from one index up to another, multiplied.
Buffer CountingTimes(std::size_t inSize, std::size_t inFrom, std::size_t inTo, float inFactor)
{
    Buffer buffer = Counting(inSize);
    for (std::size_t i = inFrom; i < inTo; ++i) {
        buffer[i] *= inFactor;
    }
    return buffer;
}

TEST(WaveformDataTest, BufferFollowsPropertiesAndPropertiesFollowBuffer)
{
    for (const auto& [type, perChannel] :
         {std::pair{kNone, 0u}, std::pair{kSamples, 50u}, std::pair{kPeaks, 100u}}) {
        const WaveformData data(WaveformDataProperties(type, 50, 2));
        EXPECT_EQ(data.GetSizePerChannel(), perChannel);
        EXPECT_EQ(data.GetWaveformBuffer(), Buffer(2 * perChannel, 0.0f));
        EXPECT_EQ(data.GetDataSlots(), 50u);
        EXPECT_EQ(data.GetChannelCount(), 2u);
        EXPECT_EQ(data.GetProperties().GetType(), type);
    }
    EXPECT_EQ(CountingData(kPeaks, 200)->GetDataSlots(), 50u);
    EXPECT_EQ(CountingData(kPeaks, 201, 2)->GetDataSlots(), 50u);
    EXPECT_EQ(CountingData(kSamples, 200)->GetDataSlots(), 100u);
    EXPECT_EQ(WaveformData().GetType(), kNone);
    EXPECT_EQ(WaveformDataProperties(kNone, (std::uint64_t{1} << 32) + 7, 0).GetDataSlots(), 7u);
    EXPECT_THROW(WaveformData(WaveformDataProperties(kPeaks, kFar / 2, 3)), std::length_error);
}

TEST(WaveformDataTest, ValuesLieChannelByChannelWithTheGreatestOfAPairFirst)
{
    WaveformData samples(WaveformDataProperties(kSamples, 3, 2));
    samples.SetWaveformSample(1, 2, 0.5f);
    EXPECT_EQ(samples.GetWaveformBuffer(), (Buffer{0, 0, 0, 0, 0, 0.5f}));
    EXPECT_EQ(samples.GetWaveformSample(1, 2), 0.5f);
    EXPECT_EQ(samples.GetWaveformSample(0, 5), 0.5f); // bounded by the buffer, not by the channel

    WaveformData peaks(WaveformDataProperties(kPeaks, 2, 2));
    peaks.SetWaveformPeakValue(1, 0, {-0.25f, 0.75f});
    EXPECT_EQ(peaks.GetWaveformBuffer(), (Buffer{0, 0, 0, 0, 0.75f, -0.25f, 0, 0}));
    EXPECT_EQ(peaks.GetWaveformPeakValue(1, 0).mMin, -0.25f);
    EXPECT_EQ(peaks.GetWaveformPeakValue(1, 0).mMax, 0.75f);
}

TEST(WaveformDataTest, PlacesOutsideTheBufferReadZeroAndIgnoreWrites)
{
    const std::pair<std::size_t, std::size_t> places[] = {
        {2, 0}, {0, 6}, {1, kFar - 1}, {kFar, 0}, {1, kFar / 2 + 2}, {kFar / 2, kFar / 2}};
    auto samples = CountingData(kSamples, 6);
    auto peaks = CountingData(kPeaks, 12);
    for (const auto& [channel, slot] : places) {
        samples->SetWaveformSample(channel, slot, 9.0f);
        EXPECT_EQ(samples->GetWaveformSample(channel, slot), 0.0f) << channel << " " << slot;
        peaks->SetWaveformPeakValue(channel, slot, {9.0f, 9.0f});
        EXPECT_EQ(peaks->GetWaveformPeakValue(channel, slot).mMin, 0.0f) << channel << " " << slot;
        EXPECT_EQ(peaks->GetWaveformPeakValue(channel, slot).mMax, 0.0f) << channel << " " << slot;
    }
    EXPECT_EQ(samples->GetWaveformBuffer(), Counting(6));
    EXPECT_EQ(peaks->GetWaveformBuffer(), Counting(12));
    // Half a pair at the end is none.
    EXPECT_EQ(CountingData(kPeaks, 5, 1)->GetWaveformPeakValue(0, 2).mMax, 0.0f);
}

TEST(WaveformDataTest, ClearLeavesBufferAndAnnotations)
{
    auto data = CountingData(kSamples, 6);
    data->AddAnnotation({-3, 10, 20});
    data->Clear();
    EXPECT_EQ(data->GetType(), kNone);
    EXPECT_EQ(data->GetDataSlots(), 0u);
    EXPECT_EQ(data->GetChannelCount(), 0u);
    EXPECT_EQ(data->GetWaveformBuffer(), Counting(6));
    EXPECT_EQ(data->GetWaveformSample(0, 5), 6.0f);
    EXPECT_EQ(data->GetWaveformSample(7, 6), 0.0f);
    const WaveformData copy = *data;
    ASSERT_EQ(copy.GetAnnotations().size(), 1u);
    EXPECT_EQ(copy.GetAnnotations()[0].GetType(), -3);
    EXPECT_EQ(copy.GetAnnotations()[0].GetStart(), 10u);
    EXPECT_EQ(copy.GetAnnotations()[0].GetEnd(), 20u);
    data->GetAnnotations().clear(); // a copy
    EXPECT_EQ(data->GetAnnotations().size(), 1u);
}

TEST(WaveformDataTest, RecyclingGrowsNeverShrinksAndEmptiesForNothing)
{
    WaveformData data;
    EXPECT_EQ(data.RecycleWaveformBuffer({kPeaks, 4, 2}), Buffer(16));
    data.SetWaveformSample(0, 0, 3.0f);
    const float* const memory = data.GetWaveformBuffer().data();
    EXPECT_EQ(data.RecycleWaveformBuffer({kSamples, 4, 1}).size(), 16u);
    EXPECT_EQ(data.GetSizePerChannel(), 4u);
    EXPECT_EQ(data.GetWaveformSample(0, 0), 3.0f);
    EXPECT_EQ(data.RecycleWaveformBuffer({kNone, 4, 1}).size(), 16u);
    EXPECT_TRUE(data.RecycleWaveformBuffer({kSamples, 4, 0}).empty());
    EXPECT_EQ(data.RecycleWaveformBuffer({kSamples, 16, 1}).data(), memory);
    EXPECT_TRUE(data.RecycleWaveformBuffer({kPeaks, 0, 2}).empty());
    EXPECT_EQ(data.GetType(), kPeaks);
}

TEST(WaveformDataTest, ConversionTouchesNoDataAndNothingReachesBehindTheBuffer)
{
    auto data = CountingData(kSamples, 6);
    data->ConvertToWaveformDataType(kPeaks);
    EXPECT_EQ(data->GetSizePerChannel(), 6u); // channel 1 now lies behind the buffer
    EXPECT_EQ(data->GetWaveformBuffer(), Counting(6));
    data->ZeroChannel(1, 0, WaveformData::kToEnd);
    data->ApplyScaling(WaveformChannelScaleFactor(2.0f), 1, 0, WaveformData::kToEnd);
    data->CopyChannel(data, 0, 1, 0, 0);
    EXPECT_EQ(data->GetWaveformBuffer(), Counting(6));
    data->ApplyScaling(WaveformScaleFactor(WaveformChannelScaleFactor(2.0f)));
    EXPECT_EQ(data->GetWaveformBuffer(), CountingTimes(6, 0, 6, 2.0f));
}

TEST(WaveformDataTest, AddTakesOnlyDataOfTheSameShape)
{
    auto data = CountingData(kSamples, 12);
    data->Add(nullptr);
    data->Add(CountingData(kPeaks, 24));
    data->Add(CountingData(kSamples, 10));
    data->Add(CountingData(kSamples, 18, 3));
    EXPECT_EQ(data->GetWaveformBuffer(), Counting(12));
    data->Add(CountingData(kSamples, 12));
    data->Add(data);
    EXPECT_EQ(data->GetWaveformBuffer(), CountingTimes(12, 0, 12, 4.0f));
}

TEST(WaveformDataTest, CopyChannelCopiesWhatFitsOnBothSides)
{
    const auto source = CountingData(kSamples, 12); // 1..6, 7..12
    const auto copied = [&](std::size_t inFrom, std::size_t inTo, std::size_t inFromSlot,
                            std::size_t inToSlot) {
        WaveformData data(WaveformDataProperties(kSamples, 4, 2));
        data.CopyChannel(source, inFrom, inTo, inFromSlot, inToSlot);
        return data.GetWaveformBuffer();
    };
    EXPECT_EQ(copied(1, 0, 0, 0), (Buffer{7, 8, 9, 10, 0, 0, 0, 0}));
    EXPECT_EQ(copied(0, 1, 1, 2), (Buffer{0, 0, 0, 0, 0, 0, 2, 3}));
    EXPECT_EQ(copied(1, 1, 4, 1), (Buffer{0, 0, 0, 0, 0, 11, 12, 0}));
    for (const auto& nothing : {copied(2, 0, 0, 0), copied(0, 2, 0, 0), copied(0, 0, 6, 0),
                                copied(0, 0, 0, 4), copied(0, 0, kFar, 0), copied(0, 1, 0, kFar / 2 + 1)}) {
        EXPECT_EQ(nothing, Buffer(8));
    }
    WaveformData peaks(WaveformDataProperties(kPeaks, 3, 2));
    peaks.CopyChannel(source, 0, 0, 0, 0); // another type
    peaks.CopyChannel(nullptr, 0, 0, 0, 0);
    EXPECT_EQ(peaks.GetWaveformBuffer(), Buffer(12));
    peaks.CopyChannel(CountingData(kPeaks, 8, 1), 0, 1, 2, 1);
    EXPECT_EQ(peaks.GetWaveformBuffer(), (Buffer{0, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8}));

    source->CopyChannel(source, 0, 0, 0, 2);
    EXPECT_EQ(source->GetWaveformBuffer(), (Buffer{1, 2, 1, 2, 3, 4, 7, 8, 9, 10, 11, 12}));
}

TEST(WaveformDataTest, ZeroChannelTouchesExactlyTheSlots)
{
    const auto zeroed = [](WaveformDataType inType, std::size_t inChannel, std::size_t inStart,
                           std::size_t inEnd) {
        auto data = CountingData(inType, inType == kPeaks ? 400 : 200);
        data->ZeroChannel(inChannel, inStart, inEnd);
        return data->GetWaveformBuffer();
    };
    EXPECT_EQ(zeroed(kSamples, 0, 50, kFar), CountingTimes(200, 50, 100, 0.0f));
    EXPECT_EQ(zeroed(kSamples, 0, 50, 80), CountingTimes(200, 50, 80, 0.0f));
    EXPECT_EQ(zeroed(kSamples, 1, 99, 101), CountingTimes(200, 199, 200, 0.0f));
    EXPECT_EQ(zeroed(kPeaks, 0, 50, kFar), CountingTimes(400, 100, 200, 0.0f));
    EXPECT_EQ(zeroed(kPeaks, 1, 50, 80), CountingTimes(400, 300, 360, 0.0f));
    EXPECT_EQ(zeroed(kPeaks, 1, 50, kFar / 2 + 52), CountingTimes(400, 300, 400, 0.0f));
    EXPECT_EQ(zeroed(kSamples, 2, 0, kFar), Counting(200));
    EXPECT_EQ(zeroed(kSamples, 0, 80, 50), Counting(200));
    EXPECT_EQ(zeroed(kSamples, 0, kFar, kFar), Counting(200));
}

TEST(WaveformDataTest, ScalingTouchesExactlyTheSlots)
{
    const auto scaled = [](WaveformDataType inType, WaveformChannelScaleFactor&& inFactor,
                           std::size_t inChannel, std::size_t inStart, std::size_t inEnd) {
        auto data = CountingData(inType, inType == kPeaks ? 16 : 8);
        data->ApplyScaling(inFactor, inChannel, inStart, inEnd);
        return data->GetWaveformBuffer();
    };
    using Factor = WaveformChannelScaleFactor;
    EXPECT_EQ(scaled(kSamples, Factor(2.0f), 1, 1, 3), CountingTimes(8, 5, 7, 2.0f));
    EXPECT_EQ(scaled(kPeaks, Factor(2.0f), 1, 1, 3), CountingTimes(16, 10, 14, 2.0f));
    EXPECT_EQ(scaled(kSamples, Factor(0.5f), 0, 2, kFar), CountingTimes(8, 2, 4, 0.5f));
    EXPECT_EQ(scaled(kPeaks, Factor(0.5f), 0, 3, kFar - 1), CountingTimes(16, 6, 8, 0.5f));
    EXPECT_EQ(scaled(kSamples, Factor(1.0f), 0, 0, kFar), Counting(8));
    EXPECT_EQ(scaled(kSamples, Factor(2.0f), 2, 0, kFar), Counting(8));
    // Over the shorter of range and vector, in either direction.
    const auto falling = [] { return Factor(Factor::ScaleVector{10, 100}); };
    EXPECT_EQ(scaled(kSamples, falling(), 1, 1, kFar), (Buffer{1, 2, 3, 4, 5, 60, 700, 8}));
    EXPECT_EQ(scaled(kSamples, falling(), 0, 3, kFar), (Buffer{1, 2, 3, 40, 5, 6, 7, 8}));
    EXPECT_EQ(scaled(kPeaks, falling(), 0, 0, kFar),
              (Buffer{10, 20, 300, 400, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(scaled(kPeaks, falling(), 1, 3, kFar), CountingTimes(16, 14, 16, 10.0f));
    EXPECT_EQ(scaled(kNone, Factor(2.0f), 0, 0, kFar), Counting(8));
}

TEST(WaveformDataTest, LongPeaksAreScaledPairByPair)
{
    constexpr std::size_t kSlots = 1700;
    Buffer expected = Counting(2 * kSlots);
    WaveformChannelScaleFactor::ScaleVector scales(kSlots);
    for (std::size_t slot = 0; slot < kSlots; ++slot) {
        scales[slot] = static_cast<float>(slot % 7) - 3.0f;
        expected[2 * slot] *= scales[slot];
        expected[2 * slot + 1] *= scales[slot];
    }
    auto data = CountingData(kPeaks, 2 * kSlots, 1);
    data->ApplyScaling(WaveformScaleFactor(WaveformChannelScaleFactor(std::move(scales))));
    EXPECT_EQ(data->GetWaveformBuffer(), expected);
}

TEST(WaveformDataTest, EachChannelIsScaledByItsFactorOrTheFirst)
{
    std::vector<WaveformChannelScaleFactor> factors;
    factors.emplace_back(2.0f);
    factors.emplace_back(1.0f);
    auto data = CountingData(kSamples, 6, 3);
    data->ApplyScaling(WaveformScaleFactor(std::move(factors)));
    EXPECT_EQ(data->GetWaveformBuffer(), (Buffer{2, 4, 3, 4, 10, 12}));
    data->ApplyScaling(WaveformScaleFactor(std::vector<WaveformChannelScaleFactor>()));
    EXPECT_EQ(data->GetWaveformBuffer(), (Buffer{2, 4, 3, 4, 10, 12}));
    data->ApplyScaling(WaveformScaleFactor(WaveformChannelScaleFactor(0.5f)));
    EXPECT_EQ(data->GetWaveformBuffer(), (Buffer{1, 2, 1.5f, 2, 5, 6}));
}

TEST(WaveformDataTest, ReverseTurnsTheWholeBufferAndKeepsPairs)
{
    const auto reversed = [](WaveformDataType inType, std::size_t inSize) {
        auto data = CountingData(inType, inSize);
        data->Reverse();
        return data->GetWaveformBuffer();
    };
    EXPECT_EQ(reversed(kSamples, 6), (Buffer{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(reversed(kPeaks, 8), (Buffer{7, 8, 5, 6, 3, 4, 1, 2}));
    EXPECT_EQ(reversed(kPeaks, 6), (Buffer{5, 6, 3, 4, 1, 2}));
    EXPECT_EQ(reversed(kNone, 6), Counting(6));
}

} // namespace

} // namespace tessaro::waveform
