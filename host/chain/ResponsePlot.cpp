#include "ResponsePlot.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "Plot.h"

namespace host {

namespace {

constexpr int kWidth = 1200;
constexpr int kMagnitudeHeight = 480;
constexpr int kPhaseHeight = 250;
constexpr int kDelayHeight = 300;
constexpr double kDeepest = 100.0;     // dB below the highest level that are shown
constexpr double kDeepestPhase = 80.0; // the same for phase and delay, which noise bends sooner
constexpr double kShownPart = 0.95;    // of the frequencies; what is above need not fit
constexpr double kSmallestDelay = 0.1; // ms, from the middle of the axis to its ends

using Curve = std::vector<double>;

/// One of the three panels: its curves, told and measured, in the unit of its axis.
struct Panel
{
    Curve mTold;
    Curve mMeasured;
};

Panel MakePanel(const ChainResponse& inTold, const ChainResponse& inMeasured,
                const std::function<double(const ChainResponse&, std::size_t)>& inValue)
{
    Panel panel;
    for (std::size_t i = 0; i < inMeasured.mMagnitude.size(); ++i) {
        panel.mTold.push_back(inValue(inTold, i));
        panel.mMeasured.push_back(inValue(inMeasured, i));
    }
    return panel;
}

/// The range of what can be shown of both curves; false when there is nothing.
bool FindRange(const Panel& inPanel, double& outLow, double& outHigh)
{
    outLow = INFINITY;
    outHigh = -INFINITY;
    for (const auto* curve : {&inPanel.mTold, &inPanel.mMeasured}) {
        for (const double value : *curve) {
            if (std::isfinite(value)) {
                outLow = std::min(outLow, value);
                outHigh = std::max(outHigh, value);
            }
        }
    }
    return outLow <= outHigh;
}

/// Puts a gap where the phase jumps from one end of its range to the other.
void BreakAtJumps(Curve& ioDegrees)
{
    for (std::size_t i = 1; i < ioDegrees.size(); ++i) {
        if (std::abs(ioDegrees[i] - ioDegrees[i - 1]) > 180.0) {
            ioDegrees[i - 1] = NAN;
        }
    }
}

PlotAxis PhaseAxis(const Panel& inPanel)
{
    double low = 0.0;
    double high = 0.0;
    FindRange(inPanel, low, high);
    double end = 15.0;
    for (const double wider : {30.0, 60.0, 90.0, 180.0}) {
        end = std::max(std::abs(low), std::abs(high)) > 0.95 * end ? wider : end;
    }
    return {PlotAxis::Scale::kDegrees, -end, end, "Phase in \u00b0"};
}

PlotAxis DelayAxis(const Panel& inPanel)
{
    double low = 0.0;
    double high = 0.0;
    if (!FindRange(inPanel, low, high)) {
        low = high = 0.0;
    }
    const double middle = 0.5 * (low + high);
    const double reach = std::max(0.55 * (high - low), kSmallestDelay);
    return {PlotAxis::Scale::kLinear, middle - reach, middle + reach, "Group delay in ms"};
}

/// Without the end of the axis, where a low-pass falls into its zero at half the sampling rate.
PlotAxis MagnitudeAxis(Panel inPanel, const Curve& inFrequencies)
{
    for (std::size_t i = 0; i < inFrequencies.size(); ++i) {
        if (inFrequencies[i] > kShownPart * inFrequencies.back()) {
            inPanel.mTold[i] = inPanel.mMeasured[i] = NAN;
        }
    }
    double low = 0.0;
    double high = 0.0;
    if (!FindRange(inPanel, low, high)) {
        low = high = 0.0;
    }
    return MakeDecibelAxis(std::max(low, high - kDeepest) - 0.5, high + 1.0, "Magnitude in dB");
}

Plot MakePlot(const std::string& inTitle, const std::string& inDetails, const Curve& inFrequencies,
              const Panel& inPanel, PlotAxis inAxis, bool inIsLast)
{
    const PlotAxis frequencies{PlotAxis::Scale::kLogarithmic, inFrequencies.front(), inFrequencies.back(),
                               inIsLast ? "Frequency in Hz" : ""};
    Plot plot(inTitle, inDetails, frequencies, std::move(inAxis));
    const bool isNamed = !inTitle.empty();
    plot.AddLine(isNamed ? "measured by an impulse" : "", inFrequencies, inPanel.mMeasured);
    if (std::any_of(inPanel.mTold.begin(), inPanel.mTold.end(), [](double v) { return !std::isnan(v); })) {
        plot.AddLine(isNamed ? "as the effects tell it" : "", inFrequencies, inPanel.mTold, Plot::kWideLine);
    }
    return plot;
}

} // namespace

void DrawResponse(const std::string& inTitle, const std::string& inDetails,
                  const std::vector<double>& inFrequencies, const ChainResponse& inTold,
                  const ChainResponse& inMeasured, const std::filesystem::path& inPath)
{
    const auto magnitude = MakePanel(inTold, inMeasured, [](const ChainResponse& inFrom, std::size_t inAt) {
        return 20.0 * std::log10(inFrom.mMagnitude[inAt]);
    });
    // Far below the highest level, phase and delay are those of rounding noise.
    double low = 0.0;
    double high = 0.0;
    FindRange(magnitude, low, high);
    const auto where = [&](std::size_t inAt, double inValue) {
        return magnitude.mMeasured[inAt] > high - kDeepestPhase ? inValue : NAN;
    };
    auto phase = MakePanel(inTold, inMeasured, [&](const ChainResponse& inFrom, std::size_t inAt) {
        return where(inAt, inFrom.mPhase[inAt] * 180.0 / M_PI);
    });
    const auto delay = MakePanel(inTold, inMeasured, [&](const ChainResponse& inFrom, std::size_t inAt) {
        return where(inAt, 1000.0 * inFrom.mGroupDelay[inAt]);
    });
    BreakAtJumps(phase.mTold);
    BreakAtJumps(phase.mMeasured);
    std::vector<Plot> plots{MakePlot(inTitle, inDetails, inFrequencies, magnitude,
                                     MagnitudeAxis(magnitude, inFrequencies), false),
                            MakePlot("", "", inFrequencies, phase, PhaseAxis(phase), false),
                            MakePlot("", "", inFrequencies, delay, DelayAxis(delay), true)};
    plots[0].SetSize(kWidth, kMagnitudeHeight);
    plots[1].SetSize(kWidth, kPhaseHeight);
    plots[2].SetSize(kWidth, kDelayHeight);
    Plot::WriteStack(plots, inPath);
}

} // namespace host
