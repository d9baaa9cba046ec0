#include <tessaro/utility/Gain.h>

#include <algorithm>

#include <brisken/Utility.h>

#include "utility/Ramps.h"

namespace tessaro {

namespace kernels = brisken::utility;

namespace {

/// Kernels count in 32 bits; longer ranges go in pieces of this.
constexpr std::int64_t kLongestRun = std::int64_t{1} << 30;

/// Samples of ramp that are made at a time: few enough that they and a piece of each row stay in the cache.
constexpr std::int64_t kRampChunk = 1024;

/// Calls `inFunction(offset, count)` for pieces of at most `inLongest` samples, in order.
template <typename Function>
void ForEachPiece(std::int64_t inOffset, std::int64_t inCount, std::int64_t inLongest, Function inFunction)
{
    for (std::int64_t done = 0; done < inCount; done += inLongest) {
        inFunction(inOffset + done, static_cast<unsigned>(std::min(inCount - done, inLongest)));
    }
}

template <typename T>
void MultiplyOrCopy(const T* const* inSource, T* const* outDest, std::size_t inNumChannels,
                    std::int64_t inOffset, std::int64_t inCount, T inGain)
{
    ForEachPiece(inOffset, inCount, kLongestRun, [=](std::int64_t inAt, unsigned inPiece) {
        for (std::size_t channel = 0; channel < inNumChannels; ++channel) {
            const T* source = inSource[channel] + inAt;
            T* dest = outDest[channel] + inAt;
            if (inGain != T{1}) {
                kernels::MulConstant(inPiece, source, dest, inGain);
            } else if (source != dest) {
                kernels::Copy(inPiece, source, dest);
            }
        }
    });
}

} // namespace

template <typename T>
void ApplyGain(T* const* ioChannels, std::size_t inNumChannels, std::int64_t inOffset, std::int64_t inCount,
               T inGain)
{
    if (inGain == T{1}) {
        return;
    }
    ForEachPiece(inOffset, inCount, kLongestRun, [=](std::int64_t inAt, unsigned inPiece) {
        for (std::size_t channel = 0; channel < inNumChannels; ++channel) {
            if (inGain == T{0}) {
                kernels::Zero(inPiece, ioChannels[channel] + inAt);
            } else {
                kernels::MulConstant_InPlace(inPiece, ioChannels[channel] + inAt, inGain);
            }
        }
    });
}

template <typename T>
void ApplyGainWithRamping(const T* const* inSource, T* const* outDest, std::size_t inNumChannels,
                          std::int64_t inOffset, std::int64_t inCount, T inStartGain, T inEndGain)
{
    if (inStartGain == inEndGain) {
        MultiplyOrCopy(inSource, outDest, inNumChannels, inOffset, inCount, inStartGain);
        return;
    }
    const T step = (inEndGain - inStartGain) / static_cast<T>(inCount);
    T gain = inStartGain;
    T ramp[kRampChunk];
    ForEachPiece(inOffset, inCount, kRampChunk, [&](std::int64_t inAt, unsigned inPiece) {
        gain = ramps::GenerateLinear(gain, step, ramp, inPiece);
        for (std::size_t channel = 0; channel < inNumChannels; ++channel) {
            kernels::Mul(inPiece, inSource[channel] + inAt, ramp, outDest[channel] + inAt);
        }
    });
}

template <typename T>
void ApplyGainWithRamping(const T* const* inSource, T* const* outDest, std::size_t inNumChannels,
                          std::int64_t inCount, T inStartGain, T inEndGain)
{
    ApplyGainWithRamping(inSource, outDest, inNumChannels, 0, inCount, inStartGain, inEndGain);
}

template <typename T>
void ApplyGainWithRamping(T* const* ioChannels, std::size_t inNumChannels, std::int64_t inOffset,
                          std::int64_t inCount, T inStartGain, T inEndGain)
{
    ApplyGainWithRamping<T>(ioChannels, ioChannels, inNumChannels, inOffset, inCount, inStartGain, inEndGain);
}

template <typename T>
void ApplyGainWithRamping(T* const* ioChannels, std::size_t inNumChannels, std::int64_t inCount,
                          T inStartGain, T inEndGain)
{
    ApplyGainWithRamping<T>(ioChannels, ioChannels, inNumChannels, 0, inCount, inStartGain, inEndGain);
}

#define TESSARO_INSTANTIATE_GAIN(T)                                                                          \
    template TESSARO_EXPORT void ApplyGain<T>(T* const*, std::size_t, std::int64_t, std::int64_t, T);        \
    template TESSARO_EXPORT void ApplyGainWithRamping<T>(T* const*, std::size_t, std::int64_t, std::int64_t, \
                                                         T, T);                                              \
    template TESSARO_EXPORT void ApplyGainWithRamping<T>(T* const*, std::size_t, std::int64_t, T, T);        \
    template TESSARO_EXPORT void ApplyGainWithRamping<T>(const T* const*, T* const*, std::size_t,            \
                                                         std::int64_t, std::int64_t, T, T);                  \
    template TESSARO_EXPORT void ApplyGainWithRamping<T>(const T* const*, T* const*, std::size_t,            \
                                                         std::int64_t, T, T);

TESSARO_INSTANTIATE_GAIN(float)
TESSARO_INSTANTIATE_GAIN(double)

#undef TESSARO_INSTANTIATE_GAIN

} // namespace tessaro
