#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "Command.h"
#include "FlushToZero.h"
#include "HostError.h"
#include "OptionText.h"
#include "Plot.h"
#include "Report.h"
#include "chain/ChainOptions.h"
#include "chain/ResponsePlot.h"

namespace host {

namespace {

constexpr unsigned kBlock = 512;
constexpr double kLowestFrequency = 15.625; // six octaves below 1 kHz
constexpr int kPointsAnOctave = 96;
constexpr int kRowsAnOctave = 2; // of the table for people

/// `response --chain ...`: what a linear chain does to level, phase and time of each frequency.
class ResponseCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        mChainOptions.Define(ioApp);
        ioApp.add_option("--rate", mRate, "Sampling rate in Hz, 1000 to 768000 (48000)")->type_name("HZ");
        ioApp
            .add_option("--plot", mPicture,
                        "Draw magnitude, phase and group delay, as told and as measured, to this .png")
            ->type_name("OUT");
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        const auto rate = static_cast<int>(ParseInteger("--rate", mRate, 1000, 768000, "Hz"));
        if (!mPicture.empty()) {
            Plot::CheckName(mPicture);
        }
        const auto description = mChainOptions.Load();
        CheckLinear(description);
        Measure(description, rate);
        if (!mPicture.empty()) {
            DrawResponse(mChainText, Describe(rate), mFrequencies, mTold, mMeasured, mPicture);
        }
        if (mJson) {
            PrintForPrograms(rate);
        } else {
            PrintForPeople(rate);
        }
        FinishOutput();
    }

private:
    static void CheckLinear(const ChainDescription& inChain)
    {
        if (inChain.mEffects.empty()) {
            inChain.mSource.Fail("is empty; 'tessaro-host effects' lists what a chain can be made of");
        }
        for (const auto& setting : inChain.mEffects) {
            if (!setting.GetEntry().mIsLinear) {
                inChain.mSource.Fail(setting.GetEntry().mName +
                                     " is not linear, so that the chain has no response");
            }
        }
    }

    void Measure(const ChainDescription& inDescription, int inRate)
    {
        mChainText = FormatChain(inDescription);
        const double highest = 0.4999 * inRate;
        const auto points =
            static_cast<int>(std::floor(kPointsAnOctave * std::log2(highest / kLowestFrequency)));
        for (int i = 0; i <= points; ++i) {
            mFrequencies.push_back(kLowestFrequency * std::exp2(static_cast<double>(i) / kPointsAnOctave));
        }
        mFrequencies.push_back(highest);

        const FlushToZero flushToZero;
        EffectChain chain(inDescription, {1, inRate, static_cast<int>(kBlock)});
        mLatency = chain.GetLatency();
        mTold = TellResponse(chain, inRate, mFrequencies);
        mImpulse = MeasureImpulseResponse(chain, inRate, kBlock);
        mMeasured = ComputeResponse(mImpulse, mLatency, inRate, mFrequencies);
    }

    std::string DescribeLength() const
    {
        return std::to_string(mImpulse.mSamples.size()) + " samples" +
               (mImpulse.mHasDiedAway ? "" : ", cut off while it sounds");
    }

    std::string Describe(int inRate) const
    {
        return "At " + std::to_string(inRate) + " Hz; latency " + std::to_string(mLatency) +
               " samples, taken off; impulse response of " + DescribeLength();
    }

    /// A number in a column, "-" for none.
    static std::string Column(double inValue, int inDigits)
    {
        char text[32];
        // Adding 0 turns a rounded -0.00 into 0.00.
        const double scale = std::pow(10.0, inDigits);
        std::snprintf(text, sizeof text, "%.*f", inDigits, std::round(inValue * scale) / scale + 0.0);
        return std::isfinite(inValue) ? text : std::isinf(inValue) ? "-inf" : "-";
    }

    static double Decibels(double inMagnitude) { return 20.0 * std::log10(inMagnitude); }

    void PrintForPeople(int inRate) const
    {
        PrintRow("Chain", mChainText);
        PrintRow("Rate", std::to_string(inRate) + " Hz");
        PrintRow("Latency", std::to_string(mLatency) + " samples, taken off phase and delay");
        PrintRow("Impulse", DescribeLength());
        if (!mPicture.empty()) {
            PrintRow("Picture", mPicture);
        }
        std::printf("\n%10s %12s %12s %10s %12s\n", "Hz", "told dB", "measured dB", "phase deg", "delay ms");
        for (std::size_t i = 0; i < mFrequencies.size(); i += kPointsAnOctave / kRowsAnOctave) {
            std::printf("%10s %12s %12s %10s %12s\n", Column(mFrequencies[i], 1).c_str(),
                        Column(Decibels(mTold.mMagnitude[i]), 2).c_str(),
                        Column(Decibels(mMeasured.mMagnitude[i]), 2).c_str(),
                        Column(mMeasured.mPhase[i] * 180.0 / M_PI, 1).c_str(),
                        Column(mMeasured.mGroupDelay[i] * 1000.0, 3).c_str());
        }
    }

    /// JSON has no NaN: null.
    static nlohmann::ordered_json Finite(double inValue)
    {
        return std::isfinite(inValue) ? nlohmann::ordered_json(inValue) : nlohmann::ordered_json(nullptr);
    }

    nlohmann::ordered_json ToJson(const ChainResponse& inResponse, std::size_t inAt) const
    {
        return {{"magnitudeDb", Finite(Decibels(inResponse.mMagnitude[inAt]))},
                {"phaseDegrees", Finite(inResponse.mPhase[inAt] * 180.0 / M_PI)},
                {"groupDelayMs", Finite(inResponse.mGroupDelay[inAt] * 1000.0)}};
    }

    void PrintForPrograms(int inRate) const
    {
        auto points = nlohmann::ordered_json::array();
        for (std::size_t i = 0; i < mFrequencies.size(); ++i) {
            points.push_back(
                {{"hz", mFrequencies[i]}, {"told", ToJson(mTold, i)}, {"measured", ToJson(mMeasured, i)}});
        }
        PrintJson({{"chain", mChainText},
                   {"sampleRate", inRate},
                   {"latencySamples", mLatency},
                   {"impulseSamples", mImpulse.mSamples.size()},
                   {"hasDiedAway", mImpulse.mHasDiedAway},
                   {"points", std::move(points)}});
    }

    ChainOptions mChainOptions;
    std::string mRate = "48000";
    std::string mPicture;
    bool mJson = false;

    std::string mChainText;
    std::vector<double> mFrequencies;
    std::int64_t mLatency = 0;
    ChainResponse mTold;
    ChainResponse mMeasured;
    ImpulseResponse mImpulse;
};

const RegisterCommand<ResponseCommand> kResponse("response", "Measure and draw the response of a chain");

} // namespace

} // namespace host
