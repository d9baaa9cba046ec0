#include <pallado/feature/BetaFeature.h>

#include <type_traits>

#include "feature/FeatureRegistry.h"

namespace pallado::feature {

namespace {

constinit FeatureRegistry sRegistry;
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
    sRegistry.Declare(*this);
}

BetaFeature::~BetaFeature()
{
    sRegistry.Withdraw(*this);
}

bool IsFeatureEnabled(const char* inId) noexcept
{
    return inId != nullptr && sRegistry.IsEnabled(inId);
}

std::vector<FeatureInfo> GetDeclaredFeatures()
{
    return sRegistry.List();
}

void SetFeatureEnabled(std::string_view inId, bool inEnabled)
{
    sRegistry.Set(inId, inEnabled);
}

void ResetFeature(std::string_view inId)
{
    sRegistry.Reset(inId);
}

void ResetAllFeatures()
{
    sRegistry.ResetAll();
}

} // namespace pallado::feature
