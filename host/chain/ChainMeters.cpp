#include "ChainMeters.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

constexpr double kLeastRange = 6.0; // dB
constexpr double kDeepest = -60.0;  // dB
constexpr int kPanelHeight = 380;
constexpr double kLeastShare = 0.5; // of the highest step's axis, percent

double ToDecibels(double inLinear)
{
    return 20.0 * std::log10(std::max(inLinear, 1e-20));
}

} // namespace

void ChainMeters::Histogram::Add(const tessaro::AudioBuffer& inBlock)
{
    for (unsigned i = 0; i < inBlock.GetBufferSize(); ++i) {
        float peak = 0.0f;
        for (std::size_t channel = 0; channel < inBlock.GetChannelCount(); ++channel) {
            if (!inBlock.IsChannelZero(channel)) {
                peak = std::max(peak, std::abs(inBlock[channel][i]));
            }
        }
        const int step = static_cast<int>(std::floor(std::min<double>(ToDecibels(peak), kHighest))) - kLowest;
        if (step >= 0) {
            ++mCounts[std::min(static_cast<std::size_t>(step), mCounts.size() - 1)];
        }
    }
    mFrames += inBlock.GetBufferSize();
}

std::vector<double> ChainMeters::Histogram::GetPercentages() const
{
    std::vector<double> percentages;
    for (const auto count : mCounts) {
        percentages.push_back(100.0 * static_cast<double>(count) /
                              static_cast<double>(std::max<std::int64_t>(mFrames, 1)));
    }
    return percentages;
}

ChainMeters::ChainMeters(const ChainDescription& inDescription, EffectChain& ioChain, int inSampleRate)
    : mSampleRate(inSampleRate)
{
    std::int64_t lateness = 0;
    for (std::size_t i = 0; i < inDescription.mEffects.size(); ++i) {
        lateness += ioChain.GetEffect(i).GetLatency();
        if (ioChain.GetEffect(i).TakeGainReduction()) {
            mTraces.push_back({std::to_string(i + 1) + " " + inDescription.mEffects[i].GetEntry().mName, i,
                               static_cast<double>(lateness) / mSampleRate});
        }
    }
}

void ChainMeters::AddInput(const tessaro::AudioBuffer& inBlock)
{
    mInput.Add(inBlock);
}

void ChainMeters::AddOutput(const tessaro::AudioBuffer& inBlock, EffectChain& ioChain)
{
    mOutput.Add(inBlock);
    mTimes.push_back(static_cast<double>(mPosition) / mSampleRate);
    mPosition += inBlock.GetBufferSize();
    for (auto& trace : mTraces) {
        const auto gain = ioChain.GetEffect(trace.mEffect).TakeGainReduction();
        trace.mDecibels.push_back(std::min(0.0, ToDecibels(gain.value_or(1.0f))));
    }
}

std::vector<ChainMeters::Reduction> ChainMeters::GetDeepest() const
{
    std::vector<Reduction> reductions;
    for (const auto& trace : mTraces) {
        const auto deepest = std::min_element(trace.mDecibels.begin(), trace.mDecibels.end());
        reductions.push_back({trace.mName, deepest == trace.mDecibels.end() ? 0.0 : *deepest});
    }
    return reductions;
}

Plot ChainMeters::DrawTraces() const
{
    double lowest = -kLeastRange;
    for (const auto& reduction : GetDeepest()) {
        lowest = std::min(lowest, std::max(reduction.mDecibels, kDeepest));
    }
    const double end = static_cast<double>(std::max<std::int64_t>(mPosition, 1)) / mSampleRate;
    Plot plot({}, {}, {PlotAxis::Scale::kTime, 0.0, end, end >= 60.0 ? "Time in min:s" : "Time in s"},
              {PlotAxis::Scale::kDecibels, lowest - 1.0, 0.5, "Gain reduction in dB"});
    for (const auto& trace : mTraces) {
        auto times = mTimes;
        for (auto& time : times) {
            time -= trace.mLateness;
        }
        plot.AddLine(trace.mName, std::move(times), trace.mDecibels);
    }
    plot.SetSize(Plot::kDefaultWidth, kPanelHeight);
    return plot;
}

void ChainMeters::Draw(const std::string& inTitle, const std::filesystem::path& inPath) const
{
    const auto before = mInput.GetPercentages();
    const auto after = mOutput.GetPercentages();
    std::vector<double> levels;
    for (std::size_t step = 0; step < before.size(); ++step) {
        levels.push_back(Histogram::kLowest + static_cast<double>(step) + 0.5);
    }
    const double highest = std::max({*std::max_element(before.begin(), before.end()),
                                     *std::max_element(after.begin(), after.end()), kLeastShare});
    Plot histogram(inTitle, "share of frames at each level, in steps of 1 dB, by the loudest channel",
                   {PlotAxis::Scale::kDecibels, Histogram::kLowest, Histogram::kHighest, "Level in dBFS"},
                   {PlotAxis::Scale::kLinear, 0.0, 1.05 * highest, "Frames in %"});
    histogram.AddLine("behind the chain", levels, after);
    histogram.AddLine("before it", levels, before);
    histogram.SetSize(Plot::kDefaultWidth, kPanelHeight + Plot::kDefaultHeight / 8);
    std::vector<Plot> plots = {std::move(histogram)};
    if (!mTraces.empty()) {
        plots.push_back(DrawTraces());
    }
    Plot::WriteStack(plots, inPath);
}

} // namespace host
