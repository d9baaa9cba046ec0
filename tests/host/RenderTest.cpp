#include <algorithm>
#include <cmath>
#include <fstream>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class RenderTest : public HostTest
{
protected:
    TestAudio Render(std::vector<std::string> inOptions, const std::string& inOutput = "out.wav")
    {
        inOptions.insert(inOptions.begin(), {"render", Name("in.wav"), Name(inOutput)});
        const auto result = RunHost(inOptions);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        EXPECT_EQ(result.mError, "");
        return ReadAudio(Path(inOutput));
    }
};

/// A constant signal makes the output the gain curve itself.
void WriteConstant(const std::filesystem::path& inPath, std::size_t inFrames)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels = {std::vector<float>(inFrames, 1.0f), std::vector<float>(inFrames, -0.5f)};
    WriteAudio(inPath, audio);
}

TEST_F(RenderTest, WithoutWorkTheOutputIsTheInputToTheBit)
{
    const auto input = WriteSines("in.wav", 6, 10007);
    for (const char* output : {"out.wav", "out.flac"}) {
        for (const char* bits : {"16", "24"}) {
            const auto rendered = Render({"--bits", bits, "--block", "333"}, output);
            EXPECT_EQ(rendered.mSampleRate, input.mSampleRate);
            EXPECT_EQ(rendered.mChannels, input.mChannels) << output << " " << bits;
        }
    }
    EXPECT_EQ(Render({"--bits", "32"}).mChannels, input.mChannels);
}

TEST_F(RenderTest, KeepsTheInputsWordLengthUnlessToldOtherwise)
{
    WriteSines("in.wav", 1, 100);
    EXPECT_EQ(Render({}).mFormat & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_16);
    EXPECT_EQ(Render({"--bits", "24"}).mFormat & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_24);
    WriteConstant(Path("in.wav"), 100);
    EXPECT_EQ(Render({}).mFormat & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
    EXPECT_EQ(Render({}, "out.flac").mFormat & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_24);
}

TEST_F(RenderTest, AnyBlockSizeGivesTheSameFile)
{
    WriteConstant(Path("in.wav"), 48000);
    const std::vector<std::string> work{
        "--gain",     "-1.5",        "--fade-in",    "0.25:log:40",
        "--fade-out", "0.5:cos:-30", "--automation", "0:0,0.3:-12,0.6:-12,0.6:-3,0.9:0",
        "--block"};
    std::vector<TestAudio> rendered;
    for (const char* block : {"1", "7", "512", "100000"}) {
        auto options = work;
        options.emplace_back(block);
        rendered.push_back(Render(options));
    }
    for (const auto& other : rendered) {
        ASSERT_EQ(other.mChannels.size(), 2u);
        ASSERT_EQ(other.GetFrameCount(), 48000u);
        for (std::size_t i = 0; i < 48000; ++i) {
            // A ramp adds up its step sample by sample, anew in each block: up to 14400 roundings of 6e-8.
            ASSERT_NEAR(other.mChannels[0][i], rendered[0].mChannels[0][i], 1e-3) << i;
            ASSERT_NEAR(other.mChannels[1][i], -0.5 * rendered[0].mChannels[0][i], 1e-3) << i;
        }
    }
}

TEST_F(RenderTest, AutomationHoldsBeforeTheFirstPointIsLinearBetweenAndJumpsWhereTwoPointsMeet)
{
    WriteConstant(Path("in.wav"), 48000);
    const auto curve = Render({"--automation", "0.25:-6.0206,0.5:0,0.75:0,0.75:-400"}).mChannels[0];
    EXPECT_NEAR(curve[0], 0.5, 1e-6);
    EXPECT_NEAR(curve[12000], 0.5, 1e-6);
    EXPECT_NEAR(curve[18000], 0.75, 1e-4);
    EXPECT_NEAR(curve[24000], 1.0, 1e-4);
    EXPECT_NEAR(curve[35999], 1.0, 1e-4);
    EXPECT_EQ(curve[36000], 0.0f);
    EXPECT_EQ(curve[47999], 0.0f);
}

TEST_F(RenderTest, FadesRunFromSilenceAndToSilenceAlongTheirShape)
{
    WriteConstant(Path("in.wav"), 48000);
    const auto curve = Render({"--fade-in", "0.25", "--fade-out", "0.5:log"}).mChannels[0];
    EXPECT_EQ(curve[0], 0.0f);
    EXPECT_NEAR(curve[6000], 0.5, 1e-6); // a cosine's middle
    EXPECT_NEAR(curve[3000], 0.5 - std::sqrt(0.125), 1e-6);
    EXPECT_EQ(curve[12000], 1.0f);
    EXPECT_EQ(curve[23999], 1.0f);
    EXPECT_NEAR(curve[36000], 0.5, 1e-4); // logarithmic of shape 0 is a line
    EXPECT_EQ(curve[47999], 0.0f);
}

TEST_F(RenderTest, CountsSilentBlocksAndLeavesThemSilent)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    audio.mChannels = {std::vector<float>(4096, 0.0f), std::vector<float>(4096, 0.0f)};
    audio.mChannels[1][1500] = 0.5f;
    WriteAudio(Path("in.wav"), audio);
    const auto result =
        RunHost({"render", Name("in.wav"), Name("out.wav"), "--block", "1024", "--gain", "6", "--json"});
    ASSERT_EQ(result.mStatus, 0) << result.mError;
    const auto json = nlohmann::json::parse(result.mOutput);
    EXPECT_EQ(json["blocks"], 4);
    EXPECT_EQ(json["silentBlocks"], 3);
    const auto rendered = ReadAudio(Path("out.wav"));
    EXPECT_EQ(std::count(rendered.mChannels[0].begin(), rendered.mChannels[0].end(), 0.0f), 4096);
    EXPECT_NEAR(rendered.mChannels[1][1500], 0.5 * std::pow(10.0, 0.3), 1.0 / 32768.0);
}

