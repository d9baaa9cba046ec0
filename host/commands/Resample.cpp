#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioBufferHelpers.h>

#include "AudioFileReader.h"
#include "AudioFileWriter.h"
#include "Command.h"
#include "FlushToZero.h"
#include "HostError.h"
#include "OptionText.h"
#include "Progress.h"
#include "RateConverter.h"
#include "Report.h"

namespace host {

namespace {

using Engine = RateConversion::Engine;

struct NamedEngine
{
    const char* mName;
    Engine mEngine;
};

constexpr std::array<NamedEngine, 3> kEngines = {
    {{"table", Engine::kTable}, {"kernel", Engine::kKernel}, {"linear", Engine::kLinear}}};

constexpr unsigned kBlock = 8192;
constexpr std::int64_t kLowestRate = 1000;
constexpr std::int64_t kHighestRate = 768000;
constexpr std::int64_t kLowestOrder = 3;
constexpr std::int64_t kHighestOrder = 8191;
constexpr double kHighestNoiseFloor = 180.0;

/// `resample IN OUT`: a file at another sampling rate, as long as before and lined up with it.
class ResampleCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_option("OUT", mOutput, "File to write: .wav or .flac")->required();
        ioApp.add_option("--rate", mRate, "Sampling rate of the output in Hz, 1000 to 768000")
            ->required()
            ->type_name("HZ");
        ioApp
            .add_option("--engine", mEngine,
                        "table (windowed sinc, double precision), kernel (the same in single precision) or "
                        "linear (table)")
            ->type_name("NAME");
        ioApp
            .add_option("--order", mOrder,
                        "Taps of the table, 3 to 8191: the more, the steeper. Even ones count one less (255)")
            ->type_name("N");
        ioApp.add_option("--noise-floor", mNoiseFloor, "Of the table's stop band, 0 to 180 dB down (150)")
            ->type_name("DB");
        ioApp.add_option("--quality", mQuality, "Of the kernel, 0 to 1 (0.5)")->type_name("Q");
        ioApp.add_option("--bits", mBits, "16, 24, or 32 for floats (as the input)")->type_name("16|24|32");
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        ParseOptions();
        AudioFileReader reader(mInput);
        std::error_code error;
        if (std::filesystem::equivalent(mInput, mOutput, error)) {
            throw UsageError(mOutput, "is the input itself; name another file");
        }
        mConversion.mSourceRate = reader.GetSampleRate();
        Resample(reader);
        if (mJson) {
            PrintForPrograms(reader);
        } else {
            PrintForPeople(reader);
        }
        FinishOutput();
    }

private:
    void ParseOptions()
    {
        mConversion.mDestinationRate =
            static_cast<int>(ParseInteger("--rate", mRate, kLowestRate, kHighestRate, "Hz"));
        const auto* engine = std::find_if(kEngines.begin(), kEngines.end(),
                                          [this](const auto& inEngine) { return mEngine == inEngine.mName; });
        if (engine == kEngines.end()) {
            throw UsageError("--engine", "'" + mEngine + "' is none of table, kernel, linear");
        }
        mConversion.mEngine = engine->mEngine;
        CheckEngine("--order", mOrder, Engine::kTable, "table");
        CheckEngine("--noise-floor", mNoiseFloor, Engine::kTable, "table");
        CheckEngine("--quality", mQuality, Engine::kKernel, "kernel");
        mConversion.mOrder = static_cast<int>(
            ParseInteger("--order", mOrder.empty() ? "255" : mOrder, kLowestOrder, kHighestOrder, "taps"));
        mConversion.mNoiseFloor = ParseNumber("--noise-floor", mNoiseFloor.empty() ? "150" : mNoiseFloor, 0.0,
                                              kHighestNoiseFloor, "dB");
        mConversion.mQuality = ParseNumber("--quality", mQuality.empty() ? "0.5" : mQuality, 0.0, 1.0, "");
        if (!mBits.empty() && mBits != "16" && mBits != "24" && mBits != "32") {
            throw UsageError("--bits", "'" + mBits + "' is not 16, 24 or 32");
        }
    }

    void CheckEngine(const char* inOption, const std::string& inText, Engine inEngine,
                     const char* inName) const
    {
        if (!inText.empty() && mConversion.mEngine != inEngine) {
            throw UsageError(inOption, std::string("goes with --engine ") + inName + " only");
        }
    }

    int ChooseBits(const AudioFileReader& inReader) const
    {
        if (!mBits.empty()) {
            return static_cast<int>(ParseInteger("--bits", mBits, 16, 32, ""));
        }
        const bool isFlac = std::filesystem::path(mOutput).extension() == ".flac";
        return isFlac ? std::min(inReader.GetBits(), 24) : inReader.GetBits();
    }

