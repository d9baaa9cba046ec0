#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "AudioFileReader.h"
#include "AudioFileWriter.h"
#include "Command.h"
#include "FlushToZero.h"
#include "GainStages.h"
#include "HostError.h"
#include "OptionText.h"
#include "Progress.h"
#include "Report.h"
#include "chain/ChainMeters.h"
#include "chain/ChainOptions.h"
#include "chain/ChainReader.h"

namespace host {

namespace {

constexpr std::int64_t kLargestBlock = 1 << 20;
constexpr double kLongestTail = 3600.0;

struct RenderSummary
{
    std::int64_t mFrames = 0;
    std::int64_t mBlocks = 0;
    std::int64_t mSilentBlocks = 0;
    std::int64_t mClipped = 0;
    std::int64_t mLatency = 0;
    double mSeconds = 0.0;
    double mElapsedSeconds = 0.0;
    std::vector<ChainMeters::Reduction> mReductions; ///< when meters were asked for
};

/// `render IN OUT`: a file through a chain of effects, then gain, automation and fades, block by block as an
/// engine would do it.
class RenderCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_option("OUT", mOutput, "File to write: .wav or .flac")->required();
        mChainOptions.Define(ioApp);
        ioApp.add_option("--gain", mGain, "Gain in dB, -400 (silence) to 60")->type_name("DB");
        ioApp.add_option("--fade-in", mFadeIn, "Seconds, cos or log, shape from -100 to 100")
            ->type_name("S[:TYPE[:SHAPE]]");
        ioApp.add_option("--fade-out", mFadeOut, "The same, up to the last frame")
            ->type_name("S[:TYPE[:SHAPE]]");
        ioApp
            .add_option("--automation", mAutomation,
                        "Gain in dB over time in seconds, linear between the points")
            ->type_name("T:DB,T:DB,...");
        ioApp
            .add_option("--tail", mTail,
                        "Seconds to go on behind the input's end, 0 to 3600, so that effects ring out (0)")
            ->type_name("S");
        ioApp.add_option("--block", mBlock, "Frames a block, 1 to 1048576 (512)")->type_name("N");
        ioApp.add_option("--bits", mBits, "16, 24, or 32 for floats (as the input)")->type_name("16|24|32");
        ioApp
            .add_option(
                "--meters", mMeterPicture,
                "Picture of the gain reduction over time, and of the levels before and behind the chain")
            ->type_name("OUT.png");
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        ParseOptions();
        const auto chain = mChainOptions.Load();
        mChainText = FormatChain(chain);
        AudioFileReader reader(mInput);
        std::error_code error;
        if (std::filesystem::equivalent(mInput, mOutput, error)) {
            throw UsageError(mOutput, "is the input itself; name another file");
        }
        if (!mMeterPicture.empty()) {
            Plot::CheckName(mMeterPicture, mInput);
        }
        const RenderSummary summary = Render(reader, chain);
        if (mJson) {
            PrintForPrograms(reader, summary);
        } else {
            PrintForPeople(summary);
        }
        FinishOutput();
    }

private:
    void ParseOptions()
    {
        mGainFactor = ParseGain("--gain", mGain);
        mTailSeconds = ParseNumber("--tail", mTail, 0.0, kLongestTail, "seconds");
        mBlockSize = static_cast<unsigned>(ParseInteger("--block", mBlock, 1, kLargestBlock, "frames"));
        if (!mBits.empty() && mBits != "16" && mBits != "24" && mBits != "32") {
            throw UsageError("--bits", "'" + mBits + "' is not 16, 24 or 32");
        }
        if (!mFadeIn.empty()) {
            mFadeInOption = ParseFade("--fade-in", mFadeIn);
        }
        if (!mFadeOut.empty()) {
            mFadeOutOption = ParseFade("--fade-out", mFadeOut);
        }
        if (!mAutomation.empty()) {
            mPoints = ParseAutomation("--automation", mAutomation);
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

    RenderSummary Render(AudioFileReader& ioReader, const ChainDescription& inChain)
    {
        const int rate = ioReader.GetSampleRate();
        const auto tail = std::llround(mTailSeconds * rate);
        const auto frames = ioReader.GetFrameCount() + tail;
        std::optional<FadeStage> fadeIn;
        std::optional<FadeStage> fadeOut;
        std::optional<AutomationStage> automation;
        if (mFadeInOption) {
            fadeIn.emplace("--fade-in", *mFadeInOption, FadeStage::Direction::kIn, rate, frames, mBlockSize);
        }
        if (mFadeOutOption) {
            fadeOut.emplace("--fade-out", *mFadeOutOption, FadeStage::Direction::kOut, rate, frames,
                            mBlockSize);
        }
        if (!mPoints.empty()) {
            automation.emplace(mPoints, rate);
        }
        EffectChain chain(inChain, {ioReader.GetChannelCount(), rate, static_cast<int>(mBlockSize)});
        mWrittenBits = ChooseBits(ioReader);
        AudioFileWriter writer(mOutput, {rate, ioReader.GetChannelCount(), mWrittenBits, frames});

        const auto started = std::chrono::steady_clock::now();
        RenderSummary summary;
        const FlushToZero flushToZero;
        Progress progress("rendering", frames);
        ChainReader chainReader(ioReader, chain, mBlockSize, tail);
        ChainMeters meters(inChain, chain, rate);
        if (!mMeterPicture.empty()) {
            chainReader.SetMeters(&meters);
        }
        while (auto* block = chainReader.Read()) {
            summary.mSilentBlocks += block->IsZero();
            if (mGainFactor != 1.0f) {
                *block *= mGainFactor;
            }
            if (automation) {
                automation->Process(*block);
            }
            if (fadeIn) {
                fadeIn->Process(summary.mFrames, *block);
            }
            if (fadeOut) {
                fadeOut->Process(summary.mFrames, *block);
            }
            writer.Write(*block);
            ++summary.mBlocks;
            progress.Update(summary.mFrames += block->GetBufferSize());
        }
        writer.Commit();
        if (!mMeterPicture.empty()) {
            meters.Draw(std::filesystem::path(mInput).filename().string(), mMeterPicture);
            summary.mReductions = meters.GetDeepest();
        }
        summary.mSeconds = static_cast<double>(summary.mFrames) / rate;
        summary.mLatency = chain.GetLatency();
        summary.mClipped = writer.GetClippedCount();
        summary.mElapsedSeconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        return summary;
    }

    std::string DescribeWork() const
    {
        std::string text = "gain " + mGain + " dB";
        const auto append = [&text](const char* inName, const std::string& inValue) {
            if (!inValue.empty()) {
                text += std::string(", ") + inName + " " + inValue;
            }
        };
        append("automation", mAutomation);
        append("fade in", mFadeIn);
        append("fade out", mFadeOut);
        return text;
    }

    void PrintForPeople(const RenderSummary& inSummary) const
    {
        PrintRow("Input", mInput);
        PrintRow("Output", mOutput + " (" + std::to_string(mWrittenBits) + " bit)");
        if (!mChainText.empty()) {
            PrintRow("Chain", mChainText);
            PrintRow("Latency", std::to_string(inSummary.mLatency) + " samples, made up for");
        }
        for (const auto& reduction : inSummary.mReductions) {
            char text[32];
            std::snprintf(text, sizeof text, "%.2f dB", reduction.mDecibels);
            PrintRow("Reduction", reduction.mName + ": " + text);
        }
        PrintRow("Work", DescribeWork());
        PrintRow("Length",
                 FormatTime(inSummary.mSeconds) + " (" + std::to_string(inSummary.mFrames) + " frames)");
        PrintRow("Blocks", std::to_string(inSummary.mBlocks) + " of " + std::to_string(mBlockSize) +
                               " frames, " + std::to_string(inSummary.mSilentBlocks) + " silent");
        if (inSummary.mClipped > 0) {
            PrintRow("Clipped", std::to_string(inSummary.mClipped) + " samples beyond full scale");
        }
        char text[64];
        std::snprintf(text, sizeof text, "%.3f s, %.0f times real time", inSummary.mElapsedSeconds,
                      inSummary.mSeconds / inSummary.mElapsedSeconds);
        PrintRow("Time", text);
    }

    void PrintForPrograms(const AudioFileReader& inReader, const RenderSummary& inSummary) const
    {
        auto reductions = nlohmann::ordered_json::array();
        for (const auto& reduction : inSummary.mReductions) {
            reductions.push_back({{"effect", reduction.mName}, {"decibels", reduction.mDecibels}});
        }
        PrintJson({{"input", mInput},
                   {"output", mOutput},
                   {"sampleRate", inReader.GetSampleRate()},
                   {"channelCount", inReader.GetChannelCount()},
                   {"frames", inSummary.mFrames},
                   {"seconds", inSummary.mSeconds},
                   {"chain", mChainText},
                   {"latencySamples", inSummary.mLatency},
                   {"deepestReductions", std::move(reductions)},
                   {"bits", mWrittenBits},
                   {"blockSize", mBlockSize},
                   {"blocks", inSummary.mBlocks},
                   {"silentBlocks", inSummary.mSilentBlocks},
                   {"clippedSamples", inSummary.mClipped},
                   {"elapsedSeconds", inSummary.mElapsedSeconds}});
    }

    std::string mInput;
    std::string mOutput;
    ChainOptions mChainOptions;
    std::string mGain = "0";
    std::string mFadeIn;
    std::string mFadeOut;
    std::string mAutomation;
    std::string mTail = "0";
    std::string mBlock = "512";
    std::string mBits;
    std::string mMeterPicture;
    bool mJson = false;

    std::string mChainText;
    float mGainFactor = 1.0f;
    double mTailSeconds = 0.0;
    unsigned mBlockSize = 0;
    std::optional<FadeOption> mFadeInOption;
    std::optional<FadeOption> mFadeOutOption;
    std::vector<AutomationPoint> mPoints;
    int mWrittenBits = 0;
};

const RegisterCommand<RenderCommand> kRender("render",
                                             "Render a file through effects, gain, automation and fades");

} // namespace

} // namespace host
