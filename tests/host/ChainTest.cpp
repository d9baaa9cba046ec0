#include <fstream>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class ChainTest : public HostTest
{
protected:
    TestAudio Render(std::vector<std::string> inOptions, const std::string& inOutput = "out.wav")
    {
        inOptions.insert(inOptions.begin(), {"render", Name("in.wav"), Name(inOutput)});
        const auto result = RunHost(inOptions);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return ReadAudio(Path(inOutput));
    }

    TestAudio Write(std::vector<std::vector<float>> inChannels)
    {
        TestAudio audio;
        audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        audio.mChannels = std::move(inChannels);
        WriteAudio(Path("in.wav"), audio);
        return audio;
    }

    void ExpectRefusal(const std::string& inChain, const std::string& inText)
    {
        const auto result = RunHost({"render", Name("in.wav"), Name("out.wav"), "--chain", inChain});
        EXPECT_EQ(result.mStatus, 2) << inChain;
        EXPECT_EQ(result.mError, "tessaro-host: --chain: " + inText + "\n");
        EXPECT_FALSE(std::filesystem::exists(Path("out.wav")));
    }

    void ExpectBadPreset(const std::string& inPreset, const std::string& inText)
    {
        std::ofstream(Path("bad.json")) << inPreset;
        ExpectFailure({"render", Name("in.wav"), Name("out.wav"), "--preset", Name("bad.json")}, 1,
                      {"tessaro-host: " + Name("bad.json") + ": " + inText + "\n"});
    }
};

std::vector<float> Impulse(std::size_t inFrames, std::size_t inPlace)
{
    std::vector<float> samples(inFrames, 0.0f);
    samples[inPlace] = 1.0f;
    return samples;
}

TEST_F(ChainTest, EffectsWorkInTheirOrderAtAnyBlockSize)
{
    Write({Impulse(1000, 100), std::vector<float>(1000, 0.0f)});
    for (const char* block : {"1", "7", "512", "4096"}) {
        const auto rendered =
            Render({"--block", block, "--chain", " gain : gain = -6.0206 ; delay:time=10,mix=75; gain"});
        ASSERT_EQ(rendered.GetFrameCount(), 1000u);
        EXPECT_NEAR(rendered.mChannels[0][100], 0.125, 1e-6);
        EXPECT_NEAR(rendered.mChannels[0][100 + 480], 0.375, 1e-6);
        const auto& row = rendered.mChannels[0];
        EXPECT_EQ(std::count(row.begin(), row.end(), 0.0f), 998);
        EXPECT_EQ(rendered.mChannels[1], std::vector<float>(1000, 0.0f));
    }
    EXPECT_EQ(Render({"--chain", "delay:time=20", "--tail", "0.0125"}).mChannels[0], Impulse(1600, 1060));
    EXPECT_EQ(Render({"--chain", ""}).mChannels[0], Impulse(1000, 100));
    EXPECT_EQ(Render({"--chain", "gain:gain=-130"}).mChannels[0], std::vector<float>(1000, 0.0f));
}

TEST_F(ChainTest, ARenderMakesUpForLatencyAndKeepsTheLength)
{
    auto input = Write({Impulse(1000, 0), Impulse(1000, 999)});
    for (const char* time : {"1", "10", "100"}) { // 48 samples, 480, and more than the file has
        for (const char* block : {"1", "48", "100", "4096"}) {
            const auto chain = std::string("delay:time=") + time + ",compensated=on";
            EXPECT_EQ(Render({"--chain", chain, "--block", block}).mChannels, input.mChannels)
                << time << " ms, block " << block;
        }
    }
    const auto result = RunHost({"render", Name("in.wav"), Name("out.wav"), "--json", "--chain",
                                 "delay:time=1,compensated=on;delay:time=2;delay:time=3,compensated=true"});
    ASSERT_EQ(result.mStatus, 0) << result.mError;
    EXPECT_EQ(nlohmann::json::parse(result.mOutput)["latencySamples"], 4 * 48);
    EXPECT_EQ(ReadAudio(Path("out.wav")).mChannels[0], Impulse(1000, 96));
}

