#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class WaveformTest : public HostTest
{
protected:
    /// A float file; channel c holds a rising line from c to c + 1 over its length.
    void WriteLines(const std::string& inName, std::size_t inChannels, std::size_t inFrames)
    {
        TestAudio audio;
        audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        audio.mChannels.resize(inChannels, std::vector<float>(inFrames));
        for (std::size_t channel = 0; channel < inChannels; ++channel) {
            for (std::size_t i = 0; i < inFrames; ++i) {
                audio.mChannels[channel][i] =
                    static_cast<float>(channel) + static_cast<float>(i) / static_cast<float>(inFrames);
            }
        }
        WriteAudio(Path(inName), audio);
    }

    nlohmann::json Read(std::vector<std::string> inArguments)
    {
        inArguments.insert(inArguments.begin(), "waveform");
        inArguments.push_back("--json");
        const auto result = RunHost(inArguments);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return nlohmann::json::parse(result.mOutput);
    }
};

TEST_F(WaveformTest, PeaksCoverEachFrameOnceAndSamplesStandAsTheyAre)
{
    WriteLines("lines.wav", 2, 50021);
    const auto peaks = Read({Name("lines.wav"), "--plot", Name("lines.png")});
    EXPECT_EQ(peaks["type"], "peaks");
    const auto slots = peaks["slots"].get<std::size_t>();
    ASSERT_GT(slots, 1000u);
    const double step = 1.0 / 50021;
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const auto& values = peaks["channels"][channel];
        EXPECT_NEAR(values["mins"][0].get<double>(), static_cast<double>(channel), 1e-9);
        EXPECT_NEAR(values["maxs"][slots - 1].get<double>(), static_cast<double>(channel) + 1.0 - step, 1e-6);
        for (std::size_t slot = 1; slot < slots; ++slot) {
            // A rising line: each slot begins one frame behind the end of the last one.
            ASSERT_NEAR(values["mins"][slot].get<double>() - values["maxs"][slot - 1].get<double>(), step,
                        3e-7);
        }
    }
    const auto samples =
        Read({Name("lines.wav"), "--from", "0.5", "--to", "0.501", "--plot", Name("in.png")});
    EXPECT_EQ(samples["type"], "samples");
    ASSERT_EQ(samples["channels"][1]["samples"].size(), 48u);
    EXPECT_NEAR(samples["channels"][1]["samples"][3].get<double>(), 1.0 + 24003 * step, 1e-6);
}

TEST_F(WaveformTest, GainsScaleEachChannelAndChangeOverTime)
{
    WriteLines("lines.wav", 2, 48000);
    const auto plain = Read({Name("lines.wav")});
    const auto scaled = Read({Name("lines.wav"), "--gain", "0,-400", "--automation", "0:0,1:-400"});
    const auto slots = plain["slots"].get<std::size_t>();
    const std::size_t middle = slots / 2;
    EXPECT_NEAR(scaled["channels"][0]["maxs"][middle].get<double>(),
                0.5 * plain["channels"][0]["maxs"][middle].get<double>(), 1e-3);
    EXPECT_EQ(scaled["channels"][1]["max"], 0.0);
    EXPECT_LT(scaled["channels"][0]["maxs"][slots - 1].get<double>(), 2e-3);
}

TEST_F(WaveformTest, ValuesThatAreNoNumbersArePassedOver)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels = {std::vector<float>(48000, 0.25f)};
    audio.mChannels[0][0] = std::numeric_limits<float>::quiet_NaN();
    audio.mChannels[0][24000] = std::numeric_limits<float>::infinity();
    WriteAudio(Path("nan.wav"), audio);
    const auto json = Read({Name("nan.wav"), "--plot", Name("nan.png")});
    EXPECT_EQ(json["channels"][0]["min"], 0.25);
    EXPECT_EQ(json["channels"][0]["max"], 0.25);
}

TEST_F(WaveformTest, RefusesWhatCannotBeDrawn)
{
    WriteLines("lines.wav", 2, 4800);
    WriteLines("none.wav", 1, 0);
    const auto lines = Name("lines.wav");
    ExpectFailure({"waveform", Name("missing.wav")}, 1, {"missing.wav", "No such file"});
    ExpectFailure({"waveform", Name("none.wav")}, 1, {"none.wav", "0 frames"});
    ExpectFailure({"waveform", lines, "--from", "2"}, 2, {"--from", "0.1 seconds"});
    ExpectFailure({"waveform", lines, "--from", "0.05", "--to", "0.05"}, 2, {"--to", "--from"});
    ExpectFailure({"waveform", lines, "--gain", "0,1,2"}, 2, {"--gain", "3 gains", "2 channels"});
    ExpectFailure({"waveform", lines, "--plot", Name("a.jpg")}, 2, {"a.jpg", ".png"});
    ExpectFailure({"waveform", lines, "--width", "10"}, 2, {"--width", "320"});
}

} // namespace
} // namespace tessaro::testing
