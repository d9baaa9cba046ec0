#include "Plot.h"

#include <algorithm>
#include <memory>

#include <cairo.h>
#include <ombrel/string/Unicode.h>

#include "HostError.h"
#include "OutputFile.h"
#include "PlotPainter.h"

#if defined(__SANITIZE_ADDRESS__)
// The font library below Cairo keeps its configuration until the process ends, and offers Cairo's users no
// way to give it back.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "print_suppressions=0"; // standard error is for the one line of a failed command
}
#endif

namespace host {

namespace {

/// The drawing library refuses text that is not well-formed; a file name need not be.
std::string WellFormed(const std::string& inText)
{
    return ombrel::string::UTF16ToStd8String(ombrel::string::Std8ToUTF16String(inText));
}

cairo_status_t WriteBytes(void* ioFile, const unsigned char* inData, unsigned inCount)
{
    return static_cast<OutputFile*>(ioFile)->Write(inData, inCount) == inCount ? CAIRO_STATUS_SUCCESS
                                                                               : CAIRO_STATUS_WRITE_ERROR;
}

} // namespace

Plot::Plot(std::string inTitle, std::string inDetails, PlotAxis inXAxis, PlotAxis inYAxis)
    : mTitle(WellFormed(inTitle)),
      mDetails(WellFormed(inDetails)),
      mXAxis(std::move(inXAxis)),
      mYAxis(std::move(inYAxis))
{
}

void Plot::SetSize(int inWidth, int inHeight)
{
    mWidth = inWidth;
    mHeight = inHeight;
}

void Plot::AddLine(std::string inName, std::vector<double> inX, std::vector<double> inY, double inWidth)
{
    mLines.push_back({WellFormed(inName), std::move(inX), std::move(inY), inWidth});
}

void Plot::AddArea(std::vector<double> inLows, std::vector<double> inHighs)
{
    mAreas.push_back({std::move(inLows), std::move(inHighs)});
}

void Plot::AddDots(std::vector<double> inX, std::vector<double> inY)
{
    mDots.push_back({{}, std::move(inX), std::move(inY)});
}

void Plot::AddMark(std::string inText, double inX, double inY)
{
    mMarks.push_back({WellFormed(inText), inX, inY});
}

void Plot::CheckName(const std::filesystem::path& inPath)
{
    if (inPath.extension() != ".png") {
        throw UsageError(inPath.string(), "does not end in .png; pictures are written as PNG");
    }
}

void Plot::CheckName(const std::filesystem::path& inPath, const std::filesystem::path& inInput)
{
    CheckName(inPath);
    std::error_code error;
    if (std::filesystem::equivalent(inInput, inPath, error)) {
        throw UsageError(inPath.string(), "is the input itself; name another file");
    }
}

void Plot::Write(const std::filesystem::path& inPath) const
{
    WriteStack({*this}, inPath);
}

void Plot::WriteStack(const std::vector<Plot>& inPlots, const std::filesystem::path& inPath)
{
    int width = 0;
    int height = 0;
    for (const auto& plot : inPlots) {
        width = std::max(width, plot.mWidth);
        height += plot.mHeight;
    }
    OutputFile file(inPath);
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()),
                                                                     cairo_destroy);
    cairo_set_source_rgb(context.get(), 1.0, 1.0, 1.0);
    cairo_paint(context.get());
    for (const auto& plot : inPlots) {
        PlotPainter(plot, context.get()).Paint();
        cairo_translate(context.get(), 0.0, plot.mHeight);
    }
    auto status = cairo_status(context.get());
    if (status == CAIRO_STATUS_SUCCESS) {
        cairo_surface_flush(surface.get());
        status = cairo_surface_write_to_png_stream(surface.get(), WriteBytes, &file);
    }
    file.ThrowIfFailed();
    if (status != CAIRO_STATUS_SUCCESS) {
        throw FileError(inPath.string(), std::string("cannot be drawn: ") + cairo_status_to_string(status));
    }
    file.Commit();
}

} // namespace host
