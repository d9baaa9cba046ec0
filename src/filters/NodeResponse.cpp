#include "filters/NodeResponse.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tessaro {

namespace {

/// What stands for the logarithm of 0 Hz
constexpr double kLogOfDC = -10.0;
/// A narrower bell gets this many bins above its centre, and the same ratio below.
constexpr double kFewestBins = 10.0;

/// The bins of a response, over the logarithm of frequency
struct Grid
{
    double GetX(unsigned inBin) const { return inBin == 0 ? kLogOfDC : std::log(inBin * GetBinWidth()); }
    double GetBinWidth() const { return static_cast<double>(mSampleRate) / mN; }

    /// The bin nearest to a frequency whose logarithm is given
    unsigned FindBin(double inX) const
    {
        const double bin = std::floor(std::exp(inX) / GetBinWidth() + 0.5);
        return bin < mN / 2 ? static_cast<unsigned>(std::max(bin, 0.0)) : mN / 2;
    }

    unsigned mN;
    float mSampleRate;
};

struct Edges
{
    double mLow;
    double mHigh;
};

/// The ends of a bell in Hz. What is widened to its floor is kept between 0 Hz and half the rate.
Edges FindBellEdges(const NodeFR& inNode, const Grid& inGrid)
{
    const double center = std::log(static_cast<double>(inNode.mFrequency));
    Edges edges{std::exp(center - 1.0 / inNode.mQ), std::exp(center + 1.0 / inNode.mQ)};
    const double floor = kFewestBins * inGrid.GetBinWidth();
    if (edges.mHigh - edges.mLow < 2.0 * floor) {
        const double ratio = floor / inNode.mFrequency + 1.0;
        edges = {inNode.mFrequency / ratio, inNode.mFrequency * ratio};
        if (edges.mLow < 0.0) {
            edges.mHigh += 1.0 - edges.mLow;
            edges.mLow = 1.0;
        }
        const double nyquist = inGrid.mSampleRate / 2.0;
        if (edges.mHigh > nyquist) {
            edges.mLow -= edges.mHigh - nyquist;
            edges.mHigh = nyquist;
        }
    }
    return edges;
}

void AddBell(const NodeFR& inNode, const Grid& inGrid, float* ioDecibels)
{
    const auto [low, high] = FindBellEdges(inNode, inGrid);
    const double x1 = std::log(low);
    const double x2 = std::log(high);
    const double height = inNode.mGain * inNode.mScale;
    for (unsigned bin = 0; bin <= inGrid.mN / 2; ++bin) {
        const double x = inGrid.GetX(bin);
        if (x > x1 && x < x2) {
            const double turn = 2.0 * std::numbers::pi * (x - x1) / (x2 - x1);
            ioDecibels[bin] += static_cast<float>(height * 0.5 * (1.0 - std::cos(turn)));
        }
    }
}

/// From the corner to where a slope begins or a shelf ends, in the logarithm of frequency
double WidthOf(const NodeFR& inNode)
{
    return 1.0 / inNode.mQ / std::sqrt(static_cast<double>(inNode.mQ));
}

/// From `inX1`, where it begins, through -3 dB times the scale at the corner; a straight line behind that. Of
/// the node only the scale counts, whatever its gain.
void AddSlope(const NodeFR& inNode, const Grid& inGrid, double inX1, unsigned inFirst, unsigned inLast,
              float* ioDecibels)
{
    const double steepness = 6.0 / (2.0 - std::numbers::sqrt2);
    const double corner = std::log(static_cast<double>(inNode.mFrequency));
    for (unsigned bin = inFirst; bin <= inLast; ++bin) {
        const double v = (inGrid.GetX(bin) - inX1) / (corner - inX1);
        if (v > 0.0 && v < 1.0) {
            const double bend = steepness * (std::cos(v * std::numbers::pi / 4.0) - 1.0);
            ioDecibels[bin] += static_cast<float>(inNode.mScale * bend);
        } else if (v >= 1.0) {
            const double line = -3.0 - steepness / std::numbers::sqrt2 * (v - 1.0);
            ioDecibels[bin] += static_cast<float>(inNode.mScale * line);
        }
    }
}

/// Full height on the side of `inX1`, nothing on that of `inX2`.
void AddShelf(const NodeFR& inNode, const Grid& inGrid, double inX1, double inX2, float* ioDecibels)
{
    const double height = inNode.mGain * inNode.mScale;
    for (unsigned bin = 0; bin <= inGrid.mN / 2; ++bin) {
        const double v = (inGrid.GetX(bin) - inX1) / (inX2 - inX1);
        if (v < 0.0) {
            ioDecibels[bin] += static_cast<float>(height);
        } else if (v < 1.0) {
            ioDecibels[bin] += static_cast<float>(height * 0.5 * (std::cos(std::numbers::pi * v) + 1.0));
        }
    }
}

} // namespace

void AddNode(const NodeFR& inNode, float* ioDecibels, unsigned inN, float inSampleRate)
{
    const Grid grid{inN, inSampleRate};
    const double corner = std::log(static_cast<double>(inNode.mFrequency));
    const double below = corner - WidthOf(inNode);
    const double above = corner + WidthOf(inNode);
    switch (inNode.mType) {
    case NodeFR::kBell:
        AddBell(inNode, grid, ioDecibels);
        break;
    case NodeFR::kLowpass:
        AddSlope(inNode, grid, below, grid.FindBin(below), inN / 2, ioDecibels);
        break;
    case NodeFR::kHighpass:
        AddSlope(inNode, grid, above, 0, grid.FindBin(above), ioDecibels);
        break;
    case NodeFR::kLowShelf:
        AddShelf(inNode, grid, below, above, ioDecibels);
        break;
    case NodeFR::kHighShelf:
        AddShelf(inNode, grid, above, below, ioDecibels);
        break;
    default:
        break;
    }
}

} // namespace tessaro
