#include <tessaro/buffering/AudioSampleType.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro {

namespace {

TEST(AudioSampleTypeTest, SizesFollowTheType)
{
    const std::array types{AudioSampleType(0),      AudioSampleType::k8Bit,       AudioSampleType::k16Bit,
                           AudioSampleType::k24Bit, AudioSampleType::k32BitFloat, AudioSampleType(5)};
    const std::array<std::size_t, 6> bytes{0, 1, 2, 3, 4, 0};
    for (std::size_t i = 0; i < types.size(); ++i) {
        EXPECT_EQ(GetBytesPerSampleFromSampleType(types[i]), bytes[i]);
    }
    const std::array<std::array<int, 2>, 9> bits{
        {{-3, 1}, {0, 1}, {8, 1}, {9, 2}, {16, 2}, {17, 3}, {24, 3}, {25, 4}, {64, 4}}};
    for (const auto& [count, type] : bits) {
        EXPECT_EQ(static_cast<int>(GetSampleTypeFromBitsPerSample(count)), type) << count;
    }
}

template <typename Type>
int Store(float inValue)
{
    typename Type::ValueType stored[3] = {};
    Type::ConvertFromNormalizedFloat(inValue, stored);
    if constexpr (Type::kValueMultiplier == 3) {
        const int bits = stored[0] | stored[1] << 8 | stored[2] << 16;
        return bits >= 0x800000 ? bits - 0x1000000 : bits;
    } else {
        return static_cast<int>(stored[0]);
    }
}

TEST(AudioSampleTypeTest, FullScaleAndBeyondClampAndNothingRounds)
{
    const float below = std::nextafter(1.0f, 0.0f);
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case
    {
        float mValue;
        int m8, m16, m24;
    };
    for (const auto& [value, as8, as16, as24] : std::vector<Case>{
             {1.0f, 255, 32767, 0x7FFFFF},
             {below, 255, 32767, 0x7FFFFF},
             {infinity, 255, 32767, 0x7FFFFF},
             {-1.0f, 0, -32768, -8388608},
             {-below, 1, -32767, -8388607},
             {-3.0f, 0, -32768, -8388608},
             {-infinity, 0, -32768, -8388608},
             {0.0f, 128, 0, 0},
             {nan, 128, 0, 0},
             {0.99f / 128, 128, 253, 64880},
             {-0.99f / 128, 128, -253, -64880},
             {1.99f / 128, 129, 509, 130416},
             {-1.99f / 128, 127, -509, -130416},
             {0.5f, 192, 16384, 4194304},
         }) {
        EXPECT_EQ(Store<Type_8Bit>(value), as8) << value;
        EXPECT_EQ(Store<Type_16Bit>(value), as16) << value;
        EXPECT_EQ(Store<Type_24Bit>(value), as24) << value;
    }
    for (int step = -127; step < 128; ++step) { // the plain form of the eight bits
        const float value = static_cast<float>(step) / 128.0f;
        EXPECT_EQ(Store<Type_8Bit>(value), (128 - (static_cast<int>(value * -128.0f) & 255)) & 255);
    }
}

TEST(AudioSampleTypeTest, EveryStoredValueSurvivesTheRoundTrip)
{
    for (int stored = 0; stored < 256; ++stored) {
        const auto sample = static_cast<std::uint8_t>(stored);
        EXPECT_EQ(Store<Type_8Bit>(Type_8Bit::ConvertToNormalizedFloat(&sample)), stored);
    }
    for (int stored = -32768; stored < 32768; ++stored) {
        const auto sample = static_cast<std::int16_t>(stored);
        ASSERT_EQ(Store<Type_16Bit>(Type_16Bit::ConvertToNormalizedFloat(&sample)), stored);
    }
    for (int stored = -8388608; stored < 8388608; stored += 4001) {
        const std::uint8_t sample[3] = {static_cast<std::uint8_t>(stored),
                                        static_cast<std::uint8_t>(stored >> 8),
                                        static_cast<std::uint8_t>(stored >> 16)};
        const float value = Type_24Bit::ConvertToNormalizedFloat(sample);
        ASSERT_EQ(value, static_cast<float>(stored) / 8388608.0f);
        ASSERT_EQ(Store<Type_24Bit>(value), stored);
    }
}

TEST(AudioSampleTypeTest, RunsConvertBothWaysAndUnknownTypesWriteNothing)
{
    const std::array<float, 5> values{0.5f, -1.0f, 1.5f, 0.0f, -0.25f};
    for (int type = 0; type <= 5; ++type) {
        alignas(4) std::array<unsigned char, 20> stored;
        stored.fill(0xAB);
        std::array<float, 5> back;
        back.fill(9.0f);
        ConvertBufferFromFloats(values.data(), stored.data(), 4, AudioSampleType(type));
        ConvertBufferToFloats(stored.data(), back.data(), 4, AudioSampleType(type));
        EXPECT_EQ(back[4], 9.0f);
        const auto written = 4 * GetBytesPerSampleFromSampleType(AudioSampleType(type));
        EXPECT_TRUE(written == 16 || stored[written] == 0xAB);
        if (type == 0 || type == 5) {
            EXPECT_EQ(back[0], 9.0f);
            continue;
        }
        EXPECT_EQ(back[0], 0.5f);
        EXPECT_EQ(back[1], -1.0f);
        EXPECT_EQ(back[2] >= 1.0f, type == 4);
        EXPECT_EQ(back[3], 0.0f);
    }
}

template <typename Type>
float Average(const std::vector<float>& inValues)
{
    float sum = 0.0f;
    float result = 0.0f;
    for (const float value : inValues) {
        typename Type::ValueType stored[3];
        Type::ConvertFromNormalizedFloat(value, stored);
        Type::ConvertToNormalizedFloatAverageAdd(stored, sum);
    }
    Type::ConvertToNormalizedFloatAverageFinish(sum, static_cast<std::int64_t>(inValues.size()), result);
    return result;
}

TEST(AudioSampleTypeTest, AveragesInTheScaleThatEachTypeSumsIn)
{
    const std::vector<float> values{0.5f, -0.25f, 0.125f, 0.125f};
    EXPECT_EQ(Average<Type_8Bit>(values), 0.125f);
    EXPECT_EQ(Average<Type_16Bit>(values), 0.125f);
    EXPECT_EQ(Average<Type_24Bit>(values), 0.125f);
    EXPECT_EQ(Average<Type_32BitFloat>(values), 0.125f);
    EXPECT_EQ(Average<Tuning_Helper_Type_32BitFloat_32768>(values), 0.125f);

    float raw = 0.0f;
    float scaled = 0.0f;
    const std::int16_t half = 16384;
    const std::uint8_t half24[3] = {0, 0, 0x40};
    Type_16Bit::ConvertToNormalizedFloatAverageAdd(&half, raw);
    Type_24Bit::ConvertToNormalizedFloatAverageAdd(half24, scaled);
    EXPECT_EQ(raw, 16384.0f);
    EXPECT_EQ(scaled, 0.5f);
}

TEST(AudioSampleTypeTest, TuningHelperInterleavesOnThe32768Scale)
{
    using Helper = Tuning_Helper_Type_32BitFloat_32768;
    const std::array<float, 3> source{0.5f, -1.0f, 32768.0f};
    for (const int interval : {1, 2}) {
        std::array<float, 6> up{}, upSingle{}, down{}, downMult{};
        Helper::CopyChannelToInterleavedBuffer(source.data(), up.data(), 3, interval);
        Helper::CopyChannelToInterleavedBuffer_OptimizeSingleChannel(source.data(), upSingle.data(), 3,
                                                                     interval);
        Helper::CopyChannelToInterleavedBuffer_Divide(source.data(), down.data(), 3, interval);
        Helper::CopyChannelToInterleavedBuffer_MultDivide(source.data(), downMult.data(), 3, interval);
        EXPECT_EQ(up, upSingle);
        EXPECT_EQ(down, downMult);
        EXPECT_EQ(up[static_cast<std::size_t>(interval)], -32768.0f);
        EXPECT_EQ(down[static_cast<std::size_t>(2 * interval)], 1.0f);
        EXPECT_EQ(up[5], 0.0f);
    }
}

} // namespace

} // namespace tessaro
