#include <cmath>
#include <numbers>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"
#include "support/Measures.h"

namespace tessaro::testing {
namespace {

class HostResampleTest : public HostTest
{
protected:
    TestAudio Resample(std::vector<std::string> inOptions, const std::string& inOutput = "out.wav")
    {
        inOptions.insert(inOptions.begin(), {"resample", Name("in.wav"), Name(inOutput)});
        const auto result = RunHost(inOptions);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        EXPECT_EQ(result.mError, "");
        return ReadAudio(Path(inOutput));
    }

    /// Channel c holds a sine of 300 * (c + 1) Hz.
    static TestAudio MakeSines(int inRate, std::size_t inFrames)
    {
        TestAudio audio;
        audio.mSampleRate = inRate;
        audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        audio.mChannels.assign(2, std::vector<float>(inFrames));
        for (std::size_t channel = 0; channel < 2; ++channel) {
            for (std::size_t i = 0; i < inFrames; ++i) {
                const double cycles = 300.0 * static_cast<double>((channel + 1) * i) / inRate;
                audio.mChannels[channel][i] =
                    static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * cycles));
            }
        }
        return audio;
    }
};

TEST_F(HostResampleTest, OutputLinesUpWithTheInputAndHasItsLength)
{
    struct Engine
    {
        std::vector<std::string> mOptions;
        double mDepth;
    };
    const Engine engines[] = {{{}, -120},
                              {{"--order", "64", "--noise-floor", "100"}, -90},
                              {{"--engine", "kernel"}, -90},
                              {{"--engine", "kernel", "--quality", "1"}, -90},
                              {{"--engine", "linear"}, -40}};
    for (const auto& [source, destination] :
         {std::pair{44100, 48000}, {48000, 44100}, {44100, 96000}, {44100, 44143}, {96000, 44100}}) {
        WriteAudio(Path("in.wav"), MakeSines(source, 30011));
        const auto frames = static_cast<std::size_t>(std::llround(30011.0 * destination / source));
        const auto expected = MakeSines(destination, frames);
        for (auto [options, depth] : engines) {
            options.insert(options.end(), {"--rate", std::to_string(destination)});
            const auto output = Resample(options);
            EXPECT_EQ(output.mSampleRate, destination);
            ASSERT_EQ(output.GetFrameCount(), frames);
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const auto middle = [frames](const std::vector<float>& inRow) {
                    return std::span(inRow).subspan(2000, frames - 4000);
                };
                EXPECT_LT(NullDepthInDecibels(middle(expected.mChannels[channel]),
                                              middle(output.mChannels[channel])),
                          options[1] == "linear" && source > destination ? -20 : depth)
                    << options[1] << " " << source << " to " << destination;
            }
        }
    }
}

TEST_F(HostResampleTest, EqualRatesCopyAndShortFilesKeepTheirLength)
{
    const auto input = WriteSines("in.wav", 3, 20000);
    for (const char* engine : {"table", "kernel", "linear"}) {
        EXPECT_EQ(Resample({"--rate", "48000", "--engine", engine}, "out.flac").mChannels, input.mChannels);
    }
    for (const std::size_t frames : {0u, 1u, 7u}) {
        WriteSines("in.wav", 1, frames);
        for (const char* engine : {"table", "kernel", "linear"}) {
            EXPECT_EQ(Resample({"--rate", "96000", "--engine", engine}).GetFrameCount(), 2 * frames);
        }
    }
}

TEST_F(HostResampleTest, TellsWhatItDid)
{
    WriteSines("in.wav", 2, 48000);
    const auto result =
        RunHost({"resample", Name("in.wav"), Name("out.wav"), "--rate", "44100", "--bits", "24", "--json"});
    const auto json = nlohmann::json::parse(result.mOutput);
    EXPECT_EQ(json["inputRate"], 48000);
    EXPECT_EQ(json["sampleRate"], 44100);
    EXPECT_EQ(json["inputFrames"], 48000);
    EXPECT_EQ(json["frames"], 44100);
    EXPECT_EQ(json["engine"], "table");
    EXPECT_EQ(ReadAudio(Path("out.wav")).mFormat & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_24);
}

TEST_F(HostResampleTest, RefusesSenselessOptionsAndNamesThem)
{
    WriteSines("in.wav", 1, 100);
    const auto fail = [this](const std::string& inOption, const std::string& inValue,
                             std::vector<std::string> inMore = {"--rate", "44100"}) {
        inMore.insert(inMore.begin(),
                      {"resample", Name("in.wav"), Name("out.wav"), inOption + "=" + inValue});
        ExpectFailure(inMore, 2, {inOption});
    };
    for (const char* rate : {"0", "999", "768001", "44100.5", "cd", ""}) {
        fail("--rate", rate, {});
    }
    fail("--engine", "cubic");
    fail("--order", "2");
    fail("--order", "31", {"--rate", "44100", "--engine", "linear"});
    fail("--noise-floor", "181");
    fail("--noise-floor", "90", {"--rate", "44100", "--engine", "kernel"});
    fail("--quality", "0.5");
    fail("--quality", "1.1", {"--rate", "44100", "--engine", "kernel"});
    fail("--bits", "8");
    ExpectFailure({"resample", Name("in.wav"), Name("out.wav")}, 2, {"--rate"});
    ExpectFailure({"resample", Name("in.wav"), Name("in.wav"), "--rate", "44100"}, 2, {"input itself"});
    ExpectFailure({"resample", Name("none.wav"), Name("out.wav"), "--rate", "44100"}, 1, {"none.wav"});
}

} // namespace
} // namespace tessaro::testing