TEST_F(RenderTest, IntegersAreClippedAtFullScaleAndCounted)
{
    WriteConstant(Path("in.wav"), 1000);
    const auto result =
        RunHost({"render", Name("in.wav"), Name("out.wav"), "--gain", "12", "--bits", "16", "--json"});
    EXPECT_EQ(nlohmann::json::parse(result.mOutput)["clippedSamples"], 2000);
    const auto rendered = ReadAudio(Path("out.wav"));
    EXPECT_EQ(rendered.mChannels[0][10], 32767.0f / 32768.0f);
    EXPECT_EQ(rendered.mChannels[1][10], -1.0f);
}

TEST_F(RenderTest, AFileWithoutFramesGivesAFileWithoutFrames)
{
    WriteConstant(Path("in.wav"), 0);
    EXPECT_EQ(Render({"--gain", "-3"}).GetFrameCount(), 0u);
}

TEST_F(RenderTest, RefusesSenselessOptionsAndNamesThem)
{
    WriteConstant(Path("in.wav"), 4800);
    const auto in = Name("in.wav");
    const auto out = Name("out.wav");
    struct Case
    {
        const char* mOption;
        std::vector<const char*> mValues;
    };
    for (const auto& [option, values] :
         {Case{"--gain", {"nan", "inf", "-inf", "1e9", "loud", "3dB", "0x10", ""}},
          Case{"--fade-in",
               {"-1", "nan", "1e300", "0.05:sqrt", "0.05:log:101", "0.05:log:1.5", "0.05:cos:0:0", ":log"}},
          Case{"--fade-out", {"99"}}, // longer than the file
          Case{"--automation", {"", "0", "0:0,", "1:0,0.5:0", "0:nan", "x:0", "0:0:0", "-1:0"}},
          Case{"--block", {"0", "-1", "1048577", "1.5", "99999999999999999999"}},
          Case{"--bits", {"8", "17", "016", "x"}}}) {
        for (const auto* value : values) {
            ExpectFailure({"render", in, out, std::string(option) + "=" + value}, 2, {option});
        }
    }
    ExpectFailure({"render", in, Name("out.mp3")}, 2, {"out.mp3", ".wav"});
    ExpectFailure({"render", in, Name("out.flac"), "--bits", "32"}, 2, {"--bits"});
    ExpectFailure({"render", in}, 2, {"OUT"});
}