TEST_F(ChainTest, SilentBlocksAreFlaggedUntilAnEffectSounds)
{
    std::vector<std::vector<float>> channels(66, std::vector<float>(1000, 0.0f));
    channels[65] = Impulse(1000, 150); // shares the flag of channel 1
    Write(channels);
    const auto result = RunHost({"render", Name("in.wav"), Name("out.wav"), "--block", "100", "--json",
                                 "--chain", "gain:gain=0;delay:time=10"}); // 480 samples
    ASSERT_EQ(result.mStatus, 0) << result.mError;
    EXPECT_EQ(ReadAudio(Path("out.wav")).mChannels[65], Impulse(1000, 630));
    EXPECT_EQ(ReadAudio(Path("out.wav")).mChannels[1], channels[1]);

    Write({Impulse(1000, 150)});
    const auto mono = RunHost({"render", Name("in.wav"), Name("out.wav"), "--block", "100", "--json",
                               "--chain", "gain:gain=0;delay:time=10"});
    ASSERT_EQ(mono.mStatus, 0) << mono.mError;
    EXPECT_EQ(nlohmann::json::parse(mono.mOutput)["silentBlocks"], 9); // all but the one that holds it
}

TEST_F(ChainTest, RefusalsTellWhatWasMeant)
{
    Write({Impulse(100, 0)});
    ExpectRefusal("gian:gain=3",
                  "there is no effect 'gian'; did you mean 'gain'? 'tessaro-host effects' lists them");
    ExpectRefusal("delay:tim=3", "delay has no parameter 'tim'; did you mean 'time'? 'tessaro-host effects "
                                 "delay' explains them");
    ExpectRefusal("delay:hertz=3", "delay has no parameter 'hertz'; there are time, mix, compensated; "
                                   "'tessaro-host effects delay' explains them");
    ExpectRefusal("gain:gain=60.1", "gain: gain: '60.1' is not a number from -400 to 60 dB");
    ExpectRefusal("gain:gain=nan", "gain: gain: 'nan' is not a number from -400 to 60 dB");
    ExpectRefusal("gain:gain=1/2", "gain: gain has 2 values; write gain=VALUE");
    ExpectRefusal("gain:gain=", "gain: gain has no value");
    ExpectRefusal("gain:gain=1,gain=2", "gain: gain is given more than once");
    ExpectRefusal("gain:-3", "gain: '-3' is not PARAMETER=VALUE; write, for example, gain:gain=-3");
    ExpectRefusal("delay:compensated=perhaps", "delay: compensated: 'perhaps' is not on or off");
    ExpectRefusal("butterworth:type=bandpass,frequency=500,upper=400",
                  "butterworth: upper must lie above frequency, and both below half the rate");
    ExpectRefusal("butterworth:frequency=24001",
                  "butterworth: frequency: 24001 Hz lies above half the sampling rate, 24000 Hz");
    ExpectRefusal("butterworth:order=2.5", "butterworth: order: '2.5' is not a whole number from 1 to 16");
    ExpectRefusal("biquad:type=peek", "biquad: type: 'peek' is not one of lowpass, highpass, bandpass, peak, "
                                      "lowshelf, highshelf, lowpass-6db, highpass-6db");
    ExpectRefusal("gain;;gain", "an effect is empty; write NAME:PARAMETER=VALUE,PARAMETER=VALUE;NAME:...");
    ExpectRefusal("gain:gain='3", "a quote is not closed");
    ExpectRefusal("gain:gain='3'4",
                  "the quotes of '3'4 do not enclose it; one that belongs to a text is doubled");
    ExpectRefusal("gain:gain='3;4'", "gain: gain: '3;4' is not a number from -400 to 60 dB");
    ExpectFailure({"effects", "gian"}, 2, {"NAME: there is no effect 'gian'; did you mean 'gain'?"});
}

