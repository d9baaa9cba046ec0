#include "PlotAxis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace host {

namespace {

/// Steps to be taken before 1, 2 and 5 of each decade.
std::vector<double> GetUsualSteps(PlotAxis::Scale inScale)
{
    switch (inScale) {
    case PlotAxis::Scale::kDecibels:
        return {0.1, 0.2, 0.5, 1.0, 2.0, 3.0, 6.0, 10.0, 20.0};
    case PlotAxis::Scale::kDegrees:
        return {1.0, 5.0, 15.0, 30.0, 45.0, 90.0, 180.0};
    default:
        return {};
    }
}

/// The smallest usual step for which the axis has no more lines than asked for.
double ChooseStep(const PlotAxis& inAxis, int inMostLabels)
{
    const double finest = (inAxis.mHigh - inAxis.mLow) / std::max(inMostLabels - 1, 1);
    for (const double step : GetUsualSteps(inAxis.mScale)) {
        if (step >= finest) {
            return step;
        }
    }
    const double decade = std::pow(10.0, std::floor(std::log10(finest)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * decade >= finest) {
            return step * decade;
        }
    }
    return 10.0 * decade;
}

/// A time as people write it, with as many decimals as steps have: "2.505", "1:30", "1:00:05".
std::string FormatTimeTick(double inSeconds, double inStep, double inHighest)
{
    constexpr double kMinute = 60.0;
    constexpr double kHour = 3600.0;
    const int decimals = inStep < 1.0 ? static_cast<int>(std::ceil(-std::log10(inStep) - 1e-9)) : 0;
    const int width = decimals > 0 ? decimals + 3 : 2;
    const double minutes = std::floor((inSeconds + 1e-6 * inStep) / kMinute);
    const double seconds = std::max(0.0, inSeconds - minutes * kMinute);
    char text[64];
    if (inHighest >= kHour) {
        const double hours = std::floor(minutes / kMinute);
        std::snprintf(text, sizeof text, "%.0f:%02.0f:%0*.*f", hours, minutes - hours * kMinute, width,
                      decimals, seconds);
    } else if (inHighest >= kMinute) {
        std::snprintf(text, sizeof text, "%.0f:%0*.*f", minutes, width, decimals, seconds);
    } else {
        std::snprintf(text, sizeof text, "%.*f", decimals, inSeconds + 0.0);
    }
    return text;
}

double ChooseTimeStep(const PlotAxis& inAxis, int inMostLabels)
{
    const double finest = (inAxis.mHigh - inAxis.mLow) / std::max(inMostLabels - 1, 1);
    for (const double step : {1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0,
                              3600.0, 7200.0, 14400.0}) {
        if (step >= finest && finest > 0.5) {
            return step;
        }
    }
    return ChooseStep({PlotAxis::Scale::kLinear, inAxis.mLow, inAxis.mHigh, {}}, inMostLabels);
}

std::vector<PlotTick> MakeTimeTicks(const PlotAxis& inAxis, int inMostLabels)
{
    std::vector<PlotTick> ticks;
    const double step = ChooseTimeStep(inAxis, inMostLabels);
    const double slack = 1e-9 * step;
    for (double index = std::ceil((inAxis.mLow - slack) / step); index * step <= inAxis.mHigh + slack;
         ++index) {
        ticks.push_back({index * step, FormatTimeTick(index * step, step, inAxis.mHigh)});
    }
    return ticks;
}

std::vector<PlotTick> MakeEvenTicks(const PlotAxis& inAxis, int inMostLabels)
{
    std::vector<PlotTick> ticks;
    const double step = ChooseStep(inAxis, inMostLabels);
    const double slack = 1e-9 * step;
    for (double index = std::ceil((inAxis.mLow - slack) / step); index * step <= inAxis.mHigh + slack;
         ++index) {
        ticks.push_back({index * step, FormatTick(index * step)});
    }
    return ticks;
}

/// A line at each digit of each decade, labels on as many as there is room for.
std::vector<PlotTick> MakeLogarithmicTicks(const PlotAxis& inAxis, int inMostLabels)
{
    constexpr double kSlack = 1e-9;
    const double decades = std::log10(inAxis.mHigh / inAxis.mLow);
    const bool areAllLabelled = 9.0 * decades + 1.0 <= inMostLabels;
    const bool areThreeLabelled = 3.0 * decades + 1.0 <= inMostLabels;
    const int decadesALabel = std::max(1, static_cast<int>(std::ceil((decades + 1.0) / inMostLabels)));
    std::vector<PlotTick> ticks;
    for (int exponent = static_cast<int>(std::floor(std::log10(inAxis.mLow)));; ++exponent) {
        for (int digit = 1; digit < 10; ++digit) {
            const double value = digit * std::pow(10.0, exponent);
            if (value > inAxis.mHigh * (1.0 + kSlack)) {
                return ticks;
            }
            if (value < inAxis.mLow * (1.0 - kSlack)) {
                continue;
            }
            const bool isLabelled = areAllLabelled || (areThreeLabelled && (digit == 2 || digit == 5)) ||
                                    (digit == 1 && exponent % decadesALabel == 0);
            ticks.push_back({value, isLabelled ? FormatTick(value) : std::string()});
        }
    }
}

} // namespace

double PlotAxis::GetPlace(double inValue) const
{
    if (mScale != Scale::kLogarithmic) {
        return (inValue - mLow) / (mHigh - mLow);
    }
    return inValue > 0.0 ? std::log(inValue / mLow) / std::log(mHigh / mLow)
                         : std::numeric_limits<double>::quiet_NaN();
}

std::vector<PlotTick> MakeTicks(const PlotAxis& inAxis, int inMostLabels)
{
    switch (inAxis.mScale) {
    case PlotAxis::Scale::kLogarithmic:
        return MakeLogarithmicTicks(inAxis, inMostLabels);
    case PlotAxis::Scale::kTime:
        return MakeTimeTicks(inAxis, inMostLabels);
    case PlotAxis::Scale::kLinear:
    case PlotAxis::Scale::kDecibels:
    case PlotAxis::Scale::kDegrees:
        break;
    }
    return MakeEvenTicks(inAxis, inMostLabels);
}

std::string FormatTick(double inValue)
{
    struct Prefix
    {
        double mFactor;
        const char* mName;
    };
    const double magnitude = std::abs(inValue);
    Prefix prefix{1.0, ""};
    for (const Prefix& larger : {Prefix{1e3, "k"}, Prefix{1e6, "M"}, Prefix{1e9, "G"}}) {
        if (magnitude >= larger.mFactor * (1.0 - 1e-9)) {
            prefix = larger;
        }
    }
    char text[48];
    std::snprintf(text, sizeof text, "%.4g%s", inValue / prefix.mFactor + 0.0, prefix.mName);
    return text;
}

PlotAxis MakeDecibelAxis(double inLow, double inHigh, std::string inTitle)
{
    constexpr double kNarrowest = 12.0;
    const double step = inHigh - inLow > 40.0 ? 10.0 : inHigh - inLow > 10.0 ? 3.0 : 1.0;
    PlotAxis axis{PlotAxis::Scale::kDecibels, std::floor(inLow / step) * step,
                  std::ceil(inHigh / step) * step, std::move(inTitle)};
    const double missing = std::max(0.0, kNarrowest - (axis.mHigh - axis.mLow));
    axis.mHigh += std::ceil(missing / 2.0);
    axis.mLow -= std::floor(missing / 2.0);
    return axis;
}

} // namespace host