TEST_F(RenderTest, NeverHarmsTheInput)
{
    const auto input = WriteSines("in.wav", 2, 1000);
    std::filesystem::create_symlink(Path("in.wav"), Path("link.wav"));
    std::filesystem::create_hard_link(Path("in.wav"), Path("twin.wav"));
    for (const char* output : {"in.wav", "link.wav", "twin.wav"}) {
        ExpectFailure({"render", Name("in.wav"), Name(output), "--gain", "-6"}, 2, {output, "input itself"});
    }
    EXPECT_EQ(ReadAudio(Path("in.wav")).mChannels, input.mChannels);
}

TEST_F(RenderTest, AFailedRunLeavesNothingBehindAndTheOldOutputAsItWas)
{
    WriteSines("in.wav", 2, 100000);
    std::ofstream(Path("out.wav")) << "precious";
    ExpectFailure({"render", Name("in.wav"), Name("out.wav")}, 1, {"out.wav", "cannot be written"}, 50000);
    std::filesystem::resize_file(Path("in.wav"), 200000);
    ExpectFailure({"render", Name("in.wav"), Name("out.wav")}, 1, {"in.wav", "truncated"});
    std::string text;
    std::getline(std::ifstream(Path("out.wav")), text);
    EXPECT_EQ(text, "precious");

    WriteSines("in.wav", 2, 1000);
    std::filesystem::create_directory(Path("folder.wav"));
    ExpectFailure({"render", Name("in.wav"), Name("folder.wav")}, 1, {"folder.wav", "is a directory"});
    ExpectFailure({"render", Name("in.wav"), Name("none/out.wav")}, 1,
                  {"none/out.wav", "directory does not exist"});
    ExpectFailure({"render", Name("in.wav"), "/proc/out.wav"}, 1, {"/proc/out.wav", "cannot be written"});
    ExpectFailure({"render", Name("missing.wav"), Name("out2.wav")}, 1, {"missing.wav"});
}

TEST_F(RenderTest, ReplacesAnExistingOutputAndFollowsALinkToIt)
{
    const auto input = WriteSines("in.wav", 1, 500);
    std::ofstream(Path("target.wav")) << "old";
    std::filesystem::create_symlink(Path("target.wav"), Path("link.wav"));
    EXPECT_EQ(Render({}, "link.wav").mChannels, input.mChannels);
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link.wav")));
    EXPECT_EQ(ReadAudio(Path("target.wav")).mChannels, input.mChannels);
}

TEST_F(RenderTest, MetersTellWhatDynamicsDid)
{
    TestAudio tone;
    tone.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    tone.mChannels.assign(1, std::vector<float>(48000));
    for (std::size_t i = 0; i < 48000; ++i) {
        tone.mChannels[0][i] = static_cast<float>(0.9 * std::sin(0.05 * static_cast<double>(i)));
    }
    WriteAudio(Path("in.wav"), tone);
    const auto result =
        RunHost({"render", Name("in.wav"), Name("out.wav"), "--json", "--meters", Name("meters.png"),
                 "--chain", "gain:gain=-3;hardlimit:ceiling=-12;compressor:threshold=-20,ratio=2"});
    ASSERT_EQ(result.mStatus, 0) << result.mError;
    const auto reductions = nlohmann::json::parse(result.mOutput)["deepestReductions"];
    ASSERT_EQ(reductions.size(), 2u);
    EXPECT_EQ(reductions[0]["effect"], "2 hardlimit");
    EXPECT_NEAR(reductions[0]["decibels"], -12.0 + 3.0 - 20.0 * std::log10(0.9), 0.05);
    EXPECT_EQ(reductions[1]["effect"], "3 compressor");
    EXPECT_NEAR(reductions[1]["decibels"], -4.0, 0.5); // half of the 8 dB above the threshold
    EXPECT_GT(std::filesystem::file_size(Path("meters.png")), 5000u);
    ExpectFailure({"render", Name("in.wav"), Name("out2.wav"), "--meters", "x.jpg"}, 2, {"x.jpg"});
}

} // namespace
} // namespace tessaro::testing
