#include <tessaro/buffering/AudioSampleType.h>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

template <typename Type>
void ConvertRunToFloats(const void* inSource, float* outDest, int inSamples)
{
    const auto* source = static_cast<const typename Type::ValueType*>(inSource);
    for (int i = 0; i < inSamples; ++i) {
        outDest[i] =
            Type::ConvertToNormalizedFloat(source + static_cast<std::ptrdiff_t>(i) * Type::kValueMultiplier);
    }
}

template <typename Type>
void ConvertRunFromFloats(const float* inSource, void* outDest, int inSamples)
{
    auto* dest = static_cast<typename Type::ValueType*>(outDest);
    for (int i = 0; i < inSamples; ++i) {
        Type::ConvertFromNormalizedFloat(inSource[i],
                                         dest + static_cast<std::ptrdiff_t>(i) * Type::kValueMultiplier);
    }
}

void ScaleToInterleaved(const float* inSource, float* outDest, int inSamples, int inInterval, float inScale)
{
    for (int i = 0; i < inSamples; ++i) {
        outDest[static_cast<std::ptrdiff_t>(i) * inInterval] = inSource[i] * inScale;
    }
}

} // namespace

std::size_t GetBytesPerSampleFromSampleType(AudioSampleType inType)
{
    switch (inType) {
    case AudioSampleType::k8Bit:
        return 1;
    case AudioSampleType::k16Bit:
        return 2;
    case AudioSampleType::k24Bit:
        return 3;
    case AudioSampleType::k32BitFloat:
        return 4;
    }
    return 0;
}

AudioSampleType GetSampleTypeFromBitsPerSample(int inBits)
{
    if (inBits <= 8) {
        return AudioSampleType::k8Bit;
    }
    if (inBits <= 16) {
        return AudioSampleType::k16Bit;
    }
    return inBits <= 24 ? AudioSampleType::k24Bit : AudioSampleType::k32BitFloat;
}

void ConvertBufferToFloats(const void* inSource, float* outDest, int inSamples, AudioSampleType inType)
{
    switch (inType) {
    case AudioSampleType::k8Bit:
        return ConvertRunToFloats<Type_8Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k16Bit:
        return ConvertRunToFloats<Type_16Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k24Bit:
        return ConvertRunToFloats<Type_24Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k32BitFloat:
        return ConvertRunToFloats<Type_32BitFloat>(inSource, outDest, inSamples);
    }
}

void ConvertBufferFromFloats(const float* inSource, void* outDest, int inSamples, AudioSampleType inType)
{
    switch (inType) {
    case AudioSampleType::k8Bit:
        return ConvertRunFromFloats<Type_8Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k16Bit:
        return ConvertRunFromFloats<Type_16Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k24Bit:
        return ConvertRunFromFloats<Type_24Bit>(inSource, outDest, inSamples);
    case AudioSampleType::k32BitFloat:
        return ConvertRunFromFloats<Type_32BitFloat>(inSource, outDest, inSamples);
    }
}

void Tuning_Helper_Type_32BitFloat_32768::CopyChannelToInterleavedBuffer(const float* inSource,
                                                                         float* outDest, int inSamples,
                                                                         int inInterval)
{
    ScaleToInterleaved(inSource, outDest, inSamples, inInterval, kConvertFromNormalizedFloatMultiplier);
}

void Tuning_Helper_Type_32BitFloat_32768::CopyChannelToInterleavedBuffer_OptimizeSingleChannel(
    const float* inSource, float* outDest, int inSamples, int inInterval)
{
    if (inInterval == 1 && inSamples > 0) {
        brisken::utility::MulConstant(static_cast<unsigned>(inSamples), inSource, outDest,
                                      kConvertFromNormalizedFloatMultiplier);
    } else {
        CopyChannelToInterleavedBuffer(inSource, outDest, inSamples, inInterval);
    }
}

void Tuning_Helper_Type_32BitFloat_32768::CopyChannelToInterleavedBuffer_Divide(const float* inSource,
                                                                                float* outDest, int inSamples,
                                                                                int inInterval)
{
    ScaleToInterleaved(inSource, outDest, inSamples, inInterval, kConvertToNormalizedFloatMultiplier);
}

void Tuning_Helper_Type_32BitFloat_32768::CopyChannelToInterleavedBuffer_MultDivide(const float* inSource,
                                                                                    float* outDest,
                                                                                    int inSamples,
                                                                                    int inInterval)
{
    ScaleToInterleaved(inSource, outDest, inSamples, inInterval, kConvertToNormalizedFloatMultiplier);
}

} // namespace tessaro
