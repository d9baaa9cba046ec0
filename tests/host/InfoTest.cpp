#include <cmath>
#include <fstream>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class InfoTest : public HostTest
{
};

TEST_F(InfoTest, TellsFormatAndLevelsOfEachChannel)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mSampleRate = 44100;
    std::vector<float> square(20000);
    for (std::size_t i = 0; i < square.size(); ++i) {
        square[i] = i % 2 == 0 ? 0.5f : -0.5f;
    }
    audio.mChannels = {square, std::vector<float>(20000, 0.0f)};
    audio.mChannels[1][12345] = -0.25f;
    WriteAudio(Path("levels.wav"), audio);

    const auto result = RunHost({"info", Name("levels.wav"), "--json"});
    ASSERT_EQ(result.mStatus, 0) << result.mError;
    const auto json = nlohmann::json::parse(result.mOutput);
    EXPECT_EQ(json["sampleRate"], 44100);
    EXPECT_EQ(json["channelCount"], 2);
    EXPECT_EQ(json["frames"], 20000);
    EXPECT_NEAR(json["channels"][0]["peakDb"].get<double>(), -6.0206, 1e-3);
    EXPECT_NEAR(json["channels"][0]["rmsDb"].get<double>(), -6.0206, 1e-3);
    EXPECT_NEAR(json["channels"][1]["peakDb"].get<double>(), -12.0412, 1e-3);
    EXPECT_NEAR(json["channels"][1]["rms"].get<double>(), 0.25 / std::sqrt(20000.0), 1e-9);
}

TEST_F(InfoTest, SilenceIsMinusInfinityForPeopleAndNullForPrograms)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
    audio.mChannels = {std::vector<float>(1000, 0.0f)};
    WriteAudio(Path("silence.aiff"), audio);
    EXPECT_NE(RunHost({"info", Name("silence.aiff")}).mOutput.find("-inf"), std::string::npos);
    const auto json = nlohmann::json::parse(RunHost({"info", Name("silence.aiff"), "--json"}).mOutput);
    EXPECT_TRUE(json["channels"][0]["peakDb"].is_null());
    EXPECT_TRUE(json["channels"][0]["rmsDb"].is_null());
}

TEST_F(InfoTest, LeavesOutSamplesThatAreNoNumbersAndSaysSo)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels = {std::vector<float>(100, 0.0f)};
    audio.mChannels[0][3] = NAN;
    audio.mChannels[0][4] = INFINITY;
    audio.mChannels[0][5] = 0.5f;
    WriteAudio(Path("nan.wav"), audio);
    const auto json = nlohmann::json::parse(RunHost({"info", Name("nan.wav"), "--json"}).mOutput);
    EXPECT_EQ(json["channels"][0]["invalidSamples"], 2);
    EXPECT_EQ(json["channels"][0]["peak"], 0.5);
}

TEST_F(InfoTest, RefusesWhatIsNoCompleteAudioFile)
{
    std::ofstream(Path("empty.wav"));
    std::ofstream(Path("text.wav")) << "This is not audio, whatever its name says; nor is it short.";
    std::filesystem::create_directory(Path("folder.wav"));
    ExpectFailure({"info", Name("missing.wav")}, 1, {"missing.wav", "No such file"});
    ExpectFailure({"info", Name("empty.wav")}, 1, {"empty.wav", "empty"});
    ExpectFailure({"info", Name("text.wav")}, 1, {"text.wav", "not audio"});
    ExpectFailure({"info", Name("folder.wav")}, 1, {"folder.wav", "is a directory"});
    ExpectFailure({"info", "/dev/null"}, 1, {"/dev/null", "not a regular file"});
}

TEST_F(InfoTest, RefusesATruncatedFileOfEachContainer)
{
    struct Case
    {
        const char* mName;
        int mFormat;
    };
    for (const auto& [name, format] : {Case{"cut.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                                       Case{"cut.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24},
                                       Case{"cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                                       Case{"cut.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}}) {
        auto audio = WriteSines("whole.wav", 2, 48000);
        audio.mFormat = format;
        WriteAudio(Path(name), audio);
        ASSERT_EQ(RunHost({"info", Name(name)}).mStatus, 0) << name;
        std::filesystem::resize_file(Path(name), std::filesystem::file_size(Path(name)) * 2 / 3);
        ExpectFailure({"info", Name(name)}, 1, {name, "get a complete copy"});
    }
}

TEST_F(InfoTest, RefusesABadCommandLine)
{
    ExpectFailure({}, 2, {"COMMAND", "--help"});
    ExpectFailure({"inform"}, 2, {"inform"});
    ExpectFailure({"info"}, 2, {"FILE"});
    ExpectFailure({"info", "a.wav", "--jsn"}, 2, {"--jsn"});
}

} // namespace
} // namespace tessaro::testing
