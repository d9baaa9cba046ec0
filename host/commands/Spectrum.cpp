#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tessaro/utility/FFTWindow.h>

#include "AudioFileReader.h"
#include "Command.h"
#include "HostError.h"
#include "LongTermSpectrum.h"
#include "OfflineDriver.h"
#include "OptionText.h"
#include "Plot.h"
#include "Report.h"

namespace host {

namespace {

struct NamedWindow
{
    const char* mName;
    unsigned mType;
};

constexpr std::array<NamedWindow, 7> kWindows = {{{"triangular", tessaro::fftwindow::kTriangular},
                                                  {"hann", tessaro::fftwindow::kHann},
                                                  {"hamming", tessaro::fftwindow::kHamming},
                                                  {"blackman", tessaro::fftwindow::kBlackman},
                                                  {"welch", tessaro::fftwindow::kWelch},
                                                  {"blackman-harris", tessaro::fftwindow::kBlackmanHarris},
                                                  {"kaiser", tessaro::fftwindow::kKaiser140}}};

constexpr std::int64_t kShortestFrame = 256;
constexpr std::int64_t kLongestFrame = 1 << 20;
constexpr double kLowestShown = 20.0; // Hz
constexpr double kCellsAnOctave = 96.0;
constexpr double kDeepestRange = 100.0; // dB

double Decibels(double inLevel)
{
    return 20.0 * std::log10(inLevel);
}

/// `spectrum IN`: what frequencies a file holds, on average over its length.
class SpectrumCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("IN", mInput, "Audio file: WAV, FLAC, OGG or AIFF")->required();
        ioApp.add_option("--plot", mPicture, "Picture to write")->type_name("OUT.png");
        ioApp.add_option("--fft", mFrame, "Samples a frame: a power of two, 256 to 1048576 (16384)")
            ->type_name("N");
        ioApp
            .add_option("--window", mWindow,
                        "triangular, hann, hamming, blackman, welch, blackman-harris or kaiser (hann)")
            ->type_name("NAME");
        ioApp.add_flag("--json", mJson, "Print JSON, with the level of each bin");
    }

    void Run() override
    {
        LongTermSpectrum spectrum(ParseOrder(), ParseWindow());
        AudioFileReader reader(mInput);
        if (reader.GetFrameCount() < LongTermSpectrum::kFewestSamples) {
            throw FileError(mInput, "holds " + std::to_string(reader.GetFrameCount()) +
                                        " frames, and a spectrum takes " +
                                        std::to_string(LongTermSpectrum::kFewestSamples) +
                                        " at least; name a longer file");
        }
        if (!mPicture.empty()) {
            Plot::CheckName(mPicture, mInput);
        }
        OfflineDriver("spectrum", reader).Analyze(spectrum, OfflineDriver::SelectAll(reader));
        if (!mPicture.empty()) {
            Draw(reader, spectrum);
        }
        if (mJson) {
            PrintForPrograms(reader, spectrum);
        } else {
            PrintForPeople(reader, spectrum);
        }
        FinishOutput();
    }

private:
    unsigned ParseOrder() const
    {
        const auto length = ParseInteger("--fft", mFrame, kShortestFrame, kLongestFrame, "samples");
        unsigned order = 0;
        while ((std::int64_t{1} << order) < length) {
            ++order;
        }
        if ((std::int64_t{1} << order) != length) {
            throw UsageError("--fft", "'" + mFrame + "' is not a power of two");
        }
        return order;
    }

    unsigned ParseWindow() const
    {
        std::string names;
        for (const auto& window : kWindows) {
            if (mWindow == window.mName) {
                return window.mType;
            }
            names += std::string(names.empty() ? "" : ", ") + window.mName;
        }
        throw UsageError("--window", "'" + mWindow + "' is none of " + names);
    }

    std::string Describe(const LongTermSpectrum& inSpectrum) const
    {
        char bins[32];
        std::snprintf(bins, sizeof bins, "%.4g Hz", inSpectrum.GetBinWidth());
        const auto frames = inSpectrum.GetFrameCount();
        return "mean of " + std::to_string(frames) + (frames == 1 ? " frame of " : " frames of ") +
               std::to_string(inSpectrum.GetFrameLength()) + " samples, " + mWindow +
               " window, a bin every " + bins;
    }

    void Draw(const AudioFileReader& inReader, const LongTermSpectrum& inSpectrum) const
    {
        const double nyquist = inReader.GetSampleRate() / 2.0;
        const PlotAxis frequencies{PlotAxis::Scale::kLogarithmic, std::min(kLowestShown, nyquist / 100.0),
                                   nyquist, "Frequency in Hz"};
        std::vector<std::vector<double>> x(static_cast<std::size_t>(inReader.GetChannelCount()));
        auto y = x;
        std::vector<double> heard;
        for (std::size_t channel = 0; channel < x.size(); ++channel) {
            Thin(inSpectrum, channel, frequencies.mLow, x[channel], y[channel]);
            std::copy_if(y[channel].begin(), y[channel].end(), std::back_inserter(heard),
                         [](double inLevel) { return std::isfinite(inLevel); });
        }
        Plot plot(std::filesystem::path(mInput).filename().string(),
                  Describe(inSpectrum) + "; shown: the highest bin of each 1/96 octave", frequencies,
                  MakeLevelAxis(std::move(heard)));
        for (std::size_t channel = 0; channel < x.size(); ++channel) {
            const bool isSilent = inSpectrum.FindPeak(channel).mLevel == 0.0;
            plot.AddLine("channel " + std::to_string(channel + 1) + (isSilent ? " (silent)" : ""),
                         std::move(x[channel]), std::move(y[channel]));
        }
        MarkPeak(plot, inSpectrum, static_cast<std::size_t>(inReader.GetChannelCount()));
        plot.Write(mPicture);
    }

