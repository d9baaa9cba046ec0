#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/utility/Fade.h>
#include <tessaro/utility/GainTransition.h>

namespace host {

/// A fade as `S[:TYPE[:SHAPE]]`: seconds, `cos` (the default) or `log`, and a shape from -100 to 100 (0 by
/// default).
struct FadeOption
{
    double mSeconds = 0.0;
    tessaro::FadeShape mShape;
};

FadeOption ParseFade(const std::string& inOption, const std::string& inText);

/// A point of an automation curve: the gain to have reached at a time.
struct AutomationPoint
{
    double mSeconds = 0.0;
    float mGain = 1.0f;
};

/// The longest time, in seconds, that an option takes.
inline constexpr double kLongestTime = 7.0 * 24.0 * 3600.0;

/// Points as `T:DB,T:DB,…` in order of time. Two points at one time make a jump.
std::vector<AutomationPoint> ParseAutomation(const std::string& inOption, const std::string& inText);

/// The gain of the curve at a time: held before the first point and behind the last, linear between points.
float GainAt(const std::vector<AutomationPoint>& inPoints, double inSeconds);

/// A fade at the start or the end of a stream, multiplied onto block after block.
class FadeStage
{
public:
    enum class Direction
    {
        kIn,
        kOut
    };

    /// A fade out ends with the stream's last frame. Throws `UsageError` for a fade that is longer than the
    /// stream.
    FadeStage(const std::string& inOption, const FadeOption& inFade, Direction inDirection, int inSampleRate,
              std::int64_t inStreamFrames, unsigned inMaxBlock);

    /// `inPosition` is the stream position of the block's first frame. Silent channels are not touched.
    void Process(std::int64_t inPosition, tessaro::AudioBuffer& ioBuffer);

private:
    float CurveAt(std::int64_t inFrame) const;

    FadeOption mFade;
    Direction mDirection;
    float mShapeArgument;
    std::int64_t mStart;
    std::int64_t mLength;
    std::vector<float> mCurve;
};

/// Gain that follows an automation curve: held before the first point and behind the last, linear between
/// points.
class AutomationStage
{
public:
    AutomationStage(const std::vector<AutomationPoint>& inPoints, int inSampleRate);

    /// Advances over silent channels without touching them.
    void Process(tessaro::AudioBuffer& ioBuffer);

private:
    tessaro::GainTransition mTransition;
    std::vector<float*> mRows;
};

} // namespace host
