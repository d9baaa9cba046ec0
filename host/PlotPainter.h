#pragma once

#include <cstddef>
#include <string>

#include <cairo.h>

#include "Plot.h"

namespace host {

/// Draws one plot onto one Cairo context.
class PlotPainter
{
public:
    PlotPainter(const Plot& inPlot, cairo_t* ioContext);

    void Paint();

private:
    enum class Align
    {
        kLeft,
        kCenter,
        kRight
    };

    double XOf(double inValue) const { return mLeft + mPlot.mXAxis.GetPlace(inValue) * (mRight - mLeft); }
    double YOf(double inValue) const { return mBottom - mPlot.mYAxis.GetPlace(inValue) * (mBottom - mTop); }

    void PaintTitles();
    void PaintXTicks();
    void PaintYTicks();
    void PaintAreas();
    void PaintArea(const Plot::Area& inArea);
    void PaintLines();
    void PaintLine(const Plot::Line& inLine);
    void PaintDots();
    void PaintMarks();
    void PaintLegend();

    void SetColorOf(std::size_t inLine);
    void SetGray(double inLightness);
    void SetFont(double inSize, bool inIsBold = false);
    double WidthOf(const std::string& inText);
    std::string Shorten(const std::string& inText, double inWidth);
    /// `inY` is the base line of the text.
    void PaintText(const std::string& inText, double inX, double inY, Align inAlign);
    void PaintRule(double inX1, double inY1, double inX2, double inY2);

    const Plot& mPlot;
    cairo_t* mContext;
    double mLeft;
    double mTop;
    double mRight;
    double mBottom;
};

} // namespace host
