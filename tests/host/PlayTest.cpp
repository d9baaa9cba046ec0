#include <algorithm>
#include <cmath>
#include <fstream>

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

constexpr std::size_t kFrames = 96000;
constexpr double kStep = 2.0 * M_PI * 100.0 / 48000.0; // radians a frame

class PlayTest : public HostTest
{
protected:
    void WriteTone()
    {
        mTone.mFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        mTone.mChannels.assign(2, std::vector<float>(kFrames));
        for (std::size_t i = 0; i < kFrames; ++i) {
            mTone.mChannels[0][i] = static_cast<float>(0.5 * std::sin(kStep * static_cast<double>(i)));
            mTone.mChannels[1][i] = -0.5f * mTone.mChannels[0][i];
        }
        WriteAudio(Path("in.wav"), mTone);
    }

    std::string WriteControl(const std::string& inText)
    {
        std::ofstream(Path("control.txt")) << inText;
        return Name("control.txt");
    }

    HostResult Play(std::vector<std::string> inOptions)
    {
        inOptions.insert(inOptions.begin(),
                         {"play", Name("in.wav"), Name("out.wav"), "--rate-factor", "4", "--json"});
        auto result = RunHost(inOptions);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return result;
    }

    TestAudio mTone;
};

/// A click is a bend: the largest second difference of a row.
float LargestBend(const std::vector<float>& inRow)
{
    float bend = 0.0f;
    for (std::size_t i = 2; i < inRow.size(); ++i) {
        bend = std::max(bend, std::abs(inRow[i] - 2.0f * inRow[i - 1] + inRow[i - 2]));
    }
    return bend;
}

TEST_F(PlayTest, ChangesWhilePlayingDoNotClick)
{
    WriteTone();
    const auto control = WriteControl("# three changes\n\n"
                                      "1.0 mode bypass\n"
                                      "0.2 set 1 gain=-12\n"
                                      "0.6  insert 2  biquad:type=lowpass,frequency=50\n");
    const auto result = Play({"--chain", "gain:gain=6", "--control", control});
    const auto summary = nlohmann::json::parse(result.mOutput);
    EXPECT_EQ(summary["changesDone"], 3) << result.mOutput;
    EXPECT_EQ(summary["frames"], kFrames);
    EXPECT_EQ(summary["blocks"], (kFrames + 511) / 512);
    const auto played = ReadAudio(Path("out.wav"));
    ASSERT_EQ(played.GetFrameCount(), kFrames);

    // The tone at its loudest bends by 1.7e-4 and the fades add a tenth; a jump between the two gains at the
    // tone's peak would bend by 0.8.
    EXPECT_LT(LargestBend(played.mChannels[0]), 2.2e-4f);
    EXPECT_GT(LargestBend(played.mChannels[0]), 1.6e-4f);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const auto& tone = mTone.mChannels[channel];
        const auto& row = played.mChannels[channel];
        const float loud = std::pow(10.0f, 6.0f / 20.0f);
        EXPECT_NEAR(row[5000], loud * tone[5000], 1e-6f);
        EXPECT_EQ(row.back(), tone.back()) << "bypassed at the end";
    }
    EXPECT_LT(*std::max_element(played.mChannels[0].begin() + 40000, played.mChannels[0].begin() + 44000),
              0.08f); // -12 dB and a low-pass an octave below the tone
}

TEST_F(PlayTest, WhatCannotBeDoneLeavesTheSoundAsItIs)
{
    WriteTone();
    const auto control =
        WriteControl("0 insert 1 nosuch:x=1\n0 set 2 gain=3\n0 set 1 gain=loud\n0 remove 9\n");
    const auto result = Play({"--chain", "gain:gain=0", "--control", control});
    for (const char* text :
         {"control.txt:1: there is no effect 'nosuch'", "control.txt:2: the chain has no position 2",
          "control.txt:3: gain: gain: 'loud'", "control.txt:4: the chain has no position 9"}) {
        EXPECT_NE(result.mError.find(text), std::string::npos) << text << "\n" << result.mError;
    }
    EXPECT_EQ(nlohmann::json::parse(result.mOutput)["changesRefused"], 4);
    EXPECT_EQ(ReadAudio(Path("out.wav")).mChannels, mTone.mChannels);
}

TEST_F(PlayTest, ControlFilesThatAreWrongNameLineAndColumn)
{
    WriteTone();
    const auto in = Name("in.wav");
    const std::pair<const char*, const char*> faults[] = {
        {"0.5 jump 1\n", "control.txt:1:5: 'jump'"},
        {"\n#\n  soon set 1 gain=1\n", "control.txt:3:3: 'soon'"},
        {"1 set one gain=1\n", "control.txt:1:7: 'one'"},
        {"1 remove 0\n", "control.txt:1:10: a position"},
        {"1 remove 1 now\n", "control.txt:1:12: there is"},
        {"1 mode loud\n", "control.txt:1:8: 'loud'"},
        {"1 set 1\n", "control.txt:1:8: PARAMETER"},
        {"-1 remove 1\n", "control.txt:1:1: '-1'"}};
    for (const auto& [text, place] : faults) {
        ExpectFailure({"play", in, "--control", WriteControl(text)}, 1, {place});
    }
    ExpectFailure({"play", in, "--control", Name("none.txt")}, 1, {"none.txt", "No such file"});
    ExpectFailure({"play", in, "--overload", "1:x"}, 2, {"--overload", "1:x"});
    ExpectFailure({"play", in, in}, 2, {"is the input itself"});
}

TEST_F(PlayTest, AnOverloadIsToldOnceAndCountedEachTime)
{
    WriteTone();
    const auto result = Play({"--overload", "0.5:60,1:60"});
    // On a busy machine another dropout may come before the two, and it is the one that is told.
    EXPECT_NE(result.mError.find("in.wav\""), std::string::npos) << result.mError;
    EXPECT_EQ(std::count(result.mError.begin(), result.mError.end(), '\n'), 1);
    EXPECT_GE(nlohmann::json::parse(result.mOutput)["dropoutsByReason"]["time limit exceeded"], 2);
    EXPECT_EQ(ReadAudio(Path("out.wav")).mChannels, mTone.mChannels) << "late, but nothing is lost";
}

} // namespace
} // namespace tessaro::testing
