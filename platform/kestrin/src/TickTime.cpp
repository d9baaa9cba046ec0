#include <kestrin/TickTime.h>

#include <cmath>

namespace kestrin {

TickTime TickTime::operator*(double inFactor) const
{
    const auto product = static_cast<long double>(mTicks) * inFactor;
    if (std::isnan(product)) {
        return TickTime();
    }
    if (product >= -static_cast<long double>(Limits::min())) {
        return TickTime(Limits::max());
    }
    if (product <= static_cast<long double>(Limits::min())) {
        return TickTime(Limits::min());
    }
    return TickTime(std::llround(product));
}

} // namespace kestrin
