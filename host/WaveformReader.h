#pragma once

#include <cstdint>
#include <memory>

#include <tessaro/waveform/WaveformData.h>

#include "AudioSource.h"

namespace host {

/// Reads a stretch of audio as waveform data, in one pass.
///
/// Peaks: the stretch falls into `inSlots` parts of equal length, as far as whole frames go, and each slot
/// holds the extremes of its part in each channel; at least as many frames as slots. Samples: a slot for each
/// frame. Values that are NaN or infinite are passed over, and are zeros where there is nothing else. Work
/// above a second shows its progress.
///
/// `inStart` and `inFrames` lie within the source. Throws what the source throws.
std::shared_ptr<tessaro::waveform::WaveformData> ReadPeaks(AudioSource& ioSource, std::int64_t inStart,
                                                           std::int64_t inFrames, std::int64_t inSlots);
std::shared_ptr<tessaro::waveform::WaveformData> ReadSamples(AudioSource& ioSource, std::int64_t inStart,
                                                             std::int64_t inFrames);

} // namespace host
