#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ombrel/string/Unicode.h>
#include <tessaro/loudness/LoudnessStandards.h>

#include "AudioFileReader.h"
#include "Command.h"
#include "HostError.h"
#include "LoudnessMeasurement.h"
#include "OptionText.h"
#include "Plot.h"
#include "Report.h"
#include "WaveformPlot.h"
#include "WaveformReader.h"

namespace host {

namespace {

namespace loudness = tessaro::loudness;

/// What a standard asks for
struct Aim
{
    explicit Aim(int inStandard)
        : mUnit(ombrel::string::UTF16ToStd8String(
              loudness::GetLoudnessUnitString(loudness::GetUnitForLoudnessStandard(inStandard), true)))
    {
        loudness::GetTargetLoudnessForLoudnessStandard(inStandard, mTarget);
        loudness::GetLoudnessToleranceForLoudnessStandard(inStandard, mTolerance);
        loudness::GetMaxTruePeakLevelForLoudnessStandard(inStandard, mTruePeak);
    }

    std::string JudgeLoudness(const LoudnessMeasurement& inMeasurement) const
    {
        const double distance = inMeasurement.GetLKFS() - mTarget;
        return !inMeasurement.IsValid()            ? "not measurable"
               : std::fabs(distance) <= mTolerance ? "in tolerance"
               : distance > 0                      ? "too loud"
                                                   : "too quiet";
    }

    std::string JudgeTruePeak(double inLevel) const { return inLevel <= mTruePeak ? "in limit" : "too high"; }

    std::string mUnit;
    double mTarget = 0.0;
    double mTolerance = 0.0;
    double mTruePeak = 0.0;
};

std::string Format(const char* inFormat, double inValue)
{
    char text[64];
    std::snprintf(text, sizeof text, inFormat, inValue);
    return text;
}

/// Level in dB, which the true peak of silence is too small for
std::string FormatPeak(float inDecibels)
{
    return inDecibels <= -300.0f ? "-inf" : Format("%.2f", inDecibels);
}

nlohmann::ordered_json PeakToJson(float inDecibels)
{
    return inDecibels <= -300.0f ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(inDecibels);
}

/// `measure IN`: loudness and peaks of a file against a standard.
class MeasureCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp
            .add_option("--plot", mPicture, "Picture of the waveform and of the loudness over time to write")
            ->type_name("OUT.png");
        ioApp
            .add_option(
                "--standard", mStandard,
                "What to judge by: 0 for -24 LKFS +-2 and -2 dBTP, 1 for -23 LUFS +-0.5 and -1 dBTP (1)")
            ->type_name("0|1");
        ioApp.add_flag("--json", mJson, "Print JSON, with the loudness over time");
    }

    void Run() override
    {
        const Aim aim(
            static_cast<int>(ParseInteger("--standard", mStandard, 0, 1, "(number of a standard)")));
        AudioFileReader reader(mInput);
        if (!mPicture.empty()) {
            Plot::CheckName(mPicture, mInput);
        }
        const LoudnessMeasurement measurement(reader);
        if (!mPicture.empty()) {
            Draw(reader, measurement, aim);
        }
        if (mJson) {
            PrintForPrograms(reader, measurement, aim);
        } else {
            PrintForPeople(reader, measurement, aim);
        }
        FinishOutput();
    }

private:
    std::string Summarise(const LoudnessMeasurement& inMeasurement, const Aim& inAim) const
    {
        const std::string integrated = inMeasurement.IsValid()
                                           ? Format("%.1f ", inMeasurement.GetLKFS()) + inAim.mUnit
                                           : std::string("not measurable");
        return "integrated " + integrated + ", true peak " +
               FormatPeak(inMeasurement.GetLoudestChannel().mTruePeak) + " dB";
    }

    void Draw(AudioFileReader& ioReader, const LoudnessMeasurement& inMeasurement, const Aim& inAim) const
    {
        std::vector<double> seconds;
        std::vector<double> stretches;
        std::vector<double> soFar;
        double lowest = inAim.mTarget;
        double highest = inAim.mTarget;
        for (const auto& moment : inMeasurement.GetMoments()) {
            seconds.push_back(moment.mSeconds);
            stretches.push_back(moment.mStretch);
            soFar.push_back(moment.mSoFar);
            for (const double level : {stretches.back(), soFar.back()}) {
                lowest = std::isfinite(level) ? std::min(lowest, level) : lowest;
                highest = std::isfinite(level) ? std::max(highest, level) : highest;
            }
        }
        const double end = std::max(ioReader.GetSeconds(), 0.001);
        auto plots = MakeWaveform(ioReader, Summarise(inMeasurement, inAim));
        Plot plot({}, {}, {PlotAxis::Scale::kTime, 0.0, end, end >= 60.0 ? "Time in min:s" : "Time in s"},
                  MakeDecibelAxis(std::max(lowest, highest - 60.0), highest, "Loudness in " + inAim.mUnit));
        plot.AddLine("last " + std::to_string(LoudnessMeasurement::kStretchSeconds) + " s", seconds,
                     std::move(stretches));
        plot.AddLine("integrated so far", std::move(seconds), std::move(soFar));
        plot.AddLine("target " + ShortenNumber(inAim.mTarget), {0.0, end}, {inAim.mTarget, inAim.mTarget});
        plots.push_back(std::move(plot));
        Plot::WriteStack(plots, mPicture);
    }