TEST_F(ChainTest, APresetGivesTheSameSound)
{
    Write({Impulse(1000, 3)});
    const auto preset = Name("preset.json");
    const auto direct =
        Render({"--chain",
                "gain:gain=-3.3;delay:time=1,compensated=on;delay;eq6:band3=500//-2,band6=9000/0.7/0/lowpass",
                "--save-preset", preset});
    EXPECT_EQ(Render({"--preset", preset}, "again.wav").mChannels, direct.mChannels);
    const auto json = nlohmann::json::parse(std::ifstream(preset));
    EXPECT_EQ(json["effects"][0]["parameters"]["gain"], -3.3);
    EXPECT_EQ(json["effects"][1]["parameters"]["compensated"], true);
    const auto again = RunHost({"render", Name("in.wav"), Name("out.wav"), "--json", "--preset", preset});
    EXPECT_EQ(nlohmann::json::parse(again.mOutput)["chain"],
              "gain:gain=-3.3;delay:time=1,compensated=on;delay;eq6:band3=500/0.3/-2,band6=9000");
    EXPECT_EQ(json["effects"][2]["parameters"].size(), 0u); // what was not given keeps its default
}

TEST_F(ChainTest, ABadPresetIsNamedWithWhatIsWrong)
{
    Write({Impulse(100, 0)});
    const std::string head = R"({"tessaro chain": 1, "effects": )";
    ExpectBadPreset("{", "is not a preset: no valid JSON at byte 2");
    ExpectBadPreset("1e999", "is not a preset: it holds a number beyond all ranges");
    ExpectBadPreset("[]", "the preset has no \"tessaro chain\"");
    ExpectBadPreset(R"({"tessaro chain": 2})", "is a preset of another version than 1");
    ExpectBadPreset(head + "3}", "\"effects\" is not a list");
    ExpectBadPreset(head + R"([{"name": "gain"}]})", "effect 1 has no \"effect\"");
    ExpectBadPreset(head + R"([{"effect": "gain"}, {"effect": "gan"}]})",
                    "there is no effect 'gan'; did you mean 'gain'? 'tessaro-host effects' lists them");
    ExpectBadPreset(head + R"([{"effect": "gain", "parameter": {}}]})",
                    "effect 1 has no member 'parameter'; did you mean 'parameters'? 'tessaro-host effects' "
                    "explains what there is");
    ExpectBadPreset(head + R"([{"effect": "gain", "parameters": {"gain": 1e9}}]})",
                    "gain: gain: '1000000000' is not a number from -400 to 60 dB");
    ExpectBadPreset(head + R"([{"effect": "gain", "parameters": {"gain": [3]}}]})",
                    "gain: gain is neither a number nor a text nor true or false");
    ExpectFailure({"render", Name("in.wav"), Name("out.wav"), "--preset", Name("none.json")}, 1,
                  {"none.json: cannot be read (No such file or directory)"});
    ExpectFailure({"render", Name("in.wav"), Name("out.wav"), "--preset", Name("")}, 1, {"is a directory"});
}

TEST_F(ChainTest, EffectsExplainThemselves)
{
    const auto list = nlohmann::json::parse(RunHost({"effects", "--json"}).mOutput)["effects"];
    ASSERT_GE(list.size(), 2u);
    Write({Impulse(100, 0)});
    for (const auto& effect : list) {
        const auto name = effect["name"].get<std::string>();
        const auto text = RunHost({"effects", name}).mOutput;
        for (const auto& parameter : effect["parameters"]) {
            EXPECT_NE(text.find(parameter["name"].get<std::string>() + "="), std::string::npos) << text;
        }
        Render({"--chain", effect["example"].get<std::string>()}, name + ".wav");
    }
}

} // namespace
} // namespace tessaro::testing
