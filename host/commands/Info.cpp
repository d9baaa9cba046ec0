#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "AudioFileReader.h"
#include "Command.h"
#include "LevelMeter.h"
#include "Progress.h"
#include "Report.h"

namespace host {

namespace {

constexpr unsigned kBlockSize = 8192;

/// `info FILE`: rate, channels and length of an audio file, and peak and RMS of each channel.
class InfoCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("FILE", mFile, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        AudioFileReader reader(mFile);
        const LevelMeter meter = Measure(reader);
        if (mJson) {
            PrintForPrograms(reader, meter);
        } else {
            PrintForPeople(reader, meter);
        }
        FinishOutput();
    }

private:
    static LevelMeter Measure(AudioFileReader& ioReader)
    {
        LevelMeter meter(ioReader.GetChannelCount());
        Progress progress("measuring", ioReader.GetFrameCount());
        tessaro::AudioBuffer block(static_cast<std::size_t>(ioReader.GetChannelCount()), kBlockSize);
        std::int64_t done = 0;
        while (const unsigned frames = ioReader.Read(block, kBlockSize)) {
            meter.Add(block);
            progress.Update(done += frames);
        }
        return meter;
    }

    void PrintForPeople(const AudioFileReader& inReader, const LevelMeter& inMeter) const
    {
        PrintRow("File", mFile);
        PrintRow("Format", inReader.GetFormatName());
        PrintRow("Rate", std::to_string(inReader.GetSampleRate()) + " Hz");
        PrintRow("Channels", std::to_string(inReader.GetChannelCount()));
        PrintRow("Length", FormatTime(inReader.GetSeconds()) + " (" +
                               std::to_string(inReader.GetFrameCount()) + " frames)");
        std::printf("\n%-10s %10s %10s\n", "Channel", "Peak dBFS", "RMS dBFS");
        for (int channel = 0; channel < inReader.GetChannelCount(); ++channel) {
            std::printf("%-10d %10s %10s", channel + 1, FormatLevel(inMeter.GetPeak(channel)).c_str(),
                        FormatLevel(inMeter.GetRms(channel)).c_str());
            if (const auto invalid = inMeter.GetInvalidCount(channel)) {
                std::printf("  (left out %lld NaN or infinite samples)", static_cast<long long>(invalid));
            }
            std::printf("\n");
        }
    }

    void PrintForPrograms(const AudioFileReader& inReader, const LevelMeter& inMeter) const
    {
        auto channels = nlohmann::ordered_json::array();
        for (int channel = 0; channel < inReader.GetChannelCount(); ++channel) {
            channels.push_back({{"peak", inMeter.GetPeak(channel)},
                                {"peakDb", LevelToJson(inMeter.GetPeak(channel))},
                                {"rms", inMeter.GetRms(channel)},
                                {"rmsDb", LevelToJson(inMeter.GetRms(channel))},
                                {"invalidSamples", inMeter.GetInvalidCount(channel)}});
        }
        PrintJson({{"file", mFile},
                   {"format", inReader.GetFormatName()},
                   {"sampleRate", inReader.GetSampleRate()},
                   {"channelCount", inReader.GetChannelCount()},
                   {"frames", inReader.GetFrameCount()},
                   {"seconds", inReader.GetSeconds()},
                   {"channels", std::move(channels)}});
    }

    std::string mFile;
    bool mJson = false;
};

const RegisterCommand<InfoCommand> kInfo("info",
                                         "Tell a file's format, length, and peak and RMS of each channel");

} // namespace

} // namespace host
