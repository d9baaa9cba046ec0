#include "PlotPainter.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace host {

namespace {

struct Color
{
    double mRed;
    double mGreen;
    double mBlue;
};

/// The palette of Okabe and Ito, which holds for any colour vision; the yellow is darkened, as it has to show
/// on white.
constexpr std::array<Color, 7> kColors = {{{0.00, 0.45, 0.70},
                                           {0.84, 0.37, 0.00},
                                           {0.00, 0.62, 0.45},
                                           {0.80, 0.47, 0.65},
                                           {0.34, 0.71, 0.91},
                                           {0.75, 0.65, 0.00},
                                           {0.00, 0.00, 0.00}}};

constexpr double kTitleSize = 20.0;
constexpr double kTextSize = 14.0;
constexpr double kMargin = 24.0;
constexpr double kPaleness = 0.55; // how far a wide line is from its colour to white
constexpr double kXLabelDistance = 70.0;
constexpr double kYLabelDistance = 36.0;

constexpr double kTextGray = 0.15;
constexpr double kQuietGray = 0.42;
constexpr double kFrameGray = 0.55;
constexpr double kGridGray = 0.84;
constexpr double kFaintGray = 0.93;

/// Middle of a pixel, so that a line of one pixel is sharp.
double Sharp(double inPosition)
{
    return std::floor(inPosition) + 0.5;
}

double RoomBelow(const PlotAxis& inAxis)
{
    constexpr double kLabels = kTextSize + 16.0;
    constexpr double kTitleAndLabels = 66.0;
    return !inAxis.mTitle.empty() ? kTitleAndLabels : inAxis.mHasLabels ? kLabels : 0.0;
}

} // namespace

PlotPainter::PlotPainter(const Plot& inPlot, cairo_t* ioContext)
    : mPlot(inPlot),
      mContext(ioContext),
      mLeft(Plot::kLeftMargin),
      mTop(inPlot.mTitle.empty() ? kMargin : kMargin + kTitleSize + kTextSize + 26.0),
      mRight(inPlot.mWidth - Plot::kRightMargin),
      mBottom(inPlot.mHeight - RoomBelow(inPlot.mXAxis))
{
}

void PlotPainter::Paint()
{
    if (mPlot.mLines.size() > 1 && !mPlot.mLines.front().mName.empty()) {
        PaintLegend(); // first, as its rows push the plot down
    }
    PaintTitles();
    PaintXTicks();
    PaintYTicks();
    cairo_save(mContext);
    cairo_rectangle(mContext, mLeft, mTop, mRight - mLeft, mBottom - mTop);
    cairo_clip(mContext);
    PaintAreas();
    PaintLines();
    PaintDots();
    cairo_restore(mContext);
    SetGray(kFrameGray);
    cairo_set_line_width(mContext, 1.0);
    cairo_rectangle(mContext, Sharp(mLeft), Sharp(mTop), std::floor(mRight - mLeft),
                    std::floor(mBottom - mTop));
    cairo_stroke(mContext);
    PaintMarks();
}

void PlotPainter::PaintTitles()
{
    const double width = mRight - mLeft;
    SetGray(kTextGray);
    SetFont(kTitleSize, true);
    PaintText(Shorten(mPlot.mTitle, width), mLeft, kMargin + kTitleSize, Align::kLeft);
    SetFont(kTextSize);
    SetGray(kQuietGray);
    PaintText(Shorten(mPlot.mDetails, width), mLeft, kMargin + kTitleSize + kTextSize + 10.0, Align::kLeft);

    SetGray(kTextGray);
    PaintText(mPlot.mXAxis.mTitle, (mLeft + mRight) / 2.0, mPlot.mHeight - 18.0, Align::kCenter);
    cairo_save(mContext);
    cairo_translate(mContext, 26.0, (mTop + mBottom) / 2.0);
    cairo_rotate(mContext, -std::acos(0.0));
    PaintText(mPlot.mYAxis.mTitle, 0.0, 0.0, Align::kCenter);
    cairo_restore(mContext);
}

void PlotPainter::PaintXTicks()
{
    const auto ticks =
        MakeTicks(mPlot.mXAxis, std::max(2, static_cast<int>((mRight - mLeft) / kXLabelDistance)));
    for (const auto& tick : ticks) {
        const double x = Sharp(XOf(tick.mValue));
        SetGray(tick.mLabel.empty() ? kFaintGray : kGridGray);
        PaintRule(x, mTop, x, mBottom);
        if (mPlot.mXAxis.mHasLabels) {
            SetGray(kTextGray);
            PaintText(tick.mLabel, x, mBottom + kTextSize + 8.0, Align::kCenter);
        }
    }
}

