#include <cmath>
#include <complex>

#include <nlohmann/json.hpp>

#include "HostRunner.h"

namespace tessaro::testing {
namespace {

class ResponseTest : public HostTest
{
protected:
    nlohmann::json Respond(std::vector<std::string> inOptions)
    {
        inOptions.insert(inOptions.begin(), "response");
        inOptions.emplace_back("--json");
        const auto result = RunHost(inOptions);
        EXPECT_EQ(result.mStatus, 0) << result.mError;
        return nlohmann::json::parse(result.mOutput);
    }
};

TEST_F(ResponseTest, AnEchoHasTheResponseOfAComb)
{
    const auto json = Respond({"--chain", "gain:gain=-6;delay:time=1,mix=25", "--rate", "44100"});
    EXPECT_EQ(json["impulseSamples"], 45);
    EXPECT_EQ(json["hasDiedAway"], true);
    ASSERT_GT(json["points"].size(), 500u);
    for (const auto& point : json["points"]) {
        const double angle = 2.0 * M_PI * point["hz"].get<double>() * 44.0 / 44100.0;
        const auto comb = std::pow(10.0, -0.3) * (0.75 + std::polar(0.25, -angle));
        for (const char* kind : {"told", "measured"}) {
            EXPECT_NEAR(point[kind]["magnitudeDb"].get<double>(), 20.0 * std::log10(std::abs(comb)), 1e-5);
            EXPECT_NEAR(point[kind]["phaseDegrees"].get<double>(), std::arg(comb) * 180.0 / M_PI, 1e-4);
            // That of (1 - m) + m z^-d is d * Re(m z^-d / H).
            const double samples = 44.0 * (std::pow(10.0, -0.3) * std::polar(0.25, -angle) / comb).real();
            EXPECT_NEAR(point[kind]["groupDelayMs"].get<double>(), samples / 44.1, 1e-4);
        }
    }
}

TEST_F(ResponseTest, WhatEffectsTellIsWhatTheyDo)
{
    const auto list = nlohmann::json::parse(RunHost({"effects", "--json"}).mOutput)["effects"];
    for (const auto& effect : list) {
        if (!effect["linear"].get<bool>()) {
            continue;
        }
        SCOPED_TRACE(effect["name"]);
        const auto json = Respond({"--chain", effect["example"].get<std::string>()});
        for (const auto& point : json["points"]) {
            const auto& told = point["told"];
            const auto& measured = point["measured"];
            if (!told["magnitudeDb"].is_number() || measured["magnitudeDb"] < -60.0) {
                continue;
            }
            ASSERT_NEAR(told["magnitudeDb"].get<double>(), measured["magnitudeDb"].get<double>(), 0.05)
                << point["hz"];
            if (told["phaseDegrees"].is_number()) {
                const double difference =
                    told["phaseDegrees"].get<double>() - measured["phaseDegrees"].get<double>();
                ASSERT_NEAR(std::remainder(difference, 360.0), 0.0, 0.5) << point["hz"];
            }
        }
    }
}

TEST_F(ResponseTest, LatencyIsTakenOffAsInARender)
{
    const auto json = Respond({"--chain", "delay:time=10,compensated=on;delay:time=0.5"});
    EXPECT_EQ(json["latencySamples"], 480);
    for (const auto& point : json["points"]) {
        for (const char* kind : {"told", "measured"}) {
            EXPECT_NEAR(point[kind]["magnitudeDb"].get<double>(), 0.0, 1e-6);
            EXPECT_NEAR(point[kind]["groupDelayMs"].get<double>(), 0.5, 1e-6);
        }
    }
}

TEST_F(ResponseTest, DrawsAPictureAndListsTheOctaves)
{
    const auto picture = Name("out.png");
    const auto result = RunHost({"response", "--chain", "gain:gain=-400", "--plot", picture});
    EXPECT_EQ(result.mStatus, 0) << result.mError;
    EXPECT_NE(result.mOutput.find("    1000.0         -inf         -inf          -            -"),
              std::string::npos)
        << result.mOutput;
    EXPECT_GT(std::filesystem::file_size(picture), 10000u);

    ExpectFailure({"response"}, 2, {"--chain: is empty; 'tessaro-host effects' lists"});
    ExpectFailure({"response", "--chain", "gain", "--plot", "out.jpg"}, 2, {"out.jpg", ".png"});
    ExpectFailure({"response", "--chain", "gain", "--rate", "10"}, 2, {"--rate", "1000 to 768000 Hz"});
}

} // namespace
} // namespace tessaro::testing