    void Resample(AudioFileReader& ioReader)
    {
        const auto channels = static_cast<std::size_t>(ioReader.GetChannelCount());
        mFrames = std::llround(static_cast<double>(ioReader.GetFrameCount()) * mConversion.mDestinationRate /
                               mConversion.mSourceRate);
        mWrittenBits = ChooseBits(ioReader);
        AudioFileWriter writer(
            mOutput, {mConversion.mDestinationRate, ioReader.GetChannelCount(), mWrittenBits, mFrames});
        const auto started = std::chrono::steady_clock::now();
        std::vector<std::unique_ptr<RateConverter>> converters;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            converters.push_back(RateConverter::Create(mConversion));
        }
        const FlushToZero flushToZero;
        Progress progress("resampling", mFrames);
        tessaro::AudioBuffer input(channels, kBlock);
        std::vector<std::vector<float>> rows(channels);
        for (std::int64_t written = 0; written < mFrames; progress.Update(written)) {
            FillBlock(ioReader, input);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                rows[channel].clear();
                converters[channel]->Convert(input[channel], static_cast<int>(input.GetBufferSize()),
                                             rows[channel]);
            }
            written += WriteRows(writer, rows, mFrames - written);
        }
        writer.Commit();
        mClipped = writer.GetClippedCount();
        mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    }

    /// Writes the rows, at most `inMost` frames of them, and returns how many.
    static std::int64_t WriteRows(AudioFileWriter& ioWriter, const std::vector<std::vector<float>>& inRows,
                                  std::int64_t inMost)
    {
        const auto count = std::min(static_cast<std::int64_t>(inRows[0].size()), inMost);
        if (count > 0) {
            tessaro::AudioBuffer block(inRows.size(), static_cast<unsigned>(count));
            for (std::size_t channel = 0; channel < inRows.size(); ++channel) {
                std::copy_n(inRows[channel].begin(), count, block[channel]);
            }
            ioWriter.Write(block);
        }
        return count;
    }

    /// The next block of the file, and zeros behind its end.
    static void FillBlock(AudioFileReader& ioReader, tessaro::AudioBuffer& outBlock)
    {
        if (ioReader.Read(outBlock, kBlock) == 0) {
            outBlock.SetUseSize(kBlock);
            outBlock.Zero();
        }
        tessaro::ZeroBufferAccordingToSilenceFlags(outBlock);
    }

    std::string DescribeEngine() const
    {
        switch (mConversion.mEngine) {
        case Engine::kTable:
            return "table, " + std::to_string((mConversion.mOrder - 1) / 2 * 2 + 1) + " taps, noise floor " +
                   ShortenNumber(mConversion.mNoiseFloor) + " dB";
        case Engine::kKernel:
            return "kernel, quality " + ShortenNumber(mConversion.mQuality);
        case Engine::kLinear:
            break;
        }
        return "linear";
    }

    void PrintForPeople(const AudioFileReader& inReader) const
    {
        PrintRow("Input", mInput + " (" + std::to_string(mConversion.mSourceRate) + " Hz, " +
                              std::to_string(inReader.GetFrameCount()) + " frames)");
        PrintRow("Output", mOutput + " (" + std::to_string(mConversion.mDestinationRate) + " Hz, " +
                               std::to_string(mFrames) + " frames, " + std::to_string(mWrittenBits) +
                               " bit)");
        PrintRow("Engine", DescribeEngine());
        PrintRow("Length", FormatTime(inReader.GetSeconds()));
        if (mClipped > 0) {
            PrintRow("Clipped", std::to_string(mClipped) + " samples beyond full scale");
        }
        char text[64];
        std::snprintf(text, sizeof text, "%.3f s, %.0f times real time", mElapsedSeconds,
                      inReader.GetSeconds() / mElapsedSeconds);
        PrintRow("Time", text);
    }

    void PrintForPrograms(const AudioFileReader& inReader) const
    {
        PrintJson({{"input", mInput},
                   {"output", mOutput},
                   {"channelCount", inReader.GetChannelCount()},
                   {"inputRate", mConversion.mSourceRate},
                   {"inputFrames", inReader.GetFrameCount()},
                   {"sampleRate", mConversion.mDestinationRate},
                   {"frames", mFrames},
                   {"engine", mEngine},
                   {"bits", mWrittenBits},
                   {"clippedSamples", mClipped},
                   {"elapsedSeconds", mElapsedSeconds}});
    }

    std::string mInput;
    std::string mOutput;
    std::string mRate;
    std::string mEngine = "table";
    std::string mOrder;
    std::string mNoiseFloor;
    std::string mQuality;
    std::string mBits;
    bool mJson = false;

    RateConversion mConversion;
    std::int64_t mFrames = 0;
    int mWrittenBits = 0;
    std::int64_t mClipped = 0;
    double mElapsedSeconds = 0.0;
};

const RegisterCommand<ResampleCommand> kResample("resample", "Write a file at another sampling rate");

} // namespace

} // namespace host
