#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <random>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class SpectrumTest : public HostTest
{
protected:
    /// A float WAV file of sines at the level given, one channel a frequency; 0 Hz stands for silence.
    void WriteSinesAt(const std::string& inName, const std::vector<double>& inFrequencies, double inLevelDb,
                      std::size_t inFrames, int inRate = 48000)
    {
        TestAudio audio;
        audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        audio.mSampleRate = inRate;
        const double amplitude = std::pow(10.0, inLevelDb / 20.0);
        for (const double frequency : inFrequencies) {
            std::vector<float> row(inFrames);
            for (std::size_t i = 0; i < inFrames; ++i) {
                row[i] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * frequency *
                                                                 static_cast<double>(i) / inRate));
            }
            audio.mChannels.push_back(row);
        }
        WriteAudio(Path(inName), audio);
    }

    nlohmann::json Measure(const std::string& inName, std::vector<std::string> inOptions = {})
    {
        std::vector<std::string> arguments = {"spectrum", Name(inName), "--json"};
        arguments.insert(arguments.end(), inOptions.begin(), inOptions.end());
        const auto result = RunHost(arguments);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return nlohmann::json::parse(result.mOutput);
    }

    /// Width and height from the header of a PNG file, 0 for anything else.
    std::pair<unsigned, unsigned> SizeOfPicture(const std::string& inName)
    {
        std::ifstream file(Path(inName), std::ios::binary);
        unsigned char header[24] = {};
        file.read(reinterpret_cast<char*>(header), sizeof header);
        const auto number = [&](int inAt) {
            return header[inAt] * 0x1000000u + header[inAt + 1] * 0x10000u + header[inAt + 2] * 0x100u +
                   header[inAt + 3];
        };
        const std::string signature(header, header + 8);
        return signature == "\x89PNG\r\n\x1a\n" ? std::pair(number(16), number(20)) : std::pair(0u, 0u);
    }
};

TEST_F(SpectrumTest, SinePeaksAtItsFrequencyAndLevelWithEachWindow)
{
    WriteSinesAt("sine.wav", {1000.0}, -20.0, 48000);
    for (const char* window :
         {"triangular", "hann", "hamming", "blackman", "welch", "blackman-harris", "kaiser"}) {
        const auto json = Measure("sine.wav", {"--window", window});
        const auto& channel = json["channels"][0];
        EXPECT_NEAR(channel["peakHz"].get<double>(), 1000.0, 0.01) << window;
        EXPECT_NEAR(channel["peakDb"].get<double>(), -20.0, 0.01) << window;
        EXPECT_LT(channel["levelsDb"][4000].get<double>(), -80.0) << window;
    }
    const auto json = Measure("sine.wav", {"--fft", "8192", "--window", "blackman-harris"});
    EXPECT_EQ(json["fftSize"], 8192);
    EXPECT_EQ(json["channels"][0]["levelsDb"].size(), 4097u);
    EXPECT_DOUBLE_EQ(json["binHz"], 48000.0 / 8192.0);
    EXPECT_NEAR(json["channels"][0]["peakDb"].get<double>(), -20.0, 0.01);
}

TEST_F(SpectrumTest, ChannelsAreMeasuredEachForItself)
{
    const std::vector<double> frequencies = {100.0, 0.0, 440.0, 997.0, 5000.0, 20000.0};
    for (const std::size_t count : {1u, 2u, 6u}) {
        const std::vector<double> used(frequencies.begin(), frequencies.begin() + static_cast<int>(count));
        WriteSinesAt("channels.wav", used, -6.0, 30011, 44100);
        const auto json = Measure("channels.wav", {"--plot", Name("channels.png")});
        EXPECT_EQ(SizeOfPicture("channels.png"), std::pair(1200u, 675u));
        ASSERT_EQ(json["channels"].size(), count);
        for (std::size_t channel = 0; channel < count; ++channel) {
            const auto& found = json["channels"][channel];
            if (used[channel] == 0.0) {
                EXPECT_TRUE(found["peakHz"].is_null());
                EXPECT_TRUE(found["peakDb"].is_null());
                continue;
            }
            EXPECT_NEAR(found["peakHz"].get<double>(), used[channel], 0.05);
            EXPECT_NEAR(found["peakDb"].get<double>(), -6.0, 0.02);
        }
    }
}

TEST_F(SpectrumTest, NoiseOfAnyLengthHasItsPowerSpreadOverTheBins)
{
    // White noise of variance 1/100: the mean power of its bins follows from that of the window.
    std::mt19937 random(7);
    std::normal_distribution<float> noise(0.0f, 0.1f);
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels.resize(1);
    for (const std::size_t frames : {1025u, 20000u, 100001u}) {
        audio.mChannels[0].resize(frames);
        std::generate(audio.mChannels[0].begin(), audio.mChannels[0].end(), [&] { return noise(random); });
        WriteAudio(Path("noise.wav"), audio);
        const auto json = Measure("noise.wav", {"--fft", "1024"});
        EXPECT_GE(json["averagedFrames"].get<std::size_t>(), (frames - 1024) / 256 + 1);
        double power = 0.0;
        for (std::size_t bin = 1; bin < 512; ++bin) {
            power += std::pow(10.0, json["channels"][0]["levelsDb"][bin].get<double>() / 10.0) / 511.0;
        }
        const double hannPower = 1.5; // mean square by squared mean
        EXPECT_NEAR(10.0 * std::log10(power / (4.0 * 0.01 * hannPower / 1024.0)), 0.0,
                    frames > 2000 ? 0.3 : 1.0);
    }
}

