#pragma once

#include <cstdint>

#include <tessaro/Export.h>

/// Fade curves, and pairs of them for crossfades of constant power.
///
/// A curve goes from 0 at position 0 to 1 at position 1; for a fade-out it is run backwards. Pure functions:
/// `[real-time]`, `[any thread]`, nothing throws.
namespace tessaro {

/// A curve as the user chose it: its family and how far it bends.
struct FadeShape
{
    enum class Type : std::int32_t
    {
        kLogarithmic = 0,
        kCosine = 1, ///< any other value counts as cosine
    };

    Type mType = Type::kLogarithmic;
    /// From -100 to 100. A logarithmic curve is straight at 0, and positive values rise early; a cosine curve
    /// is symmetric at 0, and positive values rise early.
    std::int32_t mValue = 0;
};

/// The value of a curve at position `inX` from 0 to 1. `inShape` is the curve's argument, which
/// `GetVerticalModifier` makes of a shape value.
TESSARO_EXPORT float CalculateFadeValue(FadeShape::Type inType, float inX, float inShape);

/// `(1 - cos(pi * x^shape)) / 2`, for shapes above 0.
TESSARO_EXPORT float CalculateCosineFadeValue(float inX, float inShape);

/// `(1 - e^(-shape * x)) / (1 - e^(-shape))`, and `x` itself for a shape of 0.
TESSARO_EXPORT float CalculateLogFadeValue(float inX, float inShape);

/// From the user's shape value to the curve's argument: `10^(-value / 100)` for cosine curves, `value / 10`
/// for logarithmic ones.
TESSARO_EXPORT float GetVerticalModifier(const FadeShape& inShape);
TESSARO_EXPORT float GetCosineVerticalModifier(int inValue);
TESSARO_EXPORT float GetLogVerticalModifier(int inValue);

/// The shape of the other side of a crossfade that keeps the power constant, of the same type. A value
/// outside -100 to 100 gives 0.
TESSARO_EXPORT FadeShape GetOppositeFadeShapeForConstantPowerCrossfade(const FadeShape& inShape);
TESSARO_EXPORT int GetOppositeFadeShapeValForConstantPowerCrossfade_Cosine(int inValue);
TESSARO_EXPORT int GetOppositeFadeShapeValForConstantPowerCrossfade_Log(int inValue);

} // namespace tessaro
