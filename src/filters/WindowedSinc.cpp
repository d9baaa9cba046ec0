#include <tessaro/filters/WindowedSinc.h>

#include <cmath>
#include <numbers>

namespace tessaro {

namespace {

/// The windows over an angle that is 0 in the middle and half a turn at the edges
double WindowAt(SincWindow inWindow, double inAngle)
{
    switch (inWindow) {
    case SincWindow::kHann:
        return 0.5 + 0.5 * std::cos(inAngle);
    case SincWindow::kHamming:
        return 0.54 + 0.46 * std::cos(inAngle);
    case SincWindow::kBlackman:
        break;
    }
    return 0.42 + 0.5 * std::cos(inAngle) + 0.08 * std::cos(2.0 * inAngle);
}

} // namespace

void MakeWindowedSinc(double inCutoff, SincWindow inWindow, float* outTaps, int inNumTaps)
{
    const int last = inNumTaps - 1;
    const int middle = last / 2;
    for (int i = 0; i <= last; ++i) {
        const double angle = middle > 0 ? static_cast<double>(i - middle) / middle * std::numbers::pi : 0.0;
        const double x = angle * last * inCutoff / 2.0;
        const double sinc = x == 0.0 ? 1.0 : std::sin(x) / x;
        outTaps[i] = static_cast<float>(WindowAt(inWindow, angle) * sinc * inCutoff);
    }
}

} // namespace tessaro
