#pragma once

#include <string>
#include <vector>

namespace host {

/// One direction of a plot: which values it shows, and how they are spread over it.
struct PlotAxis
{
    enum class Scale
    {
        kLinear,
        kDecibels,    ///< linear, with lines at steps that are usual for levels
        kDegrees,     ///< linear, with lines at parts of a right angle
        kLogarithmic, ///< both ends above 0
        kTime,        ///< linear, in seconds, with lines at whole parts of seconds, minutes and hours
    };

    Scale mScale = Scale::kLinear;
    double mLow = 0.0;
    double mHigh = 1.0;     ///< above `mLow`
    std::string mTitle;     ///< what and in which unit: "Frequency in Hz"
    bool mHasLabels = true; ///< without, only the grid shows, as in plots that stand above one another

    /// Where a value stands: 0 at the low end, 1 at the high end, beyond them outside. Values without a place
    /// (0 and below on a logarithmic axis) are NaN.
    double GetPlace(double inValue) const;
};

/// A line of the grid; one without a label is drawn fainter.
struct PlotTick
{
    double mValue = 0.0;
    std::string mLabel;
};

/// Grid lines at round values, of which at most `inMostLabels`, at least 2, have labels.
std::vector<PlotTick> MakeTicks(const PlotAxis& inAxis, int inMostLabels);

/// A number as people write it on an axis: "0.25", "440", "1k", "2.5M".
std::string FormatTick(double inValue);

/// An axis for levels from a little below `inLow` to a little above `inHigh` in dB, ending on round values
/// and at least 12 dB wide.
PlotAxis MakeDecibelAxis(double inLow, double inHigh, std::string inTitle);

} // namespace host
