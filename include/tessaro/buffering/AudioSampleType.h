#pragma once

#include <cstddef>
#include <cstdint>

#include <tessaro/Export.h>

/// Stored forms of samples and their conversion to and from normalised floats, in which full scale is 1.0.
///
/// All conversions truncate toward zero: none rounds or dithers. Values from 1.0 upward become the largest
/// integer, values from -1.0 downward the smallest, NaN becomes zero; the float form is not clamped. Since
/// the largest positive integer is one step below full scale, 1.0 comes back below 1.0.
namespace tessaro {

/// How a sample is stored. Any other value means no conversion.
enum class AudioSampleType : std::int32_t
{
    k8Bit = 1,       ///< unsigned byte, 128 is zero
    k16Bit = 2,      ///< signed
    k24Bit = 3,      ///< three bytes, least significant first, two's complement
    k32BitFloat = 4, ///< normalised, stored as it is
};

// Each trait below describes one stored form by the same set of members:
// - `ValueType`, the element of a sample array, and `kValueMultiplier`, the elements that a sample takes;
// - `ConvertFromNormalizedFloat(float, ValueType*)` stores one sample, `ConvertToNormalizedFloat(const
//   ValueType*)` reads one;
// - the averaging family, which reduces several samples to one: `...AverageAdd` adds a sample to a sum that
//   started at 0, and `...AverageFinish` turns the sum of `inCount` samples, at least one, into their mean,
//   normalised. The 8 and 16 bit forms sum raw steps and scale once at the end; the 24 bit form scales each
//   sample, which keeps its large values out of the float sum.

namespace details {

/// Clamps a value in integer steps to the stored range; NaN becomes 0. Written so that loops over it
/// vectorise.
inline float ClampSteps(float inSteps, float inLeast, float inMost)
{
    const float number = inSteps == inSteps ? inSteps : 0.0f;
    const float atLeast = number < inLeast ? inLeast : number;
    return atLeast > inMost ? inMost : atLeast;
}

} // namespace details

struct Type_8Bit
{
    using ValueType = std::uint8_t;
    static constexpr int kValueMultiplier = 1;
    static constexpr float kConvertFromNormalizedFloatMultiplier = 128.0f;
    static constexpr float kConvertToNormalizedFloatMultiplier = 0.0078125f;

    static void ConvertFromNormalizedFloat(float inValue, ValueType* outSample)
    {
        const float steps = details::ClampSteps(inValue * -kConvertFromNormalizedFloatMultiplier, -127, 128);
        *outSample = static_cast<ValueType>(128 - static_cast<int>(steps));
    }
    static float ConvertToNormalizedFloat(const ValueType* inSample)
    {
        return static_cast<float>(*inSample - 128) * kConvertToNormalizedFloatMultiplier;
    }
    static void ConvertToNormalizedFloatAverageAdd(const ValueType* inSample, float& ioSum)
    {
        ioSum += static_cast<float>(*inSample - 128);
    }
    static void ConvertToNormalizedFloatAverageFinish(const float& inSum, const std::int64_t& inCount,
                                                      float& outResult)
    {
        outResult = inSum / static_cast<float>(inCount) * kConvertToNormalizedFloatMultiplier;
    }
};

struct Type_16Bit
{
    using ValueType = std::int16_t;
    static constexpr int kValueMultiplier = 1;
    static constexpr float kConvertFromNormalizedFloatMultiplier = 32768.0f;
    static constexpr float kConvertToNormalizedFloatMultiplier = 3.0517578125e-5f;

    static void ConvertFromNormalizedFloat(float inValue, ValueType* outSample)
    {
        const float steps =
            details::ClampSteps(inValue * kConvertFromNormalizedFloatMultiplier, -32768, 32767);
        *outSample = static_cast<ValueType>(static_cast<int>(steps));
    }
    static float ConvertToNormalizedFloat(const ValueType* inSample)
    {
        return static_cast<float>(*inSample) * kConvertToNormalizedFloatMultiplier;
    }
    static void ConvertToNormalizedFloatAverageAdd(const ValueType* inSample, float& ioSum)
    {
        ioSum += static_cast<float>(*inSample);
    }
    static void ConvertToNormalizedFloatAverageFinish(const float& inSum, const std::int64_t& inCount,
                                                      float& outResult)
    {
        outResult = inSum / static_cast<float>(inCount) * kConvertToNormalizedFloatMultiplier;
    }
};

struct Type_24Bit
{
    using ValueType = std::uint8_t;
    static constexpr int kValueMultiplier = 3;
    static constexpr float kConvertFromNormalizedFloatMultiplier = 8388608.0f;
    static constexpr float kConvertToNormalizedFloatMultiplier = 1.1920928955078125e-7f;

