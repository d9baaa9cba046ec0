#include "WaveformPlot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include <brisken/Utility.h>

#include "Plot.h"

namespace host {

namespace {

using tessaro::waveform::WaveformData;
using tessaro::waveform::WaveformDataType;
using tessaro::waveform::WaveformPeakValue;

constexpr int kTitleRoom = 84;
constexpr int kAxisRoom = 66;
constexpr int kGap = 24; // above a panel without a title
constexpr double kRoomForDots = 7.0;

int PanelHeight(std::size_t inChannels)
{
    return inChannels == 1 ? 400 : inChannels == 2 ? 260 : 130;
}

/// One channel, without its title and its place in the picture.
Plot MakePanel(const WaveformData& inData, std::size_t inChannel, const WaveformPicture& inPicture,
               const PlotAxis& inTimes, const PlotAxis& inLevels, bool inIsFirst)
{
    Plot plot(inIsFirst ? inPicture.mTitle : std::string(), inIsFirst ? inPicture.mDetails : std::string(),
              inTimes, inLevels);
    const std::size_t slots = inData.GetDataSlots();
    const double step = (inPicture.mTo - inPicture.mFrom) / static_cast<double>(slots);
    std::vector<double> first(slots), second(slots);
    if (inData.GetType() == WaveformDataType::kPeaks) {
        for (std::size_t slot = 0; slot < slots; ++slot) {
            const WaveformPeakValue peak = inData.GetWaveformPeakValue(inChannel, slot);
            // A gain below zero turns a pair round.
            std::tie(first[slot], second[slot]) = std::minmax({double{peak.mMin}, double{peak.mMax}});
        }
        plot.AddArea(std::move(first), std::move(second));
        return plot;
    }
    for (std::size_t slot = 0; slot < slots; ++slot) {
        first[slot] = inPicture.mFrom + static_cast<double>(slot) * step;
        second[slot] = inData.GetWaveformSample(inChannel, slot);
    }
    const auto columns = static_cast<double>(GetColumnCount(inPicture.mWidth));
    if (columns >= kRoomForDots * static_cast<double>(slots)) {
        plot.AddDots(first, second);
    }
    plot.AddLine({}, std::move(first), std::move(second));
    return plot;
}

PlotAxis MakeLevels(const WaveformData& inData)
{
    double highest = 1.0;
    for (std::size_t channel = 0; channel < inData.GetChannelCount(); ++channel) {
        const WaveformPeakValue peak = GetExtremes(inData, channel);
        highest = std::max({highest, std::abs(double{peak.mMin}), std::abs(double{peak.mMax})});
    }
    return {PlotAxis::Scale::kLinear, -highest, highest, {}};
}

} // namespace

std::int64_t GetColumnCount(int inPictureWidth)
{
    Plot plot({}, {}, {}, {});
    plot.SetSize(inPictureWidth, Plot::kDefaultHeight);
    return plot.GetColumnCount();
}

std::string GetChannelName(std::size_t inChannel, std::size_t inChannelCount)
{
    static constexpr std::array<const char*, 6> kSurround = {"Left", "Right",  "Center",
                                                             "LFE",  "Left S", "Right S"};
    switch (inChannelCount) {
    case 1:
        return "Mono";
    case 2:
    case 6:
        return kSurround[inChannel];
    default:
        return "Channel " + std::to_string(inChannel + 1);
    }
}

WaveformPeakValue GetExtremes(const WaveformData& inData, std::size_t inChannel)
{
    WaveformPeakValue peak;
    const std::size_t size = inData.GetSizePerChannel();
    brisken::utility::MinMax(static_cast<unsigned>(size),
                             inData.GetWaveformBuffer().data() + inChannel * size, peak.mMin, peak.mMax);
    return peak;
}

std::vector<Plot> MakeWaveformPanels(const WaveformData& inData, const WaveformPicture& inPicture,
                                     bool inHasTimes)
{
    PlotAxis times{PlotAxis::Scale::kTime, inPicture.mFrom, inPicture.mTo, {}, false};
    PlotAxis levels = MakeLevels(inData);
    const std::size_t channels = inData.GetChannelCount();
    std::vector<Plot> panels;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const bool isFirst = channel == 0;
        const bool isLast = inHasTimes && channel + 1 == channels;
        if (isLast) {
            times.mHasLabels = true;
            times.mTitle = inPicture.mTo >= 3600.0 ? "Time in h:min:s"
                           : inPicture.mTo >= 60.0 ? "Time in min:s"
                                                   : "Time in s";
        }
        levels.mTitle = GetChannelName(channel, channels);
        panels.push_back(MakePanel(inData, channel, inPicture, times, levels, isFirst));
        panels.back().SetSize(inPicture.mWidth, PanelHeight(channels) + (isFirst ? kTitleRoom : kGap) +
                                                    (isLast ? kAxisRoom : 0));
    }
    return panels;
}

void DrawWaveform(const WaveformData& inData, const WaveformPicture& inPicture,
                  const std::filesystem::path& inPath)
{
    Plot::WriteStack(MakeWaveformPanels(inData, inPicture, true), inPath);
}

} // namespace host
