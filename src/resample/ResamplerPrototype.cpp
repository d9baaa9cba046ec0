#include "resample/ResamplerPrototype.h"

#include <cmath>
#include <numbers>
#include <numeric>

#include <tessaro/frame/AudioProcessor.h>

namespace tessaro::utility {

namespace {

constexpr double kKaiserBeta = 12.0;

/// A sinc with `inStep` radians from tap to tap, from both ends to the centre.
///
/// There are hundreds of thousands of taps, so only the starting sines are computed as such; the rest comes
/// from the recurrence s[k + 1] = 2 cos(step) s[k] - s[k - 1]. It runs on the difference of neighbours, with
/// 2 - 2 cos(step) in a form that does not cancel: else the small step would cost so many digits on the way
/// that nothing near the centre, where the argument is smallest, would be right to single precision.
std::vector<float> MakeSinc(std::size_t inTaps, double inStep)
{
    std::vector<float> taps(inTaps);
    const std::size_t half = inTaps / 2;
    const double halfSine = std::sin(inStep * 0.5);
    const double curvature = 4.0 * halfSine * halfSine;
    const double end = -static_cast<double>(half) * inStep;
    double sine = std::sin(end - inStep);
    double difference = 2.0 * halfSine * std::cos(end - 1.5 * inStep); // from the sine one step earlier
    for (std::size_t i = 0; i < half; ++i) {
        difference -= curvature * sine;
        sine += difference;
        const double argument = (static_cast<double>(i) - static_cast<double>(half)) * inStep;
        taps[i] = taps[inTaps - 1 - i] = static_cast<float>(sine / argument);
    }
    taps[half] = 1.0f;
    return taps;
}

} // namespace

std::vector<float> MakeResamplerPrototype(std::size_t inTaps, std::int32_t inPhases, double inScale)
{
    auto taps = MakeSinc(inTaps, std::numbers::pi / (inPhases * inScale));
    AudioProcessor::ApplyKaiserWindow(taps.data(), static_cast<int>(inTaps), kKaiserBeta, 1);
    const double gain = inPhases / std::accumulate(taps.begin(), taps.end(), 0.0);
    for (float& tap : taps) {
        tap = static_cast<float>(tap * gain);
    }
    return taps;
}

} // namespace tessaro::utility