void PlotPainter::PaintYTicks()
{
    const auto ticks =
        MakeTicks(mPlot.mYAxis, std::max(2, static_cast<int>((mBottom - mTop) / kYLabelDistance)));
    for (const auto& tick : ticks) {
        const double y = Sharp(YOf(tick.mValue));
        SetGray(tick.mLabel.empty() ? kFaintGray : kGridGray);
        PaintRule(mLeft, y, mRight, y);
        SetGray(kTextGray);
        PaintText(tick.mLabel, mLeft - 8.0, y + 0.36 * kTextSize, Align::kRight);
    }
}

void PlotPainter::PaintAreas()
{
    cairo_save(mContext);
    cairo_set_antialias(mContext, CAIRO_ANTIALIAS_NONE); // parts side by side show no seams
    for (std::size_t area = 0; area < mPlot.mAreas.size(); ++area) {
        const auto& color = kColors[area % kColors.size()];
        cairo_set_source_rgb(mContext, color.mRed, color.mGreen, color.mBlue);
        PaintArea(mPlot.mAreas[area]);
    }
    cairo_restore(mContext);
}

void PlotPainter::PaintArea(const Plot::Area& inArea)
{
    const std::size_t count = std::min(inArea.mLows.size(), inArea.mHighs.size());
    const double width = (mRight - mLeft) / static_cast<double>(count);
    double lastTop = NAN;
    double lastBottom = NAN;
    for (std::size_t part = 0; part < count; ++part) {
        const double top = YOf(inArea.mHighs[part]);
        const double bottom = YOf(inArea.mLows[part]);
        if (!std::isfinite(top) || !std::isfinite(bottom)) {
            lastTop = lastBottom = NAN;
            continue;
        }
        // A steep edge may lie between two parts; it belongs to the picture all the same.
        const double reachedTop = std::clamp(std::fmin(top, lastBottom), mTop - 1.0, mBottom + 1.0);
        const double reachedBottom = std::clamp(std::fmax(bottom, lastTop), mTop - 1.0, mBottom + 1.0);
        const double x = std::floor(mLeft + static_cast<double>(part) * width + 0.5);
        const double end = std::floor(mLeft + static_cast<double>(part + 1) * width + 0.5);
        const double y = std::floor(reachedTop);
        cairo_rectangle(mContext, x, y, end - x, std::max(1.0, std::ceil(reachedBottom) - y));
        lastTop = top;
        lastBottom = bottom;
    }
    cairo_fill(mContext);
}

/// The first line is the one on top.
void PlotPainter::PaintLines()
{
    cairo_set_line_join(mContext, CAIRO_LINE_JOIN_ROUND);
    for (std::size_t line = mPlot.mLines.size(); line-- > 0;) {
        SetColorOf(line);
        cairo_set_line_width(mContext, mPlot.mLines[line].mWidth);
        PaintLine(mPlot.mLines[line]);
    }
    cairo_set_dash(mContext, nullptr, 0, 0.0);
}

/// Goes through a column of pixels once down and up, however many points stand in it.
void PlotPainter::PaintLine(const Plot::Line& inLine)
{
    const double reach = 10.0 * mPlot.mHeight; // far outside, and still a coordinate that can be drawn
    double column = NAN;
    double low = 0.0;
    double high = 0.0;
    double last = 0.0;
    const auto finishColumn = [&] {
        if (!std::isnan(column) && low < high) {
            cairo_line_to(mContext, column, low);
            cairo_line_to(mContext, column, high);
            cairo_line_to(mContext, column, last);
        }
    };
    for (std::size_t i = 0; i < std::min(inLine.mX.size(), inLine.mY.size()); ++i) {
        const double x = XOf(inLine.mX[i]);
        const double y = YOf(inLine.mY[i]);
        if (!std::isfinite(x) || !std::isfinite(y)) {
            finishColumn();
            cairo_stroke(mContext);
            column = NAN;
            continue;
        }
        last = std::clamp(y, -reach, reach);
        if (std::abs(x - column) < 0.5) {
            low = std::min(low, last);
            high = std::max(high, last);
            continue;
        }
        finishColumn();
        cairo_line_to(mContext, x, last); // begins the path after a gap
        column = x;
        low = high = last;
    }
    finishColumn();
    cairo_stroke(mContext);
}

void PlotPainter::PaintDots()
{
    constexpr double kRadius = 2.6;
    cairo_set_source_rgb(mContext, kColors[0].mRed, kColors[0].mGreen, kColors[0].mBlue);
    for (const auto& dots : mPlot.mDots) {
        for (std::size_t i = 0; i < std::min(dots.mX.size(), dots.mY.size()); ++i) {
            const double x = XOf(dots.mX[i]);
            const double y = YOf(dots.mY[i]);
            if (std::isfinite(x) && std::abs(y) <= 10.0 * mPlot.mHeight) {
                cairo_arc(mContext, x, y, kRadius, 0.0, 4.0 * std::acos(0.0));
                cairo_fill(mContext);
            }
        }
    }
}

