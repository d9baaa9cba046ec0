#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <pallado/Export.h>
#include <pallado/feature/BetaFeature.h>

/// The host's side of the feature switches: a settings page lists them, and the settings file's answers are
/// put in force at start-up, before or after the libraries that declare them are loaded.
///
/// All functions may be called at any time, from several threads at once; they lock and allocate, so none is
/// for a real-time thread. They throw `std::bad_alloc` only.
namespace pallado::feature {

/// A declared switch as it stood when it was listed.
struct FeatureInfo
{
    std::string mId;
    FeatureStage mStage;
    std::string mNameKey;        ///< Localisation key with default text.
    std::string mDescriptionKey; ///< Localisation key with default text.
    bool mEnabled;               ///< What `IsFeatureEnabled` answers.
    bool mSetByHost;             ///< False while the stage's default holds.
};

/// All declared switches in the order of their ids, each id once. [control]
[[nodiscard]] PALLADO_EXPORT std::vector<FeatureInfo> GetDeclaredFeatures();

/// Turns a feature on or off. A setting outlives the declaration: it is kept for an id that nobody has
/// declared yet, or no longer, and comes into force when somebody does. [control]
PALLADO_EXPORT void SetFeatureEnabled(std::string_view inId, bool inEnabled);

/// Forgets the host's setting, so that the default of the stage holds again. Does nothing for an id without
/// one. [control]
PALLADO_EXPORT void ResetFeature(std::string_view inId);

/// Forgets all settings. [control]
PALLADO_EXPORT void ResetAllFeatures();

} // namespace pallado::feature
