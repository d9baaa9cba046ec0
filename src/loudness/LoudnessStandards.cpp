#include <tessaro/loudness/LoudnessStandards.h>

#include <ombrel/config/Localizer.h>

namespace tessaro::loudness {

namespace {

constexpr int kKWeightedUnit = 1;
constexpr int kLoudnessUnit = 0;

struct Standard
{
    double mTarget;
    double mTolerance;
    double mTruePeak;
    int mUnit;
};

constexpr Standard kStandards[] = {{-24.0, 2.0, -2.0, kKWeightedUnit}, {-23.0, 0.5, -1.0, kLoudnessUnit}};

const Standard* Find(int inStandard)
{
    return inStandard == 0 || inStandard == 1 ? &kStandards[inStandard] : nullptr;
}

bool GetFigure(int inStandard, double Standard::*inFigure, double& outValue)
{
    const auto* const standard = Find(inStandard);
    if (standard != nullptr) {
        outValue = standard->*inFigure;
    }
    return standard != nullptr;
}

} // namespace

bool GetTargetLoudnessForLoudnessStandard(int inStandard, double& outTarget)
{
    return GetFigure(inStandard, &Standard::mTarget, outTarget);
}

bool GetLoudnessToleranceForLoudnessStandard(int inStandard, double& outTolerance)
{
    return GetFigure(inStandard, &Standard::mTolerance, outTolerance);
}

bool GetMaxTruePeakLevelForLoudnessStandard(int inStandard, double& outLevel)
{
    return GetFigure(inStandard, &Standard::mTruePeak, outLevel);
}

int GetUnitForLoudnessStandard(int inStandard)
{
    const auto* const standard = Find(inStandard);
    return standard != nullptr ? standard->mUnit : kKWeightedUnit;
}

bool AreCustomLoudnessSettings(int inStandard, double inTolerance, double inTruePeak)
{
    const auto* const standard = Find(inStandard);
    return standard != nullptr && (inTolerance != standard->mTolerance || inTruePeak != standard->mTruePeak);
}

ombrel::UTF16String GetLoudnessUnitString(int inUnit, bool inIntegrated)
{
    const bool isKWeighted = inUnit == kKWeightedUnit;
    if (inIntegrated) {
        return ombrel::config::Localizer::Get(isKWeighted
                                                  ? "$$$/QRX/EncoderHost/Loudness/kIdentifier_LKFS=LKFS"
                                                  : "$$$/QRX/EncoderHost/Loudness/kIdentifier_LUFS=LUFS");
    }
    return ombrel::config::Localizer::Get(isKWeighted ? "$$$/QRX/EncoderHost/Loudness/kIdentifier_LK=LK"
                                                      : "$$$/QRX/EncoderHost/Loudness/kIdentifier_LU=LU");
}

} // namespace tessaro::loudness