void PlotPainter::PaintMarks()
{
    constexpr double kRadius = 5.0;
    SetFont(kTextSize);
    for (const auto& mark : mPlot.mMarks) {
        const double x = XOf(mark.mX);
        const double y = YOf(mark.mY);
        if (!(x >= mLeft && x <= mRight && y >= mTop && y <= mBottom)) {
            continue;
        }
        SetGray(kTextGray);
        cairo_set_line_width(mContext, 1.4);
        cairo_arc(mContext, x, y, kRadius, 0.0, 4.0 * std::acos(0.0));
        cairo_stroke(mContext);
        const bool isRightmost = x + WidthOf(mark.mText) + 14.0 > mRight;
        PaintText(mark.mText, isRightmost ? x - 10.0 : x + 10.0, std::max(y - 8.0, mTop + kTextSize + 4.0),
                  isRightmost ? Align::kRight : Align::kLeft);
    }
}

/// In rows between the titles and the plot, as many as it takes.
void PlotPainter::PaintLegend()
{
    constexpr double kSample = 22.0;
    constexpr double kSpace = 6.0;
    constexpr double kGap = 18.0;
    constexpr double kRow = kTextSize + 8.0;
    SetFont(kTextSize);
    double x = mLeft;
    mTop += kRow;
    for (std::size_t line = 0; line < mPlot.mLines.size(); ++line) {
        const auto name = Shorten(mPlot.mLines[line].mName, mRight - mLeft - kSample - kSpace);
        const double width = kSample + kSpace + WidthOf(name);
        if (x > mLeft && x + width > mRight) {
            x = mLeft;
            mTop += kRow;
        }
        const double base = mTop - kRow + 6.0;
        SetColorOf(line);
        cairo_set_line_width(mContext, std::max(3.0, mPlot.mLines[line].mWidth));
        cairo_move_to(mContext, x, base - 0.36 * kTextSize);
        cairo_rel_line_to(mContext, kSample, 0.0);
        cairo_stroke(mContext);
        cairo_set_dash(mContext, nullptr, 0, 0.0);
        SetGray(kTextGray);
        PaintText(name, x + kSample + kSpace, base, Align::kLeft);
        x += width + kGap;
    }
}

/// Colours repeat with dashes, each time with another.
void PlotPainter::SetColorOf(std::size_t inLine)
{
    const auto& color = kColors[inLine % kColors.size()];
    const double pale = mPlot.mLines[inLine].mWidth > Plot::kThinLine ? kPaleness : 0.0;
    const auto mix = [pale](double inPart) { return inPart + pale * (1.0 - inPart); };
    cairo_set_source_rgb(mContext, mix(color.mRed), mix(color.mGreen), mix(color.mBlue));
    const auto round = static_cast<double>(inLine / kColors.size());
    const double dashes[] = {8.0 / std::max(round, 1.0), 4.0};
    cairo_set_dash(mContext, dashes, round > 0.0 ? 2 : 0, 0.0);
}

void PlotPainter::SetGray(double inLightness)
{
    cairo_set_source_rgb(mContext, inLightness, inLightness, inLightness);
}

void PlotPainter::SetFont(double inSize, bool inIsBold)
{
    cairo_select_font_face(mContext, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           inIsBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(mContext, inSize);
}

double PlotPainter::WidthOf(const std::string& inText)
{
    cairo_text_extents_t extents;
    cairo_text_extents(mContext, inText.c_str(), &extents);
    return extents.x_advance;
}

std::string PlotPainter::Shorten(const std::string& inText, double inWidth)
{
    std::string text = inText;
    std::string shown = text;
    while (!text.empty() && WidthOf(shown) > inWidth) {
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) {
            text.pop_back(); // all bytes of a character but its first
        }
        if (!text.empty()) {
            text.pop_back();
        }
        shown = text + "\u2026";
    }
    return shown;
}

void PlotPainter::PaintText(const std::string& inText, double inX, double inY, Align inAlign)
{
    const double shift = inAlign == Align::kLeft     ? 0.0
                         : inAlign == Align::kCenter ? 0.5 * WidthOf(inText)
                                                     : WidthOf(inText);
    cairo_move_to(mContext, inX - shift, inY);
    cairo_show_text(mContext, inText.c_str());
    cairo_new_path(mContext);
}

void PlotPainter::PaintRule(double inX1, double inY1, double inX2, double inY2)
{
    cairo_set_line_width(mContext, 1.0);
    cairo_move_to(mContext, inX1, inY1);
    cairo_line_to(mContext, inX2, inY2);
    cairo_stroke(mContext);
}

} // namespace host