    /// The channels of the whole file, below the title of the picture
    std::vector<Plot> MakeWaveform(AudioFileReader& ioReader, std::string inDetails) const
    {
        const std::int64_t frames = ioReader.GetFrameCount();
        const WaveformPicture picture{std::filesystem::path(mInput).filename().string(), std::move(inDetails),
                                      0.0, ioReader.GetSeconds(), Plot::kDefaultWidth};
        if (frames == 0) {
            return {};
        }
        ioReader.Seek(0);
        const std::int64_t columns = std::min(GetColumnCount(picture.mWidth), frames);
        return MakeWaveformPanels(*ReadPeaks(ioReader, 0, frames, columns), picture, false);
    }

    void PrintForPeople(const AudioFileReader& inReader, const LoudnessMeasurement& inMeasurement,
                        const Aim& inAim) const
    {
        const auto& loudest = inMeasurement.GetLoudestChannel();
        PrintRow("File", mInput);
        PrintRow("Loudness", inMeasurement.IsValid()
                                 ? Format("%.2f ", inMeasurement.GetLKFS()) + inAim.mUnit
                                 : "not measurable: no 400 ms are above -70 " + inAim.mUnit);
        PrintRow("Target", ShortenNumber(inAim.mTarget) + " " + inAim.mUnit + ", tolerance " +
                               ShortenNumber(inAim.mTolerance) + ": " + inAim.JudgeLoudness(inMeasurement));
        PrintRow("True peak",
                 FormatPeak(loudest.mTruePeak) + " dB at " +
                     FormatTime(static_cast<double>(loudest.mTruePeakFrame) / inReader.GetSampleRate()));
        PrintRow("Limit", ShortenNumber(inAim.mTruePeak) + " dB: " + inAim.JudgeTruePeak(loudest.mTruePeak));
        std::string overshoots;
        for (const auto& [decibels, count] : inMeasurement.GetOvershoots()) {
            overshoots += (overshoots.empty() ? "" : ", ") + std::to_string(count) + " above " +
                          std::to_string(decibels) + " dB";
        }
        PrintRow("Overshoots", overshoots + " (blocks of " +
                                   std::to_string(LoudnessMeasurement::kBlockFrames) + " frames)");
        if (!mPicture.empty()) {
            PrintRow("Picture", mPicture);
        }
        std::printf("\n%-10s %-6s %12s %14s\n", "Channel", "Place", "Peak dBFS", "True peak dB");
        int number = 0;
        for (const auto& channel : inMeasurement.GetChannels()) {
            std::printf("%-10d %-6s %12s %14s", ++number, channel.mName.c_str(),
                        FormatLevel(channel.mSamplePeak).c_str(), FormatPeak(channel.mTruePeak).c_str());
            if (channel.mInvalidCount != 0) {
                std::printf("  (took %lld NaN or infinite samples as zeros)",
                            static_cast<long long>(channel.mInvalidCount));
            }
            std::printf("\n");
        }
    }

    void PrintForPrograms(const AudioFileReader& inReader, const LoudnessMeasurement& inMeasurement,
                          const Aim& inAim) const
    {
        const auto toJson = [](float inLevel) {
            return std::isfinite(inLevel) ? nlohmann::ordered_json(inLevel) : nlohmann::ordered_json(nullptr);
        };
        auto channels = nlohmann::ordered_json::array();
        for (const auto& channel : inMeasurement.GetChannels()) {
            channels.push_back({{"place", channel.mName},
                                {"peakDb", LevelToJson(channel.mSamplePeak)},
                                {"truePeakDb", PeakToJson(channel.mTruePeak)},
                                {"truePeakFrame", channel.mTruePeakFrame},
                                {"invalidSamples", channel.mInvalidCount}});
        }
        auto moments = nlohmann::ordered_json::array();
        for (const auto& moment : inMeasurement.GetMoments()) {
            moments.push_back({{"seconds", moment.mSeconds},
                               {"last3s", toJson(moment.mStretch)},
                               {"integrated", toJson(moment.mSoFar)}});
        }
        auto overshoots = nlohmann::ordered_json::object();
        for (const auto& [decibels, count] : inMeasurement.GetOvershoots()) {
            overshoots[std::to_string(decibels)] = count;
        }
        const auto& loudest = inMeasurement.GetLoudestChannel();
        PrintJson({{"file", mInput},
                   {"sampleRate", inReader.GetSampleRate()},
                   {"channelCount", inReader.GetChannelCount()},
                   {"seconds", inReader.GetSeconds()},
                   {"unit", inAim.mUnit},
                   {"integrated", inMeasurement.IsValid() ? nlohmann::ordered_json(inMeasurement.GetLKFS())
                                                          : nlohmann::ordered_json(nullptr)},
                   {"target", inAim.mTarget},
                   {"tolerance", inAim.mTolerance},
                   {"loudnessVerdict", inAim.JudgeLoudness(inMeasurement)},
                   {"truePeakDb", PeakToJson(loudest.mTruePeak)},
                   {"truePeakFrame", loudest.mTruePeakFrame},
                   {"truePeakLimit", inAim.mTruePeak},
                   {"truePeakVerdict", inAim.JudgeTruePeak(loudest.mTruePeak)},
                   {"overshoots", std::move(overshoots)},
                   {"channels", std::move(channels)},
                   {"loudnessOverTime", std::move(moments)}});
    }

    std::string mInput;
    std::string mPicture;
    std::string mStandard = "1";
    bool mJson = false;
};

const RegisterCommand<MeasureCommand> kMeasure("measure",
                                               "Measure loudness and true peak, and judge by a standard");

} // namespace

} // namespace host