TEST_F(SpectrumTest, FileShorterThanAFrameKeepsItsLevel)
{
    for (const std::size_t frames : {512u, 2001u, 16383u, 16384u}) {
        WriteSinesAt("short.wav", {6000.0}, -10.0, frames);
        const auto json = Measure("short.wav", {"--plot", Name("short.png")});
        EXPECT_EQ(json["averagedFrames"], 1);
        EXPECT_NEAR(json["channels"][0]["peakHz"].get<double>(), 6000.0, 3.0) << frames;
        EXPECT_NEAR(json["channels"][0]["peakDb"].get<double>(), -10.0, 0.1) << frames;
    }
}

TEST_F(SpectrumTest, LastSamplesCountToo)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels = {std::vector<float>(1024 + 100, 0.0f)};
    std::fill(audio.mChannels[0].end() - 60, audio.mChannels[0].end(), 0.5f);
    WriteAudio(Path("end.wav"), audio);
    EXPECT_EQ(Measure("end.wav", {"--fft", "1024"})["averagedFrames"], 2);
    EXPECT_FALSE(Measure("end.wav", {"--fft", "1024"})["channels"][0]["peakDb"].is_null());
}

TEST_F(SpectrumTest, SilenceAndSamplesThatAreNoNumbers)
{
    WriteSinesAt("silence.wav", {0.0, 0.0}, 0.0, 20000);
    const auto shown = RunHost({"spectrum", Name("silence.wav"), "--plot", Name("silence.png")});
    EXPECT_EQ(shown.mStatus, 0) << shown.mError;
    EXPECT_NE(shown.mOutput.find("-inf"), std::string::npos);
    EXPECT_EQ(SizeOfPicture("silence.png").first, 1200u);
    EXPECT_TRUE(Measure("silence.wav")["channels"][1]["levelsDb"][100].is_null());

    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    audio.mChannels = {std::vector<float>(20000, 0.25f)};
    audio.mChannels[0][5] = NAN;
    audio.mChannels[0][19999] = INFINITY;
    WriteAudio(Path("nan.wav"), audio);
    const auto json = Measure("nan.wav");
    EXPECT_EQ(json["channels"][0]["invalidSamples"], 2);
    EXPECT_NEAR(json["channels"][0]["levelsDb"][0].get<double>(), -12.04, 0.05); // the offset, and no NaN
}

TEST_F(SpectrumTest, RefusesWhatCannotBeMeasuredOrDrawn)
{
    WriteSinesAt("tiny.wav", {1000.0}, 0.0, 15);
    WriteSinesAt("none.wav", {1000.0}, 0.0, 0);
    WriteSinesAt("good.wav", {1000.0}, 0.0, 4000);
    std::ofstream(Path("text.wav")) << "This is not audio, whatever its name says; nor is it short.";
    std::ofstream(Path("zero.wav"));
    ExpectFailure({"spectrum", Name("tiny.wav")}, 1, {"tiny.wav", "15 frames", "longer file"});
    ExpectFailure({"spectrum", Name("none.wav")}, 1, {"none.wav", "0 frames"});
    ExpectFailure({"spectrum", Name("zero.wav")}, 1, {"zero.wav", "empty"});
    ExpectFailure({"spectrum", Name("text.wav")}, 1, {"text.wav", "not audio"});
    ExpectFailure({"spectrum", Name("missing.wav")}, 1, {"missing.wav", "No such file"});
    ExpectFailure({"spectrum", Name("good.wav"), "--plot", Name("gone/a.png")}, 1,
                  {"gone/a.png", "directory"});
    ExpectFailure({"spectrum", Name("good.wav"), "--plot", Name("big.png")}, 1, {"big.png", "too large"},
                  2000);
    ExpectFailure({"spectrum", Name("good.wav"), "--plot", Name("a.jpg")}, 2, {"a.jpg", ".png"});
    ExpectFailure({"spectrum", Name("good.wav"), "--window", "square"}, 2, {"--window", "square", "hann"});
    ExpectFailure({"spectrum", Name("good.wav"), "--fft", "1000"}, 2, {"--fft", "1000", "power of two"});
    ExpectFailure({"spectrum", Name("good.wav"), "--fft", "128"}, 2, {"--fft", "128", "256"});
    ExpectFailure({"spectrum"}, 2, {"IN"});
}

} // namespace
} // namespace tessaro::testing
