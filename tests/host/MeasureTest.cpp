#include <cmath>
#include <limits>
#include <numbers>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class MeasureTest : public HostTest
{
protected:
    /// Sines of 1000 Hz, one channel a peak level in dB; -400 stands for silence.
    void WriteTones(const std::string& inName, const std::vector<double>& inLevels, double inSeconds = 6.0)
    {
        TestAudio audio;
        audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        audio.mSampleRate = 48000;
        for (const double level : inLevels) {
            std::vector<float> row(static_cast<std::size_t>(48000 * inSeconds));
            const double amplitude = level > -400.0 ? std::pow(10.0, level / 20.0) : 0.0;
            for (std::size_t i = 0; i < row.size(); ++i) {
                row[i] = static_cast<float>(amplitude *
                                            std::sin(2.0 * std::numbers::pi * static_cast<double>(i) / 48.0));
            }
            audio.mChannels.push_back(row);
        }
        WriteAudio(Path(inName), audio);
    }

    nlohmann::json Measure(const std::string& inName, std::vector<std::string> inOptions = {})
    {
        std::vector<std::string> arguments = {"measure", Name(inName), "--json"};
        arguments.insert(arguments.end(), inOptions.begin(), inOptions.end());
        const auto result = RunHost(arguments);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return nlohmann::json::parse(result.mOutput);
    }
};

TEST_F(MeasureTest, ToneIsJudgedByBothStandards)
{
    WriteTones("tone.wav", {-23.0, -23.0});
    const auto first = Measure("tone.wav");
    EXPECT_NEAR(first["integrated"].get<double>(), -23.0, 0.05);
    EXPECT_EQ(first["unit"], "LUFS");
    EXPECT_EQ(first["loudnessVerdict"], "in tolerance");
    EXPECT_NEAR(first["truePeakDb"].get<double>(), -23.0, 0.1);
    EXPECT_EQ(first["truePeakVerdict"], "in limit");
    ASSERT_EQ(first["loudnessOverTime"].size(), 6u);
    EXPECT_TRUE(first["loudnessOverTime"][1]["last3s"].is_null());
    EXPECT_NEAR(first["loudnessOverTime"][5]["last3s"].get<double>(), -23.0, 0.05);

    WriteTones("loud.wav", {-1.5, -1.5});
    const auto loud = Measure("loud.wav", {"--standard", "0"});
    EXPECT_EQ(loud["unit"], "LKFS");
    EXPECT_EQ(loud["target"], -24.0);
    EXPECT_EQ(loud["loudnessVerdict"], "too loud");
    EXPECT_EQ(loud["truePeakVerdict"], "too high");
    WriteTones("over.wav", {4.0});
    const auto over = Measure("over.wav")["overshoots"];
    EXPECT_EQ(over["3"], 282); // all blocks; each second ends with one that is shorter
    EXPECT_EQ(over["6"], 0);
}

TEST_F(MeasureTest, SurroundChannelsCountByTheirPlace)
{
    WriteTones("surround.wav", {-28, -28, -24, 0, -30, -30});
    const auto json = Measure("surround.wav");
    EXPECT_NEAR(json["integrated"].get<double>(), -23.0, 0.1);
    EXPECT_EQ(json["channels"][3]["place"], "LFE");
    EXPECT_EQ(json["channels"][4]["place"], "Ls");
}

TEST_F(MeasureTest, WhatCannotBeMeasuredIsSaidAndNotPrintedAsANumber)
{
    WriteTones("silence.wav", {-400.0});
    const auto silence = Measure("silence.wav");
    EXPECT_TRUE(silence["integrated"].is_null());
    EXPECT_EQ(silence["loudnessVerdict"], "not measurable");
    EXPECT_TRUE(silence["truePeakDb"].is_null());
    WriteTones("short.wav", {-20.0}, 0.3);
    EXPECT_TRUE(Measure("short.wav")["integrated"].is_null());
    const auto text = RunHost({"measure", Name("short.wav")});
    EXPECT_NE(text.mOutput.find("not measurable"), std::string::npos);
    EXPECT_EQ(text.mOutput.find("-300"), std::string::npos);

    TestAudio broken;
    broken.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    broken.mSampleRate = 48000;
    broken.mChannels.assign(1, std::vector<float>(96000, 0.1f));
    for (std::size_t i = 0; i < 96000; i += 2) {
        broken.mChannels[0][i] = -0.1f;
    }
    broken.mChannels[0][100] = std::numeric_limits<float>::quiet_NaN();
    WriteAudio(Path("nan.wav"), broken);
    const auto json = Measure("nan.wav");
    EXPECT_FALSE(json["integrated"].is_null());
    EXPECT_EQ(json["channels"][0]["invalidSamples"], 1);

    EXPECT_EQ(RunHost({"measure", Name("short.wav"), "--standard", "2"}).mStatus, 2);
    EXPECT_EQ(RunHost({"measure", Name("missing.wav")}).mStatus, 1);
    EXPECT_EQ(RunHost({"measure", Name("short.wav"), "--plot", Name("short.wav")}).mStatus, 2);
    EXPECT_EQ(RunHost({"measure", Name("silence.wav"), "--plot", Name("m.png")}).mStatus, 0);
}

} // namespace
} // namespace tessaro::testing
