#pragma once

#include <cstdint>
#include <vector>

#include "EffectChain.h"

namespace host {

/// What a linear chain does to sines of several frequencies. The chain's latency is taken off phase and group
/// delay, as a render does. NaN where nothing is known.
struct ChainResponse
{
    std::vector<double> mMagnitude;  ///< linear
    std::vector<double> mPhase;      ///< radians, -pi to pi
    std::vector<double> mGroupDelay; ///< seconds
};

/// As the effects themselves tell it; all NaN when one of them has no such function.
ChainResponse TellResponse(const EffectChain& inChain, int inSampleRate,
                           const std::vector<double>& inFrequencies);

/// The output of a chain of one channel for an impulse, up to where it has died away.
struct ImpulseResponse
{
    std::vector<float> mSamples;
    bool mHasDiedAway = true; ///< false when it still sounds at the end of the measurement
};

/// Drives the chain from reset. `inMaxBlock` is the block size that the chain was configured for.
ImpulseResponse MeasureImpulseResponse(EffectChain& ioChain, int inSampleRate, unsigned inMaxBlock);

/// As an impulse response has it.
ChainResponse ComputeResponse(const ImpulseResponse& inImpulse, std::int64_t inLatency, int inSampleRate,
                              const std::vector<double>& inFrequencies);

} // namespace host
