#pragma once

#include <cmath>
#include <limits>

namespace ombrel::utility {

/// Maps a fader's position to decibels and back.
///
/// The taper is cubic: the linear gain grows with the cube of the position, which gives the upper half of the
/// way to the 18 dB below the top, where mixing happens, and still reaches silence at the bottom:
///
///     decibels = highest + 60 * log10(position)
///
/// Strictly rising over the whole way, so that each mapping undoes the other within rounding. A plain value.
template <typename T>
class FaderTranslator
{
public:
    /// What a fader's top stands for unless told otherwise, in dB.
    static constexpr T kDefaultHighestDecibels = T(6);

    /// `inHighestDecibels` is the level at position 1.
    explicit constexpr FaderTranslator(T inHighestDecibels = kDefaultHighestDecibels)
        : mHighest(inHighestDecibels)
    {
    }

    /// Position from 0 (bottom) to 1 (top). Levels above the top give 1, minus infinity gives 0, NaN gives 0.
    T GetNormalizedValue(T inDecibels) const
    {
        if (!(inDecibels < mHighest)) {
            return std::isnan(inDecibels) ? T(0) : T(1);
        }
        return std::pow(T(10), (inDecibels - mHighest) / kDecibelsPerDecade);
    }

    /// Level in dB: minus infinity at position 0 and below it, the highest level at 1 and above it. NaN gives
    /// minus infinity.
    T GetDecibelValue(T inPosition) const
    {
        if (!(inPosition > T(0))) {
            return -std::numeric_limits<T>::infinity();
        }
        return inPosition < T(1) ? mHighest + kDecibelsPerDecade * std::log10(inPosition) : mHighest;
    }

private:
    static constexpr T kDecibelsPerDecade = T(60); // 20 dB, three times over for the cube

    T mHighest;
};

} // namespace ombrel::utility