    static void ConvertFromNormalizedFloat(float inValue, ValueType* outSample)
    {
        const auto steps = static_cast<std::int32_t>(
            details::ClampSteps(inValue * kConvertFromNormalizedFloatMultiplier, -8388608, 8388607));
        const auto bits = static_cast<std::uint32_t>(steps);
        outSample[0] = static_cast<ValueType>(bits);
        outSample[1] = static_cast<ValueType>(bits >> 8);
        outSample[2] = static_cast<ValueType>(bits >> 16);
    }
    static float ConvertToNormalizedFloat(const ValueType* inSample)
    {
        // Put together in the upper three bytes, so that the shift back extends the sign.
        const auto bits = static_cast<std::uint32_t>(inSample[0]) << 8 |
                          static_cast<std::uint32_t>(inSample[1]) << 16 |
                          static_cast<std::uint32_t>(inSample[2]) << 24;
        return static_cast<float>(static_cast<std::int32_t>(bits) >> 8) * kConvertToNormalizedFloatMultiplier;
    }
    static void ConvertToNormalizedFloatAverageAdd(const ValueType* inSample, float& ioSum)
    {
        ioSum += ConvertToNormalizedFloat(inSample);
    }
    static void ConvertToNormalizedFloatAverageFinish(const float& inSum, const std::int64_t& inCount,
                                                      float& outResult)
    {
        outResult = inSum / static_cast<float>(inCount);
    }
};

struct Type_32BitFloat
{
    using ValueType = float;
    static constexpr int kValueMultiplier = 1;
    static constexpr float kConvertFromNormalizedFloatMultiplier = 1.0f;
    static constexpr float kConvertToNormalizedFloatMultiplier = 1.0f;

    static void ConvertFromNormalizedFloat(float inValue, ValueType* outSample) { *outSample = inValue; }
    static float ConvertToNormalizedFloat(const ValueType* inSample) { return *inSample; }
    static void ConvertToNormalizedFloatAverageAdd(const ValueType* inSample, float& ioSum)
    {
        ioSum += *inSample;
    }
    static void ConvertToNormalizedFloatAverageFinish(const float& inSum, const std::int64_t& inCount,
                                                      float& outResult)
    {
        outResult = inSum / static_cast<float>(inCount);
    }
};

/// Floats on the scale of 16-bit integers, in which restoration code works: full scale is 32768.
///
/// The `CopyChannel...` functions write `inSamples` samples to every `inInterval`-th element of a buffer.
struct Tuning_Helper_Type_32BitFloat_32768
{
    using ValueType = float;
    static constexpr int kValueMultiplier = 1;
    static constexpr float kConvertFromNormalizedFloatMultiplier = 32768.0f;
    static constexpr float kConvertToNormalizedFloatMultiplier = 3.0517578125e-05f;

    static void ConvertFromNormalizedFloat(float inValue, ValueType* outSample)
    {
        *outSample = inValue * kConvertFromNormalizedFloatMultiplier;
    }
    static float ConvertToNormalizedFloat(const ValueType* inSample)
    {
        return *inSample * kConvertToNormalizedFloatMultiplier;
    }
    static void ConvertToNormalizedFloatAverageAdd(const ValueType* inSample, float& ioSum)
    {
        ioSum += *inSample;
    }
    static void ConvertToNormalizedFloatAverageFinish(const float& inSum, const std::int64_t& inCount,
                                                      float& outResult)
    {
        outResult = inSum / static_cast<float>(inCount) * kConvertToNormalizedFloatMultiplier;
    }

    /// From normalised to the 32768 scale.
    TESSARO_EXPORT static void CopyChannelToInterleavedBuffer(const float* inSource, float* outDest,
                                                              int inSamples, int inInterval);
    /// The same, faster for an interval of 1.
    TESSARO_EXPORT static void CopyChannelToInterleavedBuffer_OptimizeSingleChannel(const float* inSource,
                                                                                    float* outDest,
                                                                                    int inSamples,
                                                                                    int inInterval);
    /// From the 32768 scale to normalised; the two are alike.
    TESSARO_EXPORT static void CopyChannelToInterleavedBuffer_Divide(const float* inSource, float* outDest,
                                                                     int inSamples, int inInterval);
    TESSARO_EXPORT static void CopyChannelToInterleavedBuffer_MultDivide(const float* inSource,
                                                                         float* outDest, int inSamples,
                                                                         int inInterval);
};

/// Bytes of a stored sample: 1, 2, 3, 4, and 0 for a type that is none. [any thread]
TESSARO_EXPORT std::size_t GetBytesPerSampleFromSampleType(AudioSampleType inType);

/// The narrowest type that holds `inBits` bits: up to 8, up to 16, up to 24, else float. Sizes of 0 and below
/// count as 8 bit. [any thread]
TESSARO_EXPORT AudioSampleType GetSampleTypeFromBitsPerSample(int inBits);

/// Converts a run of `inSamples` stored samples to normalised floats. The stored run needs the alignment of
/// its `ValueType`, and may not overlap the floats. An unknown type writes nothing. [real-time]
TESSARO_EXPORT void ConvertBufferToFloats(const void* inSource, float* outDest, int inSamples,
                                          AudioSampleType inType);

/// Converts a run of `inSamples` normalised floats to their stored form; otherwise as above. [real-time]
TESSARO_EXPORT void ConvertBufferFromFloats(const float* inSource, void* outDest, int inSamples,
                                            AudioSampleType inType);

} // namespace tessaro
