#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <ombrel/string/Unicode.h>
#include <tessaro/messaging/RealtimeMessageQueue.h>

#include "AudioFileReader.h"
#include "AudioFileWriter.h"
#include "Command.h"
#include "HostError.h"
#include "OptionText.h"
#include "Progress.h"
#include "Report.h"
#include "chain/ChainOptions.h"
#include "play/BlockStream.h"
#include "play/ChainControl.h"
#include "play/ControlFile.h"
#include "play/DropoutPrinter.h"
#include "play/PlayEngine.h"

namespace host {

namespace {

using tessaro::messaging::RealtimeMessageQueue;

constexpr std::int64_t kLargestBlock = 1 << 16;
constexpr double kSlowest = 0.01;
constexpr double kFastest = 10000.0;
constexpr double kLongestOverload = 10000.0; // ms
constexpr double kLatest = 1e6;              // s
constexpr double kReadAhead = 0.5;           // s of real time
constexpr double kFewestBlocks = 8.0;
constexpr double kMostBlocks = 4096.0;
constexpr std::size_t kQueueCapacity = 64;

/// `play IN [OUT]`: a file through a chain against the clock, with changes while it plays, as an engine does
/// it: a playing thread, this one for control, one for files and one that tells about dropouts.
class PlayCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_option("OUT", mOutput, "Where to write what was played, latency and all: .wav or .flac");
        mChainOptions.Define(ioApp);
        ioApp
            .add_option("--control", mControl,
                        "Changes while playing, a line each: SECONDS set N "
                        "PARAMETER=VALUE | insert N EFFECT | remove N | mode "
                        "bypass | mode process")
            ->type_name("FILE");
        ioApp.add_option("--block", mBlock, "Frames a block, 1 to 65536 (512)")->type_name("N");
        ioApp.add_option("--rate-factor", mRateFactor, "How much faster than real time, 0.01 to 10000 (1)")
            ->type_name("X");
        ioApp
            .add_option("--overload", mOverload,
                        "Useless work while playing, at T seconds for MS milliseconds")
            ->type_name("T:MS,...");
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        const auto block = static_cast<unsigned>(ParseInteger("--block", mBlock, 1, kLargestBlock, "frames"));
        const double factor =
            ParseNumber("--rate-factor", mRateFactor, kSlowest, kFastest, "times real time");
        const auto overloads = ParseOverloads();
        const auto events = mControl.empty() ? std::vector<ControlEvent>() : ReadControlFile(mControl);
        const auto chain = mChainOptions.Load();
        AudioFileReader reader(mInput);
        std::error_code error;
        if (!mOutput.empty() && std::filesystem::equivalent(mInput, mOutput, error)) {
            throw UsageError(mOutput, "is the input itself; name another file");
        }
        mFormat = {reader.GetChannelCount(), reader.GetSampleRate(), static_cast<int>(block)};
        mPeriod = block / (reader.GetSampleRate() * factor);
        Play(reader, chain, events, overloads);
        FinishOutput();
    }

private:
    std::vector<Overload> ParseOverloads() const
    {
        std::vector<Overload> overloads;
        if (mOverload.empty()) {
            return overloads;
        }
        for (const auto piece : SplitText(mOverload, ',')) {
            const auto colon = std::min(piece.find(':'), piece.size());
            const auto seconds = ReadNumber(piece.substr(0, colon));
            const auto milliseconds = ReadNumber(piece.substr(std::min(colon + 1, piece.size())));
            if (!seconds || !milliseconds || *seconds < 0.0 || *seconds > kLatest || *milliseconds < 0.0 ||
                *milliseconds > kLongestOverload) {
                throw UsageError("--overload",
                                 "'" + std::string(piece) +
                                     "' is not SECONDS:MILLISECONDS; write, for example, 1.5:40");
            }
            overloads.push_back({*seconds, *milliseconds});
        }
        std::sort(overloads.begin(), overloads.end(), [](const Overload& inLeft, const Overload& inRight) {
            return inLeft.mSeconds < inRight.mSeconds;
        });
        return overloads;
    }

    void Play(AudioFileReader& ioReader, const ChainDescription& inChain,
              const std::vector<ControlEvent>& inEvents, const std::vector<Overload>& inOverloads)
    {
        ChainCrossfade played(std::make_unique<EffectChain>(inChain, mFormat), mFormat);
        std::optional<AudioFileWriter> writer;
        if (!mOutput.empty()) {
            const int bits = std::filesystem::path(mOutput).extension() == ".flac"
                                 ? std::min(ioReader.GetBits(), 24)
                                 : ioReader.GetBits();
            writer.emplace(mOutput, AudioFileFormat{mFormat.mSampleRate, mFormat.mChannelCount, bits,
                                                    ioReader.GetFrameCount()});
        }
        const boost::intrusive_ptr<RealtimeMessageQueue> queue(new RealtimeMessageQueue(kQueueCapacity));
        queue->SetDescription("play");
        ChainControl control(inChain, mFormat, *queue, played);
        const tessaro::dropouts::DropoutContext context(ombrel::string::Std8ToUTF16String(mInput));
        DropoutPrinter printer;
        BlockStream stream(ioReader, writer ? &*writer : nullptr, static_cast<unsigned>(mFormat.mMaxBlock),
                           CountBlocksAhead());
        const auto blocks = (ioReader.GetFrameCount() + mFormat.mMaxBlock - 1) / mFormat.mMaxBlock;
        PlayEngine engine({mPeriod, mFormat.mSampleRate, blocks}, stream, played, *queue, context,
                          inOverloads);
        Control(engine, control, *queue, inEvents, ioReader.GetFrameCount());
        engine.Join();
        queue->Clear();
        stream.Finish();
        if (writer) {
            writer->Commit();
        }
        printer.Finish();
        Report(engine, control, printer);
    }

