#pragma once

#include <ombrel/string/StringTypes.h>
#include <tessaro/Export.h>

/// The table of loudness standards, and the ranges of a loudness limiter's settings.
///
/// A standard is 0 or 1. A unit is 1 for the K-weighted family (LKFS, LK) and 0 for that of loudness units
/// (LUFS, LU). All functions: [any thread].
namespace tessaro::loudness {

inline constexpr double kTargetLoudnessMin = -36.0; ///< LKFS
inline constexpr double kTargetLoudnessMax = -6.0;
inline constexpr double kLoudnessToleranceMin = 0.0; ///< to either side, LK
inline constexpr double kLoudnessToleranceMax = 6.0;
inline constexpr double kTruePeakLevelMin = -12.0; ///< dB
inline constexpr double kTruePeakLevelMax = -0.1;
inline constexpr double kLookAheadTimeMin = 5.0; ///< ms
inline constexpr double kLookAheadTimeMax = 20.0;
inline constexpr double kLookAheadTimeDefault = 12.0;
inline constexpr double kReleaseTimeMin = 40.0; ///< ms
inline constexpr double kReleaseTimeMax = 200.0;
inline constexpr double kReleaseTimeDefault = 200.0;

/// The loudness to aim at, in LKFS; how far it may be off, in LK; the highest true peak, in dB. Each returns
/// true for standards 0 and 1; for others it returns false and leaves the value alone.
TESSARO_EXPORT bool GetTargetLoudnessForLoudnessStandard(int inStandard, double& outTarget);
TESSARO_EXPORT bool GetLoudnessToleranceForLoudnessStandard(int inStandard, double& outTolerance);
TESSARO_EXPORT bool GetMaxTruePeakLevelForLoudnessStandard(int inStandard, double& outLevel);

/// 0 for standard 1, and 1 for any other.
[[nodiscard]] TESSARO_EXPORT int GetUnitForLoudnessStandard(int inStandard);

/// Whether either setting differs from the table's; false for other standards than 0 and 1.
[[nodiscard]] TESSARO_EXPORT bool AreCustomLoudnessSettings(int inStandard, double inTolerance,
                                                            double inTruePeak);

/// The unit's name in the user's language: of a level for `inIntegrated`, otherwise of a difference.
[[nodiscard]] TESSARO_EXPORT ombrel::UTF16String GetLoudnessUnitString(int inUnit, bool inIntegrated);

} // namespace tessaro::loudness
