#include "GainStages.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <brisken/Utility.h>

#include "HostError.h"
#include "OptionText.h"

namespace host {

namespace {

std::int64_t ToFrames(double inSeconds, int inSampleRate)
{
    return std::llround(inSeconds * inSampleRate);
}

} // namespace

FadeOption ParseFade(const std::string& inOption, const std::string& inText)
{
    const auto pieces = SplitText(inText, ':');
    if (pieces.size() > 3) {
        throw UsageError(inOption, "'" + inText + "' is not S[:TYPE[:SHAPE]], for example 1.5:log:25");
    }
    FadeOption fade;
    fade.mSeconds = ParseNumber(inOption, pieces[0], 0.0, kLongestTime, "seconds");
    fade.mShape.mType = tessaro::FadeShape::Type::kCosine;
    if (pieces.size() > 1) {
        if (pieces[1] != "cos" && pieces[1] != "log") {
            throw UsageError(inOption,
                             "'" + std::string(pieces[1]) + "' is no type of fade; there are cos and log");
        }
        if (pieces[1] == "log") {
            fade.mShape.mType = tessaro::FadeShape::Type::kLogarithmic;
        }
    }
    if (pieces.size() > 2) {
        fade.mShape.mValue = static_cast<std::int32_t>(ParseInteger(inOption, pieces[2], -100, 100, ""));
    }
    return fade;
}

std::vector<AutomationPoint> ParseAutomation(const std::string& inOption, const std::string& inText)
{
    std::vector<AutomationPoint> points;
    for (const auto piece : SplitText(inText, ',')) {
        const auto pair = SplitText(piece, ':');
        if (pair.size() != 2) {
            throw UsageError(inOption, "'" + std::string(piece) + "' is not T:DB, for example 2.5:-6");
        }
        const AutomationPoint point{ParseNumber(inOption, pair[0], 0.0, kLongestTime, "seconds"),
                                    ParseGain(inOption, pair[1])};
        if (!points.empty() && point.mSeconds < points.back().mSeconds) {
            throw UsageError(inOption,
                             "the time of '" + std::string(piece) + "' lies before that of the point ahead");
        }
        points.push_back(point);
    }
    return points;
}

float GainAt(const std::vector<AutomationPoint>& inPoints, double inSeconds)
{
    const auto next = std::upper_bound(
        inPoints.begin(), inPoints.end(), inSeconds,
        [](double inTime, const AutomationPoint& inPoint) { return inTime < inPoint.mSeconds; });
    if (next == inPoints.begin()) {
        return inPoints.front().mGain;
    }
    const AutomationPoint& last = *std::prev(next);
    if (next == inPoints.end()) {
        return last.mGain;
    }
    const double way = (inSeconds - last.mSeconds) / (next->mSeconds - last.mSeconds);
    return static_cast<float>(last.mGain + way * (next->mGain - last.mGain));
}

FadeStage::FadeStage(const std::string& inOption, const FadeOption& inFade, Direction inDirection,
                     int inSampleRate, std::int64_t inStreamFrames, unsigned inMaxBlock)
    : mFade(inFade),
      mDirection(inDirection),
      mShapeArgument(tessaro::GetVerticalModifier(inFade.mShape)),
      mLength(ToFrames(inFade.mSeconds, inSampleRate)),
      mCurve(inMaxBlock)
{
    if (mLength > inStreamFrames) {
        throw UsageError(inOption, "the fade is longer than the file, which has " +
                                       std::to_string(static_cast<double>(inStreamFrames) / inSampleRate) +
                                       " seconds");
    }
    mStart = inDirection == Direction::kIn ? 0 : inStreamFrames - mLength;
}

/// Frame 0 of a fade in has the curve's start, and the frame behind it would have its end; a fade out is its
/// mirror.
float FadeStage::CurveAt(std::int64_t inFrame) const
{
    const auto step = mDirection == Direction::kIn ? inFrame : mLength - 1 - inFrame;
    const auto x = static_cast<float>(static_cast<double>(step) / static_cast<double>(mLength));
    return tessaro::CalculateFadeValue(mFade.mShape.mType, x, mShapeArgument);
}

void FadeStage::Process(std::int64_t inPosition, tessaro::AudioBuffer& ioBuffer)
{
    const auto first = std::max(inPosition, mStart);
    const auto end =
        std::min(inPosition + static_cast<std::int64_t>(ioBuffer.GetBufferSize()), mStart + mLength);
    if (first >= end || ioBuffer.IsZero()) {
        return;
    }
    const auto count = static_cast<unsigned>(end - first);
    for (unsigned i = 0; i < count; ++i) {
        mCurve[i] = CurveAt(first + i - mStart);
    }
    for (std::size_t channel = 0; channel < ioBuffer.GetChannelCount(); ++channel) {
        if (!ioBuffer.IsChannelZero(channel)) {
            brisken::utility::Mul_InPlace(count, mCurve.data(), ioBuffer[channel] + (first - inPosition));
        }
    }
}

AutomationStage::AutomationStage(const std::vector<AutomationPoint>& inPoints, int inSampleRate)
    : mTransition(static_cast<unsigned>(inPoints.size()))
{
    mTransition.SetCurrentGain(inPoints.front().mGain);
    for (std::size_t i = 1; i < inPoints.size(); ++i) {
        const auto start = ToFrames(inPoints[i - 1].mSeconds, inSampleRate);
        const auto end = ToFrames(inPoints[i].mSeconds, inSampleRate);
        mTransition.RampTo(start, end - start, inPoints[i].mGain);
    }
}

void AutomationStage::Process(tessaro::AudioBuffer& ioBuffer)
{
    mRows.clear();
    for (std::size_t channel = 0; channel < ioBuffer.GetChannelCount(); ++channel) {
        if (!ioBuffer.IsChannelZero(channel)) {
            mRows.push_back(ioBuffer[channel]);
        }
    }
    mTransition.Process(mRows.data(), mRows.size(), ioBuffer.GetBufferSize());
}

} // namespace host
