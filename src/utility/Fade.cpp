#include <tessaro/utility/Fade.h>

#include <cmath>

namespace tessaro {

namespace {

constexpr float kPi = 3.1415927f;
constexpr float kE = 2.7182817f;

} // namespace

float CalculateFadeValue(FadeShape::Type inType, float inX, float inShape)
{
    return inType == FadeShape::Type::kLogarithmic ? CalculateLogFadeValue(inX, inShape)
                                                   : CalculateCosineFadeValue(inX, inShape);
}

float CalculateCosineFadeValue(float inX, float inShape)
{
    return (1.0f - std::cos(kPi * std::pow(inX, inShape))) / 2.0f;
}

float CalculateLogFadeValue(float inX, float inShape)
{
    if (inShape == 0.0f) {
        return inX;
    }
    const float end = std::pow(kE, -inShape);
    return 1.0f - (std::pow(kE, -inShape * inX) - end) / (1.0f - end);
}

float GetVerticalModifier(const FadeShape& inShape)
{
    return inShape.mType == FadeShape::Type::kLogarithmic ? GetLogVerticalModifier(inShape.mValue)
                                                          : GetCosineVerticalModifier(inShape.mValue);
}

float GetCosineVerticalModifier(int inValue)
{
    return std::pow(10.0f, static_cast<float>(inValue) / -100.0f);
}

float GetLogVerticalModifier(int inValue)
{
    return static_cast<float>(inValue) / 10.0f;
}

} // namespace tessaro
