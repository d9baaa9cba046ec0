#include <kestrin/TimeDisplay.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "FrameCounting.h"

namespace kestrin {

namespace details {

namespace {

/// A rate slowed by 1000/1001 from `inNominal` frames a second; the clock divides these evenly.
constexpr FrameRate SlowedRate(std::int32_t inNominal)
{
    return FrameRate(kTicksPerSecond / 1000 * 1001 / inNominal);
}

constexpr FrameRate WholeRate(std::int32_t inNominal)
{
    return FrameRate(kTicksPerSecond / inNominal);
}

FrameCounting CountingAtRate(FrameRate inRate)
{
    if (!inRate.IsValid()) {
        return {inRate, 0, 0};
    }
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    const auto nominal = std::clamp(std::round(inRate.GetFramesPerSecond()), 1.0, most);
    return {inRate, static_cast<std::int32_t>(nominal), 0};
}

} // namespace

FrameCounting GetFrameCounting(TimeDisplay inDisplay, FrameRate inRate)
{
    switch (inDisplay.GetType()) {
    case TimeDisplayType::k24:
        return {WholeRate(24), 24, 0};
    case TimeDisplayType::k25:
        return {WholeRate(25), 25, 0};
    case TimeDisplayType::k2997Drop:
        return {SlowedRate(30), 30, 2};
    case TimeDisplayType::k2997NonDrop:
        return {SlowedRate(30), 30, 0};
    case TimeDisplayType::k30:
        return {WholeRate(30), 30, 0};
    case TimeDisplayType::k50:
        return {WholeRate(50), 50, 0};
    case TimeDisplayType::k5994Drop:
        return {SlowedRate(60), 60, 4};
    case TimeDisplayType::k5994NonDrop:
        return {SlowedRate(60), 60, 0};
    case TimeDisplayType::k60:
        return {WholeRate(60), 60, 0};
    case TimeDisplayType::k23976:
        return {SlowedRate(24), 24, 0};
    case TimeDisplayType::kMilliseconds:
        return {WholeRate(1000), 1000, 0};
    case TimeDisplayType::kInvalid:
        break;
    }
    return CountingAtRate(inRate);
}

} // namespace details

FrameRate GetFrameRateForTimeDisplay(TimeDisplay inDisplay, FrameRate inRate)
{
    return details::GetFrameCounting(inDisplay, inRate).mRate;
}

} // namespace kestrin
