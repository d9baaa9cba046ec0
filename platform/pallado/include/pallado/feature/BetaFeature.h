#pragma once

#include <ombrel/utility/Noncopyable.h>

#include <pallado/Export.h>

/// Switches for behaviour that is on its way into the product.
///
/// The library that holds the behaviour declares a switch and asks for its state; the host lists what is
/// declared and turns it on and off (`FeatureHost.h`). Neither has to know the other: an id is all that they
/// share, and each may come first.
///
///     const pallado::feature::BetaFeature kImprovedReporting(
///         "tessaro.dropouts.ImprovedAudioDropoutReporting", pallado::feature::FeatureStage::kBeta,
///         "$$$/tessaro/dropouts/BetaFeatureName=Improved Audio Dropout Reporting",
///         "$$$/tessaro/dropouts/BetaFeatureDesc=Provides detailed feedback on audio dropouts.");
///     ...
///     if (pallado::feature::IsFeatureEnabled("tessaro.dropouts.ImprovedAudioDropoutReporting")) { ... }
namespace pallado::feature {

/// How far a feature has come. The stage decides two things: whether the feature is on while nobody has said
/// anything, and to whom a host should offer the switch.
enum class FeatureStage : int
{
    kExperiment = 0, ///< Being built, may be broken. Off; for developers.
    kPreview = 1,    ///< Complete, not tested through. Off; for testers.
    kBeta = 2,       ///< Ready to be tried by everyone who asks for it. Off; offered to users.
    kReleased = 3    ///< The normal behaviour. On; the switch remains as a way back to the old one.
};

/// Whether a feature of this stage is on by default.
[[nodiscard]] constexpr bool IsEnabledByDefault(FeatureStage inStage) noexcept
{
    return inStage == FeatureStage::kReleased;
}

/// Declares a feature switch for as long as it lives; meant as a constant at namespace scope, so that loading
/// a library declares its switches and unloading withdraws them.
///
/// It may be constructed before any other static object, and destroyed after all of them. Several libraries
/// may declare the same id: the earliest declaration that still stands gives stage, name and description.
class PALLADO_EXPORT BetaFeature : private ombrel::utility::noncopyable
{
public:
    /// `inId` is the switch's name in the program, by habit "library.module.Name". `inNameKey` and
    /// `inDescriptionKey` are localisation keys with their default text, as the host's localiser takes them.
    /// The texts are not copied and must live as long as the object; null stands for empty. Throws
    /// `std::bad_alloc`. [any thread]
    BetaFeature(const char* inId, FeatureStage inStage, const char* inNameKey, const char* inDescriptionKey);

    /// Withdraws the declaration. [any thread]
    ~BetaFeature();

    [[nodiscard]] const char* GetId() const noexcept { return mId; }
    [[nodiscard]] FeatureStage GetStage() const noexcept { return mStage; }
    [[nodiscard]] const char* GetNameKey() const noexcept { return mNameKey; }
    [[nodiscard]] const char* GetDescriptionKey() const noexcept { return mDescriptionKey; }

private:
    const char* mId;
    FeatureStage mStage;
    const char* mNameKey;
    const char* mDescriptionKey;
};

/// Whether the feature is on: what the host has set, else the default of its stage. False for an id that
/// nobody declares, whatever the host has set, and for null.
///
/// Takes no lock and allocates nothing; the cost is a hash of the id and a comparison or two. A change by the
/// host is seen by the next call. [any thread] [real-time]
[[nodiscard]] PALLADO_EXPORT bool IsFeatureEnabled(const char* inId) noexcept;

} // namespace pallado::feature
