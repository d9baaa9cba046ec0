#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tessaro/waveform/WaveformScaleFactor.h>

#include "AudioFileReader.h"
#include "Command.h"
#include "GainStages.h"
#include "HostError.h"
#include "OptionText.h"
#include "Plot.h"
#include "Report.h"
#include "WaveformPlot.h"
#include "WaveformReader.h"

namespace host {

namespace {

using tessaro::waveform::WaveformChannelScaleFactor;
using tessaro::waveform::WaveformData;
using tessaro::waveform::WaveformDataType;
using tessaro::waveform::WaveformPeakValue;
using tessaro::waveform::WaveformScaleFactor;

constexpr std::int64_t kNarrowest = 320;
constexpr std::int64_t kWidest = 16384;

/// Frames a column of pixels up to which samples are drawn instead of peaks.
constexpr std::int64_t kMostSamplesAColumn = 2;

/// `waveform IN`: the sound of a file as a picture, whole or in part.
class WaveformCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_option("--plot", mPicture, "Picture to write")->type_name("OUT.png");
        ioApp.add_option("--from", mFrom, "Where to start, in seconds (0)")->type_name("S");
        ioApp.add_option("--to", mTo, "Where to end, in seconds (the end of the file)")->type_name("S");
        ioApp.add_option("--width", mWidth, "Width of the picture in pixels, 320 to 16384 (1200)")
            ->type_name("PX");
        ioApp.add_option("--gain", mGain, "Gain in dB to draw with: one, or one for each channel")
            ->type_name("DB[,DB...]");
        ioApp.add_option("--automation", mAutomation, "Gain over time to draw with: \"0:0,2.5:-6\"")
            ->type_name("T:DB,...");
        ioApp.add_flag("--json", mJson, "Print JSON, with the value of each slot");
    }

    void Run() override
    {
        const auto width = static_cast<int>(ParseInteger("--width", mWidth, kNarrowest, kWidest, "pixels"));
        if (!mPicture.empty()) {
            Plot::CheckName(mPicture, mInput);
        }
        AudioFileReader reader(mInput);
        ChooseStretch(reader);
        auto factor = MakeScaleFactor(reader);
        const std::int64_t columns = GetColumnCount(width);
        const auto data = mFrames <= kMostSamplesAColumn * columns
                              ? ReadSamples(reader, mStart, mFrames)
                              : ReadPeaks(reader, mStart, mFrames, columns);
        Scale(*data, factor, reader.GetSampleRate());
        if (!mPicture.empty()) {
            const double rate = reader.GetSampleRate();
            DrawWaveform(*data,
                         {std::filesystem::path(mInput).filename().string(), Describe(*data, reader),
                          static_cast<double>(mStart) / rate, static_cast<double>(mStart + mFrames) / rate,
                          width},
                         mPicture);
        }
        if (mJson) {
            PrintForPrograms(reader, *data);
        } else {
            PrintForPeople(reader, *data);
        }
        FinishOutput();
    }

private:
    void ChooseStretch(const AudioFileReader& inReader)
    {
        if (inReader.GetFrameCount() == 0) {
            throw FileError(mInput, "holds 0 frames; name a longer file");
        }
        mStart = ParseTime("--from", mFrom, 0, inReader);
        const std::int64_t end = ParseTime("--to", mTo, inReader.GetFrameCount(), inReader);
        if (mStart >= inReader.GetFrameCount()) {
            throw UsageError("--from", "'" + mFrom + "' is not before the end of the file, which has " +
                                           ShortenNumber(inReader.GetSeconds()) + " seconds");
        }
        if (end <= mStart) {
            throw UsageError("--to", "'" + mTo + "' is not behind --from");
        }
        mFrames = end - mStart;
    }

    /// In frames, at most the end of the file.
    static std::int64_t ParseTime(const std::string& inOption, const std::string& inText,
                                  std::int64_t inDefault, const AudioFileReader& inReader)
    {
        if (inText.empty()) {
            return inDefault;
        }
        const double seconds = ParseNumber(inOption, inText, 0.0, kLongestTime, "seconds");
        return std::min<std::int64_t>(std::llround(seconds * inReader.GetSampleRate()),
                                      inReader.GetFrameCount());
    }

    WaveformScaleFactor MakeScaleFactor(const AudioFileReader& inReader)
    {
        std::vector<WaveformChannelScaleFactor> factors;
        for (const auto piece : SplitText(mGain, ',')) {
            factors.emplace_back(ParseGain("--gain", piece));
        }
        const auto channels = static_cast<std::size_t>(inReader.GetChannelCount());
        if (factors.size() != 1 && factors.size() != channels) {
            throw UsageError("--gain", "has " + std::to_string(factors.size()) + " gains, and the file " +
                                           std::to_string(channels) +
                                           " channels; give one gain, or one for each channel");
        }
        if (!mAutomation.empty()) {
            mPoints = ParseAutomation("--automation", mAutomation);
        }
        return WaveformScaleFactor(std::move(factors));
    }

