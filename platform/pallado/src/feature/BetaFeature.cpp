#include <pallado/feature/BetaFeature.h>

#include <type_traits>

#include "feature/FeatureRegistry.h"

namespace pallado::feature {

namespace {

constinit FeatureRegistry gRegistry;
static_assert(std::is_trivially_destructible_v<FeatureRegistry>, "it has to outlive every static object");

const char* OrEmpty(const char* inText) noexcept
{
    return inText != nullptr ? inText : "";
}

} // namespace

BetaFeature::BetaFeature(const char* inId, FeatureStage inStage, const char* inNameKey,
                         const char* inDescriptionKey)
    : mId(OrEmpty(inId)),
      mStage(inStage),
      mNameKey(OrEmpty(inNameKey)),
      mDescriptionKey(OrEmpty(inDescriptionKey))
{
    gRegistry.Declare(*this);
}

BetaFeature::~BetaFeature()
{
    gRegistry.Withdraw(*this);
}

bool IsFeatureEnabled(const char* inId) noexcept
{
    return inId != nullptr && gRegistry.IsEnabled(inId);
}

std::vector<FeatureInfo> GetDeclaredFeatures()
{
    return gRegistry.List();
}

void SetFeatureEnabled(std::string_view inId, bool inEnabled)
{
    gRegistry.Set(inId, inEnabled);
}

void ResetFeature(std::string_view inId)
{
    gRegistry.Reset(inId);
}

void ResetAllFeatures()
{
    gRegistry.ResetAll();
}

} // namespace pallado::feature
