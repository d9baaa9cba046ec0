#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "PlotAxis.h"

namespace host {

/// A picture of one or several lines over two axes, as a PNG file.
///
/// Give it axes, lines and a title, then `Write`. Grid, ticks and legend follow from these; colours go by the
/// order of the lines and can be told apart with any colour vision.
class Plot
{
public:
    static constexpr int kDefaultWidth = 1200;
    static constexpr int kDefaultHeight = 675;
    static constexpr double kThinLine = 1.6;
    static constexpr double kWideLine = 6.0;

    /// `inDetails` stands smaller below the title. Text is UTF-8; what is too long for the picture is
    /// shortened. An empty title, and an x axis without one, take no room.
    Plot(std::string inTitle, std::string inDetails, PlotAxis inXAxis, PlotAxis inYAxis);

    /// Size in pixels.
    void SetSize(int inWidth, int inHeight);

    /// Adds a line through points in order of x. Where many points share a column of pixels, their whole
    /// range shows. A point that is not a finite number, or has no place on the axes, is a gap. The legend
    /// shows `inName` once there are two lines, unless the first has no name. The first line is on top; a
    /// wide one is pale, so that a thin one on it can be seen. Width in pixels.
    void AddLine(std::string inName, std::vector<double> inX, std::vector<double> inY,
                 double inWidth = kThinLine);

    /// Fills the area between lows and highs, which are spread evenly over the whole x axis, each over a part
    /// of its own: one a column of pixels is sharpest. An area never gets thinner than a pixel, and meets
    /// those beside it. Values that are not finite numbers are gaps. Below all lines.
    void AddArea(std::vector<double> inLows, std::vector<double> inHighs);

    /// Draws a small disc at each point, in the colour of the first line.
    void AddDots(std::vector<double> inX, std::vector<double> inY);

    /// How many columns of pixels the x axis has.
    int GetColumnCount() const { return mWidth - kLeftMargin - kRightMargin; }

    /// Draws a ring around a point, with a text beside it.
    void AddMark(std::string inText, double inX, double inY);

    /// Throws `UsageError` for a name that does not end in .png.
    static void CheckName(const std::filesystem::path& inPath);
    /// The same, and for a name that is that of the input.
    static void CheckName(const std::filesystem::path& inPath, const std::filesystem::path& inInput);

    /// Writes to a temporary file and gives it its name. Throws `FileError`.
    void Write(const std::filesystem::path& inPath) const;

    /// Writes several plots below one another, as wide as the widest.
    static void WriteStack(const std::vector<Plot>& inPlots, const std::filesystem::path& inPath);

private:
    friend class PlotPainter;

    static constexpr int kLeftMargin = 84;
    static constexpr int kRightMargin = 24;

    struct Line
    {
        std::string mName;
        std::vector<double> mX;
        std::vector<double> mY;
        double mWidth = kThinLine;
    };

    struct Area
    {
        std::vector<double> mLows;
        std::vector<double> mHighs;
    };

    struct Mark
    {
        std::string mText;
        double mX = 0.0;
        double mY = 0.0;
    };

    std::string mTitle;
    std::string mDetails;
    PlotAxis mXAxis;
    PlotAxis mYAxis;
    int mWidth = kDefaultWidth;
    int mHeight = kDefaultHeight;
    std::vector<Line> mLines;
    std::vector<Line> mDots;
    std::vector<Area> mAreas;
    std::vector<Mark> mMarks;
};

} // namespace host
