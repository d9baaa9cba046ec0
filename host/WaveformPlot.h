#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <tessaro/waveform/WaveformData.h>

#include "Plot.h"

namespace host {

/// How waveform data is to be drawn.
struct WaveformPicture
{
    std::string mTitle;
    std::string mDetails;
    double mFrom = 0.0; ///< time of the first slot, seconds
    double mTo = 0.0;   ///< time where the last slot ends, seconds
    int mWidth = 0;     ///< of the picture, pixels
};

/// Slots that fit a picture: the columns of pixels of its time axis.
std::int64_t GetColumnCount(int inPictureWidth);

/// The channels below one another: peaks as an area, samples as a line, with a dot on each where there is
/// room. The level axis goes to full scale, or as far as the data does beyond that. The last one has the time
/// axis, unless something else follows below.
std::vector<Plot> MakeWaveformPanels(const tessaro::waveform::WaveformData& inData,
                                     const WaveformPicture& inPicture, bool inHasTimes);

/// Draws these panels. Throws `FileError`.
void DrawWaveform(const tessaro::waveform::WaveformData& inData, const WaveformPicture& inPicture,
                  const std::filesystem::path& inPath);

/// "Left", "LFE", "Channel 3": what a channel is called in a file with so many of them.
std::string GetChannelName(std::size_t inChannel, std::size_t inChannelCount);

/// The least and the greatest value of a channel.
tessaro::waveform::WaveformPeakValue GetExtremes(const tessaro::waveform::WaveformData& inData,
                                                 std::size_t inChannel);

} // namespace host
