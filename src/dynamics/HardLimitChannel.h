#pragma once

#include <vector>

#include <tessaro/dynamics/HardLimit.h>

#include "dynamics/HardLimitEnvelope.h"

namespace tessaro {

/// What `HardLimit` keeps for each channel, beside the rings
struct HardLimit::Channel
{
    HardLimitEnvelope mEnvelope;
    TruePeakResampler mResampler;
    float mLastTruePeak = 0.0f; ///< of the frame before, between its samples
    std::vector<double> mGains; ///< of a piece: first the heights of the envelope, then the gains
};

namespace hardlimit {

/// Frames that are oversampled at a time
constexpr unsigned kChunk = 8192;
/// Frames that are on their way into the rings at a time
constexpr unsigned kPiece = 256;

} // namespace hardlimit

} // namespace tessaro