    /// Shows all but the lowest few levels, which say nothing but where the converter's filter ends.
    static PlotAxis MakeLevelAxis(std::vector<double> inLevels)
    {
        const char* title = "Level in dBFS (0: a sine at full scale)";
        if (inLevels.empty()) {
            return MakeDecibelAxis(-kDeepestRange, 0.0, title); // digital silence
        }
        const auto highest = *std::max_element(inLevels.begin(), inLevels.end());
        const auto low = inLevels.begin() + static_cast<std::ptrdiff_t>(inLevels.size() / 50);
        std::nth_element(inLevels.begin(), low, inLevels.end());
        return MakeDecibelAxis(std::max(*low, highest - kDeepestRange), highest + 2.0, title);
    }

    /// Keeps the highest bin of each small part of an octave, as more than that cannot be seen.
    static void Thin(const LongTermSpectrum& inSpectrum, std::size_t inChannel, double inLowest,
                     std::vector<double>& outX, std::vector<double>& outY)
    {
        const auto& levels = inSpectrum.GetLevels(inChannel);
        double cell = std::nan("");
        for (std::size_t bin = 1; bin < levels.size(); ++bin) {
            const double frequency = static_cast<double>(bin) * inSpectrum.GetBinWidth();
            const double level = Decibels(levels[bin]);
            const double binCell = std::floor(std::log2(frequency / inLowest) * kCellsAnOctave);
            if (binCell != cell) {
                cell = binCell;
                outX.push_back(frequency);
                outY.push_back(level);
            } else {
                outX.back() = inLowest * std::exp2((cell + 0.5) / kCellsAnOctave);
                outY.back() = std::max(outY.back(), level);
            }
        }
    }

    static void MarkPeak(Plot& ioPlot, const LongTermSpectrum& inSpectrum, std::size_t inChannels)
    {
        LongTermSpectrum::Peak highest;
        for (std::size_t channel = 0; channel < inChannels; ++channel) {
            const auto peak = inSpectrum.FindPeak(channel);
            if (peak.mLevel > highest.mLevel) {
                highest = peak;
            }
        }
        if (highest.mLevel > 0.0) {
            char text[64];
            const double tenths = std::round(10.0 * Decibels(highest.mLevel));
            std::snprintf(text, sizeof text, "%.1f Hz, %.1f dB", highest.mFrequency, tenths / 10.0 + 0.0);
            ioPlot.AddMark(text, highest.mFrequency, Decibels(highest.mLevel));
        }
    }

    void PrintForPeople(const AudioFileReader& inReader, const LongTermSpectrum& inSpectrum) const
    {
        PrintRow("File", mInput);
        PrintRow("Spectrum", Describe(inSpectrum));
        if (!mPicture.empty()) {
            PrintRow("Picture", mPicture);
        }
        std::printf("\n%-10s %12s %14s\n", "Channel", "Peak Hz", "Level dBFS");
        for (int channel = 0; channel < inReader.GetChannelCount(); ++channel) {
            const auto at = static_cast<std::size_t>(channel);
            const auto peak = inSpectrum.FindPeak(at);
            char frequency[32] = "-";
            if (peak.mLevel > 0.0) {
                std::snprintf(frequency, sizeof frequency, "%.1f", peak.mFrequency);
            }
            std::printf("%-10d %12s %14s", channel + 1, frequency, FormatLevel(peak.mLevel).c_str());
            if (const auto invalid = inSpectrum.GetInvalidCount(at)) {
                std::printf("  (took %lld NaN or infinite samples as zeros)",
                            static_cast<long long>(invalid));
            }
            std::printf("\n");
        }
    }

    void PrintForPrograms(const AudioFileReader& inReader, const LongTermSpectrum& inSpectrum) const
    {
        auto channels = nlohmann::ordered_json::array();
        for (int channel = 0; channel < inReader.GetChannelCount(); ++channel) {
            const auto at = static_cast<std::size_t>(channel);
            const auto peak = inSpectrum.FindPeak(at);
            auto levels = nlohmann::ordered_json::array();
            for (const double level : inSpectrum.GetLevels(at)) {
                levels.push_back(LevelToJson(level));
            }
            const bool isSilent = peak.mLevel == 0.0;
            channels.push_back({{"peakHz", isSilent ? nlohmann::ordered_json(nullptr)
                                                    : nlohmann::ordered_json(peak.mFrequency)},
                                {"peakDb", LevelToJson(peak.mLevel)},
                                {"invalidSamples", inSpectrum.GetInvalidCount(at)},
                                {"levelsDb", std::move(levels)}});
        }
        nlohmann::ordered_json report = {{"file", mInput},
                                         {"sampleRate", inReader.GetSampleRate()},
                                         {"channelCount", inReader.GetChannelCount()},
                                         {"frames", inReader.GetFrameCount()},
                                         {"seconds", inReader.GetSeconds()},
                                         {"fftSize", inSpectrum.GetFrameLength()},
                                         {"window", mWindow},
                                         {"averagedFrames", inSpectrum.GetFrameCount()},
                                         {"binHz", inSpectrum.GetBinWidth()}};
        if (!mPicture.empty()) {
            report["picture"] = mPicture;
        }
        report["channels"] = std::move(channels);
        PrintJson(report);
    }

    std::string mInput;
    std::string mPicture;
    std::string mFrame = "16384";
    std::string mWindow = "hann";
    bool mJson = false;
};

const RegisterCommand<SpectrumCommand> kSpectrum("spectrum",
                                                 "Measure and draw the average spectrum of a file");

} // namespace

} // namespace host