    std::size_t CountBlocksAhead() const
    {
        return static_cast<std::size_t>(std::clamp(kReadAhead / mPeriod, kFewestBlocks, kMostBlocks));
    }

    /// What the control thread does until everything has been played.
    void Control(PlayEngine& ioEngine, ChainControl& ioControl, RealtimeMessageQueue& ioQueue,
                 const std::vector<ControlEvent>& inEvents, std::int64_t inFrames)
    {
        const auto pause = std::chrono::duration<double>(std::clamp(mPeriod / 2.0, 0.0001, 0.005));
        Progress progress("playing", inFrames);
        ioEngine.Start();
        for (auto event = inEvents.begin(); ioEngine.IsPlaying();) {
            const auto position = ioEngine.GetPosition();
            const double seconds = static_cast<double>(position) / mFormat.mSampleRate;
            for (; event != inEvents.end() && event->mSeconds <= seconds; ++event) {
                Post(*event, ioControl);
            }
            ioQueue.PumpFromControlThread();
            progress.Update(position);
            std::this_thread::sleep_for(pause);
        }
    }

    void Post(const ControlEvent& inEvent, ChainControl& ioControl)
    {
        try {
            ioControl.Post(inEvent);
        } catch (const HostError& error) {
            ++mRefused;
            std::fprintf(stderr, "tessaro-host: %s; the sound stays as it is\n", error.what());
        }
    }

    void Report(const PlayEngine& inEngine, const ChainControl& inControl,
                const DropoutPrinter& inPrinter) const
    {
        auto times = inEngine.GetBlockTimes();
        std::sort(times.begin(), times.end());
        const double worst = times.empty() ? 0.0 : times.back();
        const double median = times.empty() ? 0.0 : times[times.size() / 2];
        if (mJson) {
            PrintForPrograms(inEngine, inControl, inPrinter, worst, median);
            return;
        }
        PrintRow("Input", mInput);
        if (!mOutput.empty()) {
            PrintRow("Output", mOutput);
        }
        PrintRow("Chain", inControl.Describe());
        PrintRow("Played", FormatTime(static_cast<double>(inEngine.GetPosition()) / mFormat.mSampleRate) +
                               ", " + std::to_string(times.size()) + " blocks of " + mBlock + " frames");
        char text[96];
        std::snprintf(text, sizeof text, "%.3f ms a block; worst %.3f ms (%.0f %%), median %.3f ms (%.1f %%)",
                      mPeriod * 1e3, worst * 1e3, worst / mPeriod * 100.0, median * 1e3,
                      median / mPeriod * 100.0);
        PrintRow("Deadline", text);
        PrintRow("Priority",
                 inEngine.HasPriority() ? "real-time" : "normal; the system refused a real-time one");
        PrintRow("Changes", std::to_string(inControl.GetPostedCount()) + " posted, " +
                                std::to_string(inControl.GetDoneCount()) + " done, " +
                                std::to_string(mRefused) + " refused");
        std::string dropouts = std::to_string(inPrinter.GetTotal());
        for (const auto& count : inPrinter.GetCounts()) {
            dropouts += ", " + count.mReason + " " + std::to_string(count.mCount);
        }
        PrintRow("Dropouts", dropouts);
    }

    void PrintForPrograms(const PlayEngine& inEngine, const ChainControl& inControl,
                          const DropoutPrinter& inPrinter, double inWorst, double inMedian) const
    {
        auto dropouts = nlohmann::ordered_json::object();
        for (const auto& count : inPrinter.GetCounts()) {
            dropouts[count.mReason] = count.mCount;
        }
        PrintJson({{"input", mInput},
                   {"output", mOutput},
                   {"chain", inControl.Describe()},
                   {"frames", inEngine.GetPosition()},
                   {"blocks", inEngine.GetBlockTimes().size()},
                   {"blockSize", mFormat.mMaxBlock},
                   {"deadlineSeconds", mPeriod},
                   {"worstBlockSeconds", inWorst},
                   {"medianBlockSeconds", inMedian},
                   {"realtimePriority", inEngine.HasPriority()},
                   {"changesPosted", inControl.GetPostedCount()},
                   {"changesDone", inControl.GetDoneCount()},
                   {"changesRefused", mRefused},
                   {"dropouts", inPrinter.GetTotal()},
                   {"dropoutsByReason", dropouts}});
    }

    std::string mInput;
    std::string mOutput;
    ChainOptions mChainOptions;
    std::string mControl;
    std::string mBlock = "512";
    std::string mRateFactor = "1";
    std::string mOverload;
    bool mJson = false;

    StreamFormat mFormat;
    double mPeriod = 0.0; ///< of a block, in seconds
    int mRefused = 0;
};

const RegisterCommand<PlayCommand> kPlay("play", "Play a file through effects against the clock");

} // namespace

} // namespace host