    /// Applies the gains, one for each slot where they change over time.
    void Scale(WaveformData& ioData, WaveformScaleFactor& ioFactor, int inSampleRate) const
    {
        if (!mPoints.empty()) {
            WaveformChannelScaleFactor::ScaleVector gains(ioData.GetDataSlots());
            const double step = static_cast<double>(mFrames) / static_cast<double>(gains.size());
            const double middle = ioData.GetType() == WaveformDataType::kPeaks ? 0.5 : 0.0;
            for (std::size_t slot = 0; slot < gains.size(); ++slot) {
                const double frame =
                    static_cast<double>(mStart) + (static_cast<double>(slot) + middle) * step;
                gains[slot] = GainAt(mPoints, frame / inSampleRate);
            }
            ioFactor *= WaveformScaleFactor(WaveformChannelScaleFactor(std::move(gains)));
        }
        ioData.ApplyScaling(ioFactor);
    }

    std::string Describe(const WaveformData& inData, const AudioFileReader& inReader) const
    {
        const double rate = inReader.GetSampleRate();
        std::string text = FormatTime(static_cast<double>(mStart) / rate) + " to " +
                           FormatTime(static_cast<double>(mStart + mFrames) / rate) + " of " +
                           FormatTime(inReader.GetSeconds()) + ", ";
        if (inData.GetType() == WaveformDataType::kPeaks) {
            const auto frames = std::llround(static_cast<double>(mFrames) / inData.GetDataSlots());
            text += "peaks of " + std::to_string(frames) + " frames a pixel";
        } else {
            text += std::to_string(mFrames) + (mFrames == 1 ? " sample" : " samples");
        }
        if (mGain != "0") {
            text += ", gain " + mGain + " dB";
        }
        return mPoints.empty() ? text : text + ", gain over time " + mAutomation;
    }

    void PrintForPeople(const AudioFileReader& inReader, const WaveformData& inData) const
    {
        PrintRow("File", mInput);
        PrintRow("Waveform", Describe(inData, inReader));
        if (!mPicture.empty()) {
            PrintRow("Picture", mPicture);
        }
        std::printf("\n%-10s %10s %10s %10s\n", "Channel", "Lowest", "Highest", "Peak dBFS");
        for (std::size_t channel = 0; channel < inData.GetChannelCount(); ++channel) {
            const WaveformPeakValue peak = GetExtremes(inData, channel);
            const double highest = std::max(std::abs(peak.mMin), std::abs(peak.mMax));
            std::printf("%-10s %10.4f %10.4f %10s\n",
                        GetChannelName(channel, inData.GetChannelCount()).c_str(), double{peak.mMin},
                        double{peak.mMax}, FormatLevel(highest).c_str());
        }
    }

    static nlohmann::ordered_json ToJson(const WaveformData& inData, std::size_t inChannel)
    {
        const WaveformPeakValue extremes = GetExtremes(inData, inChannel);
        nlohmann::ordered_json channel = {{"min", extremes.mMin}, {"max", extremes.mMax}};
        for (std::size_t slot = 0; slot < inData.GetDataSlots(); ++slot) {
            if (inData.GetType() == WaveformDataType::kPeaks) {
                const WaveformPeakValue peak = inData.GetWaveformPeakValue(inChannel, slot);
                channel["mins"].push_back(peak.mMin);
                channel["maxs"].push_back(peak.mMax);
            } else {
                channel["samples"].push_back(inData.GetWaveformSample(inChannel, slot));
            }
        }
        return channel;
    }

    void PrintForPrograms(const AudioFileReader& inReader, const WaveformData& inData) const
    {
        nlohmann::ordered_json report = {
            {"file", mInput},
            {"sampleRate", inReader.GetSampleRate()},
            {"start", mStart},
            {"frames", mFrames},
            {"type", inData.GetType() == WaveformDataType::kPeaks ? "peaks" : "samples"},
            {"slots", inData.GetDataSlots()},
            {"channelCount", inData.GetChannelCount()}};
        if (!mPicture.empty()) {
            report["picture"] = mPicture;
        }
        auto channels = nlohmann::ordered_json::array();
        for (std::size_t channel = 0; channel < inData.GetChannelCount(); ++channel) {
            channels.push_back(ToJson(inData, channel));
        }
        report["channels"] = std::move(channels);
        PrintJson(report);
    }

    std::string mInput;
    std::string mPicture;
    std::string mFrom;
    std::string mTo;
    std::string mWidth = std::to_string(Plot::kDefaultWidth);
    std::string mGain = "0";
    std::string mAutomation;
    bool mJson = false;

    std::int64_t mStart = 0;
    std::int64_t mFrames = 0;
    std::vector<AutomationPoint> mPoints;
};

const RegisterCommand<WaveformCommand> kWaveform("waveform", "Draw the waveform of a file, whole or in part");

} // namespace

} // namespace host
